/// Exchanges requests and replies with the server and receives its indications.
#include "client/session.h"

#include <signal.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <syslog.h>

#include <cerrno>
#include <cstdlib>
#include <string>

#include "numbers/parse_number.h"
#include "protocol/socket_path.h"

namespace sim {
namespace {

using std::chrono::steady_clock;
using Deadline = steady_clock::time_point;

constexpr uint64_t kDefaultLimitMs = 2000;
constexpr uint64_t kMaxLimitMs = uint64_t{3600} * 1000;
constexpr size_t kMaxIndicationBytes = 4096;

/// QCMAP_TIMEOUT_MS when it is a valid number of milliseconds, otherwise the default.
std::chrono::milliseconds LimitFromEnvironment() {
  const char* const text = std::getenv("QCMAP_TIMEOUT_MS");
  uint64_t limit_ms = 0;
  const bool is_valid =
      text != nullptr && ParseNumber(text, kMaxLimitMs, limit_ms) && limit_ms != 0;
  return std::chrono::milliseconds(is_valid ? limit_ms : kDefaultLimitMs);
}

/// Rounded up. 0 when the deadline has passed.
std::chrono::milliseconds TimeLeft(Deadline deadline) {
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - steady_clock::now());
  return std::max<std::chrono::milliseconds>(left, {});
}

/// Limits how long calls on a socket block: recv for SO_RCVTIMEO, send and connect for SO_SNDTIMEO.
/// 0 stands for no limit.
bool SetLimit(int fd, int option, std::chrono::milliseconds limit) {
  const auto seconds = std::chrono::floor<std::chrono::seconds>(limit);
  const std::chrono::microseconds rest = limit - seconds;
  const timeval time{static_cast<time_t>(seconds.count()), static_cast<suseconds_t>(rest.count())};
  return ::setsockopt(fd, SOL_SOCKET, option, &time, sizeof time) == 0;
}

/// Returns false when the deadline has passed.
bool LimitSending(int fd, Deadline deadline) {
  const auto left = TimeLeft(deadline);
  return left.count() != 0 && SetLimit(fd, SO_SNDTIMEO, left);
}

/// Blocks all signals while a thread is started, so that the new thread never receives a signal
/// meant for the program.
class AllSignalsBlocked {
 public:
  AllSignalsBlocked() {
    sigset_t all;
    ::sigfillset(&all);
    ::pthread_sigmask(SIG_SETMASK, &all, &before_);
  }
  ~AllSignalsBlocked() { ::pthread_sigmask(SIG_SETMASK, &before_, nullptr); }

 private:
  sigset_t before_;
};

}  // namespace

bool Socket::Connect(Deadline deadline) {
  const std::string path = DefaultSocketPath();
  const auto address = ToAddress(path);
  if (!address) return false;
  fd_ = Descriptor(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0));
  for (;;) {
    // connect blocks while the backlog of a hanging server is full.
    if (!LimitSending(fd(), deadline)) return false;
    if (::connect(fd(), reinterpret_cast<const sockaddr*>(&*address), sizeof *address) == 0) break;
    if (errno != EINTR) return false;
  }
  if (IsTrustedPeer(fd())) return true;
  ::syslog(LOG_ERR, "QCMAP_Client: the server at %s belongs to user %u and is not used\n",
           path.c_str(), PeerUser(fd()));
  return false;
}

bool Socket::LimitReceiving(Deadline deadline) {
  const auto left = TimeLeft(deadline);
  if (left.count() == 0) return false;
  // Unless requests wait for each other, this is the same limit in whole milliseconds every time.
  if (left == receiving_limit_) return true;
  receiving_limit_ = left;
  return SetLimit(fd(), SO_RCVTIMEO, left);
}

Session::Session()
    : limit_(LimitFromEnvironment()), opening_deadline_(steady_clock::now() + limit_) {
  if (!requests_.Connect(opening_deadline_) || !indications_.Connect(opening_deadline_)) return;
  const auto ticket = Open(requests_, {});
  if (ticket && Open(indications_, *ticket)) handle_ = ticket->handle;
}

Session::~Session() {
  if (!thread_ || IsInForkedChild()) return;
  stopping_ = true;
  ::shutdown(indications_.fd(), SHUT_RDWR);
  ::pthread_join(*thread_, nullptr);
}

bool Session::Deliver(Callback callback) {
  const auto run = [](void* session) -> void* {
    static_cast<Session*>(session)->ReceiveIndications();
    return nullptr;
  };
  const AllSignalsBlocked blocked;
  callback_ = callback;
  pthread_t thread;
  if (::pthread_create(&thread, nullptr, run, this) != 0) return false;
  thread_ = thread;
  return true;
}

std::optional<SessionTicket> Session::Open(Socket& socket, const SessionTicket& ticket) {
  SessionTicket opened;
  const qmi_error_type_v01 error = Exchange(socket, message::OpenSession::kId, &ticket,
                                            sizeof ticket, UnpackInto<SessionTicket>, &opened);
  if (error != QMI_ERR_NONE_V01) return std::nullopt;
  return opened;
}

qmi_error_type_v01 Session::Exchange(Socket& socket, uint32_t id, const void* request,
                                     size_t length, Unpacker unpack, void* reply) {
  if (IsInForkedChild()) return QMI_ERR_INTERNAL_V01;
  // Both connections open within one time limit, which began with the constructor.
  const Deadline deadline = handle_ == 0 ? opening_deadline_ : steady_clock::now() + limit_;
  const Turn turn(turns_, deadline);
  if (!turn || lost_) return QMI_ERR_INTERNAL_V01;

  const Header header{
      id, ++transaction_, 0, static_cast<uint32_t>(length), ToMonotonicTime(deadline), profile_, 0};
  Send(socket, header, request, deadline);
  const auto answer = Receive(socket, header, deadline);
  if (lost_) ReportLoss();
  if (!answer) return QMI_ERR_INTERNAL_V01;
  if (answer->header.error != 0) return static_cast<qmi_error_type_v01>(answer->header.error);
  if (!unpack(*answer, reply)) return QMI_ERR_INTERNAL_V01;
  profile_ = answer->header.profile;
  return QMI_ERR_NONE_V01;
}

void Session::Send(const Socket& socket, const Header& header, const void* record,
                   Deadline deadline) {
  iovec parts[] = {{const_cast<Header*>(&header), sizeof header},
                   {const_cast<void*>(record), header.length}};
  msghdr datagram{};
  datagram.msg_iov = parts;
  datagram.msg_iovlen = 2;
  // There is almost always room, so the limit is set only after a first attempt.
  int flags = MSG_NOSIGNAL | MSG_DONTWAIT;
  do {
    if (::sendmsg(socket.fd(), &datagram, flags) >= 0) return;
    lost_ = errno != EAGAIN && errno != EINTR;
    flags = MSG_NOSIGNAL;
  } while (!lost_ && LimitSending(socket.fd(), deadline));
}

std::optional<Datagram> Session::Receive(Socket& socket, const Header& request, Deadline deadline) {
  while (!lost_ && socket.LimitReceiving(deadline)) {
    const ssize_t received = ::recv(socket.fd(), reply_, sizeof reply_, MSG_TRUNC);
    if (received <= 0) {
      lost_ = received == 0 || (errno != EAGAIN && errno != EINTR);
      continue;
    }
    const auto size = static_cast<size_t>(received);
    if (size > sizeof reply_) return std::nullopt;
    const auto reply = ParseDatagram(reply_, size);
    if (!reply) return std::nullopt;
    // A late reply to a request whose caller has given up has another transaction number.
    if (reply->header.transaction != request.transaction) continue;
    if (reply->header.id != request.id || !reply->IsWhole()) return std::nullopt;
    return reply;
  }
  return std::nullopt;
}

void Session::ReceiveIndications() {
  SetLimit(indications_.fd(), SO_RCVTIMEO, {});
  unsigned char bytes[kMaxIndicationBytes];
  while (!stopping_) {
    // No signal interrupts this thread.
    const ssize_t received = ::recv(indications_.fd(), bytes, sizeof bytes, MSG_TRUNC);
    if (received <= 0) return ReportLoss();
    const auto size = static_cast<size_t>(received);
    if (size > sizeof bytes) continue;
    const auto indication = ParseDatagram(bytes, size);
    if (!indication || !indication->IsWhole()) continue;
    callback_(reinterpret_cast<qmi_client_struct*>(this), indication->header.id, indication->record,
              indication->header.length, nullptr);
  }
}

void Session::ReportLoss() {
  if (handle_ == 0 || stopping_ || loss_reported_.exchange(true)) return;
  ::syslog(LOG_ERR, "QCMAP_Client: lost the server, every request fails from now on\n");
}

}  // namespace sim
