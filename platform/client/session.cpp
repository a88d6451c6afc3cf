/// Exchanges requests and replies with the server and receives its indications.
#include "client/session.h"

#include <poll.h>
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
  const bool is_valid = text != nullptr && ParseNumber(text, kMaxLimitMs, limit_ms) && limit_ms > 0;
  return std::chrono::milliseconds(is_valid ? limit_ms : kDefaultLimitMs);
}

std::chrono::nanoseconds TimeLeft(Deadline deadline) {
  return std::max<std::chrono::nanoseconds>(deadline - steady_clock::now(), {});
}

// The fields have only 32 bits on some machines. No time limit is longer than kMaxLimitMs.
timespec ToTimespec(std::chrono::nanoseconds time) {
  return {static_cast<time_t>(time.count() / 1000000000),
          static_cast<long>(time.count() % 1000000000)};
}
timeval ToTimeval(std::chrono::microseconds time) {
  return {static_cast<time_t>(time.count() / 1000000),
          static_cast<suseconds_t>(time.count() % 1000000)};
}

/// Returns false when the deadline passes first. A broken connection counts as ready, since the
/// next call on the socket reports it.
bool WaitUntilReady(int fd, short events, Deadline deadline) {
  pollfd waited{fd, events, 0};
  for (;;) {
    const auto left = TimeLeft(deadline);
    const timespec timeout = ToTimespec(left);
    const int ready = left.count() > 0 ? ::ppoll(&waited, 1, &timeout, nullptr) : 0;
    if (ready >= 0 || errno != EINTR) return ready > 0;
  }
}

/// Returns -1 when no trusted server accepts before the deadline.
int Connect(Deadline deadline) {
  const std::string path = DefaultSocketPath();
  sockaddr_un address;
  if (!ToAddress(path, address)) return -1;
  const int fd = ::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0);
  if (fd < 0) return -1;
  int result;
  do {  // connect blocks while the backlog of a hanging server is full, up to the send time limit
    const auto left = std::chrono::duration_cast<std::chrono::microseconds>(TimeLeft(deadline));
    const timeval timeout = ToTimeval(left);
    const bool limited = left.count() > 0 &&
                         ::setsockopt(fd, SOL_SOCKET, SO_SNDTIMEO, &timeout, sizeof timeout) == 0;
    result = limited ? ::connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) : -1;
    if (!limited) errno = ETIMEDOUT;
  } while (result != 0 && errno == EINTR);
  if (result == 0 && IsTrustedPeer(fd)) return fd;
  if (result == 0)
    ::syslog(LOG_ERR, "QCMAP_Client: the server at %s belongs to user %u and is not used\n",
             path.c_str(), PeerUser(fd));
  ::close(fd);
  return -1;
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

Session::Session()
    : limit_(LimitFromEnvironment()),
      opening_deadline_(steady_clock::now() + limit_),
      requests_(Connect(opening_deadline_)),
      indications_(requests_.fd() < 0 ? -1 : Connect(opening_deadline_)) {
  if (indications_.fd() < 0) return;
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

std::optional<SessionTicket> Session::Open(const Socket& socket, const SessionTicket& ticket) {
  SessionTicket opened;
  const qmi_error_type_v01 error = Exchange(socket, message::OpenSession::kId, &ticket,
                                            sizeof ticket, UnpackInto<SessionTicket>, &opened);
  if (error != QMI_ERR_NONE_V01 || opened.handle == 0) return std::nullopt;
  return opened;
}

qmi_error_type_v01 Session::Exchange(const Socket& socket, uint32_t id, const void* request,
                                     size_t length, Unpacker unpack, void* reply) {
  if (IsInForkedChild()) return QMI_ERR_INTERNAL_V01;
  // Both connections open within one time limit, which began with the constructor.
  const Deadline deadline = handle_ == 0 ? opening_deadline_ : steady_clock::now() + limit_;
  const Turn turn(turns_, deadline);
  if (!turn || lost_) return QMI_ERR_INTERNAL_V01;

  const Header header{
      id, ++transaction_, 0, static_cast<uint32_t>(length), ToMonotonicTime(deadline), profile_, 0};
  if (!Send(socket.fd(), header, request, deadline)) return QMI_ERR_INTERNAL_V01;
  const auto answer = Receive(socket.fd(), header, deadline);
  if (!answer) return QMI_ERR_INTERNAL_V01;
  if (answer->header.error != 0) return static_cast<qmi_error_type_v01>(answer->header.error);
  if (!unpack(*answer, reply)) return QMI_ERR_INTERNAL_V01;
  profile_ = answer->header.profile;
  return QMI_ERR_NONE_V01;
}

bool Session::Send(int fd, const Header& header, const void* record, Deadline deadline) {
  iovec parts[] = {{const_cast<Header*>(&header), sizeof header},
                   {const_cast<void*>(record), header.length}};
  msghdr datagram{};
  datagram.msg_iov = parts;
  datagram.msg_iovlen = 2;
  while (WaitUntilReady(fd, POLLOUT, deadline)) {
    if (::sendmsg(fd, &datagram, MSG_NOSIGNAL | MSG_DONTWAIT) >= 0) return true;
    if (errno != EAGAIN && errno != EINTR) {
      lost_ = true;
      return false;
    }
  }
  return false;
}

std::optional<Datagram> Session::Receive(int fd, const Header& request, Deadline deadline) {
  while (WaitUntilReady(fd, POLLIN, deadline)) {
    const ssize_t received = ::recv(fd, reply_, sizeof reply_, MSG_DONTWAIT | MSG_TRUNC);
    if (received < 0 && (errno == EAGAIN || errno == EINTR)) continue;
    if (received <= 0) {
      lost_ = true;
      return std::nullopt;
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
  unsigned char bytes[kMaxIndicationBytes];
  while (!stopping_) {
    const ssize_t received = ::recv(indications_.fd(), bytes, sizeof bytes, MSG_TRUNC);
    if (received < 0 && errno == EINTR) continue;
    if (received <= 0) {
      if (!stopping_)
        ::syslog(LOG_ERR, "QCMAP_Client: lost the server, every request fails from now on\n");
      return;
    }
    const auto size = static_cast<size_t>(received);
    if (size > sizeof bytes || stopping_) continue;
    const auto indication = ParseDatagram(bytes, size);
    if (!indication || !indication->IsWhole()) continue;
    callback_(reinterpret_cast<qmi_client_struct*>(this), indication->header.id, indication->record,
              indication->header.length, nullptr);
  }
}

}  // namespace sim
