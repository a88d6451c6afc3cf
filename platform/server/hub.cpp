/// Accepts clients and sends indications to them.
#include "server/hub.h"

#include <fcntl.h>
#include <sys/socket.h>

#include <algorithm>

#include "protocol/socket_path.h"
#include "server/connection.h"

namespace sim {
namespace {

constexpr size_t kMaxConnections = 256;
constexpr Milliseconds kAcceptPause{100};

}  // namespace

Hub::Hub(asio::io_context& io, Milliseconds latency, Complaints& complaints)
    : io_(io), complaints_(complaints), latency_(latency), acceptor_(io), alarm_(io, [this] {
        OnTime();
      }) {
  connections_.reserve(kMaxConnections);
}

Hub::~Hub() = default;

void Hub::Accept(int listening_fd, Requests& requests) {
  requests_ = &requests;
  acceptor_.assign(Protocol(AF_UNIX, 0), listening_fd);
  acceptor_.non_blocking(true);
}

void Hub::Arm() {
  if (some_are_closed_) {
    const auto is_closed = [](const auto& connection) { return !connection->IsOpen(); };
    connections_.erase(std::remove_if(connections_.begin(), connections_.end(), is_closed),
                       connections_.end());
    some_are_closed_ = false;
  }
  const bool pauses = Clock::now() < accept_again_at_;
  if (pauses) WakeAt(accept_again_at_);
  alarm_.Set(wake_at_);
  if (accepting_ || pauses) return;
  acceptor_.async_wait(asio::socket_base::wait_read, [this](const asio::error_code& error) {
    if (!error) OnClient();
  });
  accepting_ = true;
}

void Hub::OnClient() {
  accepting_ = false;
  try {
    AcceptOne();
  } catch (...) {
    complaints_.Add("a client could not be accepted");
  }
}

void Hub::AcceptOne() {
  asio::error_code error;
  Protocol::socket socket = acceptor_.accept(io_, error);
  if (error == asio::error::would_block) return;
  if (error) {  // most likely out of descriptors, so trying again at once would not help
    accept_again_at_ = Clock::now() + kAcceptPause;
    complaints_.Add("cannot accept: " + error.message());
  } else if (connections_.size() >= kMaxConnections) {
    complaints_.Add("too many connections, one refused");
  } else if (!IsTrustedPeer(socket.native_handle())) {
    complaints_.Add("another user's connection refused");
  } else {
    ::fcntl(socket.native_handle(), F_SETFD, FD_CLOEXEC);
    connections_.push_back(std::make_shared<Connection>(*this, std::move(socket)));
    connections_.back()->Start();
  }
}

void Hub::OnTime() {
  wake_at_ = kNever;
  const auto now = Clock::now();
  for (const auto& connection : connections_) {
    connection->OnTime(now);
    WakeAt(connection->NextTime());
  }
}

std::shared_ptr<ClientState> Hub::Join(const SessionTicket& ticket) {
  for (const auto& connection : connections_) {
    const auto& client = connection->client_;
    if (client == nullptr || client->has_both_connections || !(client->ticket == ticket)) continue;
    client->has_both_connections = true;
    connection->limit_ = kNever;
    return client;
  }
  return nullptr;
}

void Hub::OnClose(const ClientState* client) noexcept {
  some_are_closed_ = true;
  if (client == nullptr) return;
  for (const auto& connection : connections_)
    if (connection->client_.get() == client) connection->Close();
}

void Hub::Indicate(uint32_t receiver, const Indication& indication) noexcept {
  Add({receiver, indication});
}

void Hub::IndicateRaw(uint32_t id, std::string_view elements) noexcept {
  Add({0, {id, 0}, true, elements});
}

void Hub::Add(const IndicationLog::Entry& entry) noexcept {
  log_.Add(entry);
  bool all_are_sent = true;
  for (const auto& connection : connections_) {
    connection->SendIndications();
    all_are_sent = all_are_sent && connection->HasSentAll();
  }
  if (!all_are_sent || !log_.IsWorthRestarting()) return;
  log_.Restart();
  for (const auto& connection : connections_) connection->position_ = log_.end();
}

}  // namespace sim
