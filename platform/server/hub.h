/// Accepts clients and keeps track of all connections.
#pragma once

#include <asio/basic_socket_acceptor.hpp>
#include <asio/generic/seq_packet_protocol.hpp>
#include <memory>
#include <string_view>
#include <vector>

#include "server/alarm.h"
#include "server/client_state.h"
#include "server/complaints.h"
#include "server/event_loop.h"
#include "server/indication_log.h"
#include "server/requests.h"
#include "server/step_hook.h"

namespace sim {

class Connection;

/// Accepts clients and owns every connection. A client has two connections, and losing one of them
/// ends both.
class Hub : public Activity {
 public:
  using Protocol = asio::generic::seq_packet_protocol;

  Hub(asio::io_context& io, Milliseconds latency, Complaints& complaints);
  ~Hub();
  Hub(const Hub&) = delete;
  Hub& operator=(const Hub&) = delete;

  /// Accepts clients on `listening_fd`, which it takes over, and lets `requests` answer them.
  void Accept(int listening_fd, Requests& requests);
  void Arm() override;
  /// Sends an indication to the client with handle `receiver`, or to all clients when it is 0.
  /// A client to which it cannot be sent is cut off, and the others get it.
  void Indicate(uint32_t receiver, const Indication& indication) noexcept;
  /// Sends `elements` to all clients without checking them.
  void IndicateRaw(uint32_t id, std::string_view elements) noexcept;

 private:
  friend class Connection;
  void OnClient();
  void AcceptOne();
  void Add(const IndicationLog::Entry& entry) noexcept;
  /// Calls OnTime() of each connection.
  void OnTime();
  /// Makes sure that OnTime() is called at `time`, or before.
  void WakeAt(Clock::time_point time) { wake_at_ = std::min(wake_at_, time); }
  uint32_t NewHandle() { return next_handle_++; }
  /// Returns the client that has this ticket and no second connection yet, which it then has. Null
  /// when there is none.
  std::shared_ptr<ClientState> Join(const SessionTicket& ticket);
  /// Closes the other connection of a client that has lost one. `client` may be null.
  void OnClose(const ClientState* client) noexcept;
  /// Whether a test wants the connection closed at this step.
  bool ClosesAt(Step step, uint32_t request) {
    return step_hook_ != nullptr && step_hook_->Reach(step, request);
  }

  asio::io_context& io_;
  Complaints& complaints_;
  Requests* requests_ = nullptr;
  const Milliseconds latency_;
  asio::basic_socket_acceptor<Protocol> acceptor_;
  bool accepting_ = false;
  Clock::time_point accept_again_at_{};
  /// Room for all is reserved. Closed ones are removed before the next event.
  std::vector<std::shared_ptr<Connection>> connections_;
  bool some_are_closed_ = false;
  Alarm alarm_;
  Clock::time_point wake_at_ = kNever;
  IndicationLog log_;
  /// Null except in tests.
  const std::unique_ptr<StepHook> step_hook_ = StepHook::FromEnvironment();
  uint32_t next_handle_ = 5001;
};

}  // namespace sim
