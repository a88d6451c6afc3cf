/// Receives a client's requests one by one and sends replies and indications.
#include "server/connection.h"

#include <sys/socket.h>

#include <cerrno>
#include <random>

namespace sim {
namespace {

/// How long a client may take to send its first datagram, to open its second connection, and to
/// read a reply, and may pause while it reads indications.
constexpr std::chrono::seconds kTimeLimit{5};

/// Whether the caller no longer waits for the reply. Then the request must not be carried out,
/// since the caller would not learn of it.
bool IsGivenUp(const Header& request, int ready) {
  return (ready & POLLRDHUP) != 0 || ToMonotonicTime(Clock::now()) >= request.deadline;
}

}  // namespace

Connection::Connection(Hub& hub, Protocol::socket socket) : hub_(hub), socket_(std::move(socket)) {}

void Connection::Guard(Handler handler) noexcept {
  if (!IsOpen()) return;
  try {
    (this->*handler)();
  } catch (...) {
    CloseBecause("a client could not be served");
  }
}

void Connection::Await(asio::socket_base::wait_type type, Handler handler) {
  socket_.async_wait(type, [weak = weak_from_this(), handler](const asio::error_code& error) {
    const auto self = weak.lock();
    if (self && !error) self->Guard(handler);
  });
}

void Connection::Close() noexcept {
  if (!IsOpen()) return;
  asio::error_code ignored;
  socket_.close(ignored);
  if (gets_indications_) hub_.record_.Session(peer_, "closed");
  opening_limit_ = reading_limit_ = held_until_ = kNever;
  hub_.OnClose(client_.get());
}

void Connection::CloseBecause(const char* reason) noexcept {
  char complaint[128];
  std::snprintf(complaint, sizeof complaint, "%s, connection closed", reason);
  hub_.complaints_.Add(complaint);
  Close();
}

void Connection::LimitOpening(const char* reason) {
  opening_limit_ = Clock::now() + kTimeLimit;
  opening_limit_reason_ = reason;
  hub_.WakeAt(opening_limit_);
}

void Connection::OnTime(Clock::time_point now) noexcept {
  if (now >= opening_limit_) return CloseBecause(opening_limit_reason_);
  if (now >= reading_limit_) return CloseBecause("a client does not read its replies");
  if (now < held_until_) return;
  held_until_ = kNever;
  Guard(held_);
}

void Connection::Begin() {
  if (hub_.record_.IsOn()) peer_ = PeerOf(socket_.native_handle());
  LimitOpening("a client sent nothing");
  AwaitEnd();
  AwaitRequest();
}

void Connection::AwaitEnd() {
  Await(asio::socket_base::wait_error, &Connection::OnEnd);
}

void Connection::OnEnd() {
  // The end of a connection can be reported to one that has taken its place since.
  if (!HasEnded(socket_.native_handle())) return AwaitEnd();
  Close();
}

void Connection::Receive() {
  const ssize_t size =
      ::recv(socket_.native_handle(), received_.data(), received_.size(), MSG_DONTWAIT | MSG_TRUNC);
  if (size < 0) return AwaitRequest();  // Nothing has come. An end is reported again.
  if (size == 0) return Close();
  received_size_ = static_cast<size_t>(size);
  const auto datagram = ParseDatagram(received_.data(), std::min(received_size_, received_.size()));
  if (!datagram || received_size_ > received_.size())
    return CloseBecause("a datagram has an invalid size");
  OnDatagram(*datagram);
}

void Connection::OnDatagram(const Datagram& datagram) {
  if (is_second_) return CloseBecause("a client sent a request on its connection for indications");
  const uint32_t id = datagram.header.id;
  faults_ = hub_.faults_.TakeForRequest(id);
  if (hub_.record_.IsOn()) {
    hub_.record_.Request(peer_, datagram);
    if (faults_) hub_.record_.FaultsOf(peer_, id, *faults_);
  }
  if (FaultOf(kHang) != 0) return AwaitRequest();
  Reach(kBefore);
  Hold(FaultOf(kLate), &Connection::Answer);
}

void Connection::Hold(uint64_t ms, Handler next) {
  if (ms == 0) return (this->*next)();
  held_ = next;
  held_until_ = Clock::now() + Milliseconds(ms);
  hub_.WakeAt(held_until_);
}

std::string Connection::Open(const Datagram& datagram) {
  const auto close_because = [this](const char* reason) {
    CloseBecause(reason);
    return std::string();
  };
  SessionTicket ticket;
  if (datagram.header.id != message::OpenSession::kId || !Unpack(datagram, ticket))
    return close_because("a client did not open its session");
  if (ticket.handle == 0) {
    client_ = std::make_shared<ClientState>();
    client_->ticket.handle = hub_.NewHandle();
    for (uint32_t& part : client_->ticket.key) part = std::random_device()();
    LimitOpening("a client did not open its second connection");
  } else {
    client_ = hub_.Join(ticket);
    if (client_ == nullptr) return close_because("a client opened a session that is not its own");
    is_second_ = true;
    opening_limit_ = kNever;
  }
  peer_.handle = client_->ticket.handle;
  return MakeDatagram(datagram.header.id, datagram.header.transaction, QMI_ERR_NONE_V01,
                      {reinterpret_cast<const char*>(&client_->ticket), sizeof ticket},
                      hub_.model_->modem.FirstHandle());
}

void Connection::Answer() {
  const int ready = Poll(socket_.native_handle(), POLLOUT | POLLRDHUP);
  if (ready == 0) {
    if (reading_limit_ == kNever) reading_limit_ = Clock::now() + kTimeLimit;
    hub_.WakeAt(reading_limit_);
    return Await(asio::socket_base::wait_write, &Connection::Answer);
  }
  reading_limit_ = kNever;
  const auto datagram = ParseDatagram(received_.data(), received_size_);
  if (IsGivenUp(datagram->header, ready)) {
    hub_.record_.GivenUp(peer_, datagram->header.id);
    return AwaitRequest();
  }
  const auto error = static_cast<Error>(FaultOf(kFail));
  const uint32_t handle = client_ != nullptr ? client_->ticket.handle : 0;
  std::string reply = client_ == nullptr && error == kGranted
                          ? Open(*datagram)
                          : AnswerRequest(*hub_.model_, handle, *datagram, error);
  if (!IsOpen()) return;
  Reach(kAfter);
  reply_ = std::move(reply);
  Hold(FaultOf(kLateReply), &Connection::Reply);
}

void Connection::Reply() {
  std::string reply = std::move(reply_);
  if (hub_.record_.IsOn()) hub_.record_.Reply(peer_, reply);
  if (faults_) Spoil(reply, *faults_);
  if (!Send(reply)) return Close();
  if (FaultOf(kRepeat) != 0) Send(reply);
  Reach(kReplied);
  if (is_second_) {
    gets_indications_ = true;
    position_ = hub_.log_.end();
    hub_.record_.Session(peer_, "opened");
  }
  AwaitRequest();
}

void Connection::FlushIndications() {
  if (!gets_indications_) return;
  if (hub_.log_.IsLost(position_)) return CloseBecause("a client does not read its indications");
  if (awaits_room_) return;
  while (position_ != hub_.log_.end()) {
    auto next = position_;
    const auto entry = hub_.log_.Next(next);
    const uint32_t handle = client_->ticket.handle;
    if (IsFor(entry)) {
      const bool is_sent =
          Send(entry.has_elements ? MakeIndication(entry.indication.id, std::string(entry.elements))
                                  : MakeIndication(entry.indication, handle));
      if (!is_sent && errno != EAGAIN) return Close();
      if (!is_sent) {
        Await(asio::socket_base::wait_write, &Connection::OnRoom);
        awaits_room_ = true;
        return;
      }
    }
    position_ = next;
  }
}

bool Connection::IsCatchingUp() {
  if (!awaits_room_ || !hub_.log_.IsFarBehind(position_)) return false;
  const auto now = Clock::now();
  if (reading_.HasGoneOn(socket_.native_handle())) read_at_ = now;
  return now - read_at_ < kTimeLimit;
}

void Connection::OnRoom() {
  awaits_room_ = false;
  FlushIndications();
}

bool Connection::Send(const std::string& datagram) {
  return ::send(socket_.native_handle(), datagram.data(), datagram.size(), MSG_DONTWAIT) != -1;
}

}  // namespace sim
