/// Accepts clients and keeps track of all connections.
#pragma once

#include <asio/basic_socket_acceptor.hpp>
#include <asio/generic/seq_packet_protocol.hpp>
#include <asio/steady_timer.hpp>
#include <memory>
#include <set>
#include <string>

#include "server/complaints.h"
#include "server/requests.h"
#include "server/step_hook.h"

namespace sim {

class Connection;

/// Accepts clients and knows every connection. A client has two connections, and losing one of them
/// ends both. A connection is kept alive by its own pending handlers.
class Hub {
 public:
  using Protocol = asio::generic::seq_packet_protocol;

  Hub(asio::io_context& io, Milliseconds latency, Complaints& complaints);

  /// Accepts clients on `listening_fd`, which it takes over, and has `requests` answer them.
  void Accept(int listening_fd, Requests& requests);
  /// Closes all connections and runs their last handlers, so that no connection outlives the hub.
  void Close();
  /// Sends an indication to the client with handle `receiver`, or to all clients when it is 0.
  void Indicate(uint32_t receiver, const Indication& indication);
  /// Sends `elements` to all clients without checking them.
  void IndicateRaw(uint32_t id, const std::string& elements);

 private:
  friend class Connection;
  void AcceptNext();
  uint32_t NewHandle() { return next_handle_++; }
  /// Whether a test wants the connection closed at this step.
  bool ClosesAt(Step step, uint32_t request) {
    return step_hook_ != nullptr && step_hook_->Reach(step, request);
  }

  asio::io_context& io_;
  Complaints& complaints_;
  Requests* requests_ = nullptr;
  const Milliseconds latency_;
  asio::basic_socket_acceptor<Protocol> acceptor_;
  asio::steady_timer pause_;
  std::set<Connection*> connections_;
  /// Null except in tests.
  const std::unique_ptr<StepHook> step_hook_ = StepHook::FromEnvironment();
  uint32_t next_handle_ = 5001;
};

}  // namespace sim
