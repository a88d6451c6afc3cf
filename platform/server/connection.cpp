/// Receives a client's requests one by one and sends replies and indications.
#include "server/connection.h"

#include <poll.h>
#include <sys/socket.h>

namespace sim {
namespace {

/// How long a client may take to send its first datagram, and to read a reply.
constexpr std::chrono::seconds kTimeLimit{5};
/// More than a busy modem indicates in a minute.
constexpr size_t kMaxUnsent = 8192;

}  // namespace

Connection::Connection(Hub& hub, Hub::Protocol::socket socket)
    : hub_(hub), socket_(std::move(socket)), timer_(hub.io_) {
  socket_.non_blocking(true);
  hub_.connections_.insert(this);
}

Connection::~Connection() {
  hub_.connections_.erase(this);
  if (client_ == nullptr) return;
  asio::error_code ignored;
  for (Connection* other : hub_.connections_)
    if (other->client_ == client_)
      other->socket_.shutdown(asio::socket_base::shutdown_both, ignored);
}

void Connection::Start() {
  if (hub_.ClosesAt(Step::kAccepted, message::OpenSession::kId)) return Close();
  SetTimeLimit("a client sent nothing");
  Receive();
}

void Connection::Close() {
  asio::error_code ignored;
  socket_.close(ignored);
  timer_.cancel();
}

void Connection::CloseBecause(const char* reason) {
  hub_.complaints_.Add(std::string(reason) + ", connection closed");
  Close();
}

void Connection::SetTimeLimit(const char* reason) {
  timer_.expires_after(kTimeLimit);
  timer_.async_wait([weak = weak_from_this(), reason](const asio::error_code& cancelled) {
    const auto self = weak.lock();
    if (!cancelled && self) self->CloseBecause(reason);
  });
}

void Connection::Receive() {
  receiving_ = true;
  socket_.async_receive(asio::buffer(received_), received_flags_,
                        [self = shared_from_this()](const asio::error_code& error, size_t size) {
                          self->receiving_ = false;
                          if (error || size == 0) return self->Close();
                          self->OnDatagram(size);
                        });
}

void Connection::OnDatagram(size_t size) {
  const auto datagram = ParseDatagram(received_.data(), size);
  if (!datagram || (received_flags_ & MSG_TRUNC) != 0)
    return CloseBecause("a datagram has an invalid size");
  const uint32_t id = datagram->header.id;
  if (hub_.ClosesAt(Step::kRead, id)) return Close();
  if (IsGivenUp(datagram->header)) return Receive();
  if (client_ == nullptr) {
    if (!Open(*datagram)) CloseBecause("a client did not open its session");
    return;
  }
  if (gets_indications_)
    return CloseBecause("a client sent a request on its connection for indications");
  std::string reply = hub_.requests_->Answer(*client_, *datagram);
  if (hub_.ClosesAt(Step::kCarriedOut, id)) return Close();
  if (hub_.latency_.count() == 0) return Reply(id, std::move(reply));
  timer_.expires_after(hub_.latency_);
  timer_.async_wait([self = shared_from_this(), id, reply](const asio::error_code& cancelled) {
    if (!cancelled) self->Reply(id, reply);
  });
}

bool Connection::IsGivenUp(const Header& request) {
  if (ToMonotonicTime(std::chrono::steady_clock::now()) >= request.deadline) return true;
  pollfd peer{socket_.native_handle(), POLLRDHUP, 0};
  return ::poll(&peer, 1, 0) > 0;
}

void Connection::Reply(uint32_t id, std::string reply) {
  Send(std::move(reply));
  if (hub_.ClosesAt(Step::kReplied, id)) Close();
}

bool Connection::Open(const Datagram& datagram) {
  uint32_t handle;
  if (datagram.header.id != message::OpenSession::kId || !Unpack(datagram, handle)) return false;
  std::shared_ptr<ClientState> joined;
  for (const Connection* other : hub_.connections_) {
    if (handle == 0 || !other->client_ || other->client_->handle != handle) continue;
    if (joined != nullptr) return false;  // this client already has both its connections
    joined = other->client_;
  }
  if (handle != 0 && joined == nullptr) return false;
  gets_indications_ = joined != nullptr;
  client_ =
      joined != nullptr ? joined : std::make_shared<ClientState>(ClientState{hub_.NewHandle()});
  timer_.cancel();
  Send(MakeDatagram(
      datagram.header.id, datagram.header.transaction, QMI_ERR_NONE_V01,
      std::string(reinterpret_cast<const char*>(&client_->handle), sizeof client_->handle)));
  if (!gets_indications_ && hub_.ClosesAt(Step::kOpened, datagram.header.id)) Close();
  return true;
}

void Connection::Send(std::string datagram) {
  if (!socket_.is_open()) return;
  if (unsent_.size() == kMaxUnsent) return CloseBecause("a client does not read its indications");
  unsent_.push_back(std::move(datagram));
  if (unsent_.size() == 1) Flush();
}

// The next request is received only when the reply to the last one has been sent.
void Connection::Flush() {
  asio::error_code error;
  while (!unsent_.empty() && !error) {
    socket_.send(asio::buffer(unsent_.front()), 0, error);
    if (!error) unsent_.pop_front();
  }
  if (error == asio::error::would_block) {
    if (!gets_indications_) SetTimeLimit("a client does not read its replies");
    socket_.async_wait(asio::socket_base::wait_write,
                       [self = shared_from_this()](const asio::error_code& closed) {
                         if (!closed) self->Flush();
                       });
  } else if (error) {
    Close();
  } else {
    timer_.cancel();
    if (!receiving_) Receive();
  }
}

}  // namespace sim
