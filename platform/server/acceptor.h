/// Accepts what connects to a socket.
#pragma once

#include <asio/basic_socket_acceptor.hpp>
#include <asio/generic/seq_packet_protocol.hpp>
#include <functional>

#include "protocol/descriptor.h"
#include "server/alarm.h"
#include "server/complaints.h"
#include "server/event_loop.h"

namespace sim {

using Protocol = asio::generic::seq_packet_protocol;

/// Accepts connections of this user and of root, one at a time. It refuses other users.
class Acceptor : public Activity {
 public:
  /// `take` gets each connection. When it throws, the connection is closed. `prepare` is called
  /// before one is accepted.
  Acceptor(
      asio::io_context& io, Complaints& complaints, std::function<void(Protocol::socket)> take,
      std::function<void()> prepare = [] {});

  void Listen(Descriptor socket);
  void Arm() override {
    if (!accepting_) Await();
  }

 private:
  void Await();
  void OnPeer();
  void AcceptOne();

  asio::io_context& io_;
  Complaints& complaints_;
  const std::function<void(Protocol::socket)> take_;
  const std::function<void()> prepare_;
  asio::basic_socket_acceptor<Protocol> acceptor_;
  bool accepting_ = false;
  /// Rings when accepting goes on after a failure.
  Alarm again_;
  Clock::time_point again_at_{};
};

}  // namespace sim
