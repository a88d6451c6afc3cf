/// Accepts clients and sends indications to them.
#include "server/hub.h"

#include <fcntl.h>
#include <sys/socket.h>

#include "protocol/socket_path.h"
#include "server/connection.h"

namespace sim {
namespace {

constexpr size_t kMaxConnections = 256;
constexpr Milliseconds kAcceptPause{100};

}  // namespace

Hub::Hub(asio::io_context& io, Milliseconds latency, Complaints& complaints)
    : io_(io), complaints_(complaints), latency_(latency), acceptor_(io), pause_(io) {}

void Hub::Accept(int listening_fd, Requests& requests) {
  requests_ = &requests;
  acceptor_.assign(Protocol(AF_UNIX, 0), listening_fd);
  AcceptNext();
}

void Hub::Close() {
  acceptor_.close();
  for (Connection* connection : connections_) connection->Close();
  io_.restart();
  io_.poll();
}

void Hub::AcceptNext() {
  acceptor_.async_accept([this](const asio::error_code& error, Protocol::socket socket) {
    if (error == asio::error::operation_aborted) return;
    if (error) {  // most likely out of descriptors, so trying again at once would not help
      complaints_.Add("cannot accept: " + error.message());
      pause_.expires_after(kAcceptPause);
      pause_.async_wait([this](const asio::error_code& stopped) {
        if (!stopped) AcceptNext();
      });
      return;
    }
    AcceptNext();
    if (connections_.size() >= kMaxConnections) {
      complaints_.Add("too many connections, one refused");
    } else if (!IsTrustedPeer(socket.native_handle())) {
      complaints_.Add("another user's connection refused");
    } else {
      ::fcntl(socket.native_handle(), F_SETFD, FD_CLOEXEC);
      std::make_shared<Connection>(*this, std::move(socket))->Start();
    }
  });
}

void Hub::Indicate(uint32_t receiver, const Indication& indication) {
  for (Connection* connection : connections_) {
    const uint32_t handle = connection->IndicatedHandle();
    if (handle == 0 || (receiver != 0 && receiver != handle)) continue;
    connection->Send(MakeIndication(indication, handle));
  }
}

void Hub::IndicateRaw(uint32_t id, const std::string& elements) {
  for (Connection* connection : connections_)
    if (connection->IndicatedHandle() != 0) connection->Send(MakeIndication(id, elements));
}

}  // namespace sim
