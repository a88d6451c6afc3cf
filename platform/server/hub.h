/// Accepts clients and keeps track of all connections.
#pragma once

#include <memory>
#include <string_view>
#include <vector>

#include "server/acceptor.h"
#include "server/client_state.h"
#include "server/faults.h"
#include "server/indication_log.h"
#include "server/record.h"
#include "server/requests.h"

namespace sim {

class Connection;

/// Accepts clients and owns every connection. A client has two connections, and losing one of them
/// ends both.
class Hub : public Activity {
 public:
  Hub(asio::io_context& io, Faults& faults, Record& record, Complaints& complaints);
  ~Hub();
  Hub(const Hub&) = delete;
  Hub& operator=(const Hub&) = delete;

  /// Accepts clients of `model` on a listening socket.
  void Accept(Descriptor socket, Model& model);
  void Arm() override;
  /// Sends an indication to the client with handle `receiver`, or to all clients when it is 0.
  /// A client to which it cannot be sent is cut off, and the others get it.
  void Indicate(uint32_t receiver, const Indication& indication) noexcept;
  /// Sends `elements` to all clients without checking them.
  void IndicateRaw(uint32_t id, std::string_view elements) noexcept;
  /// Whether a client is far behind with its indications, but reads them.
  bool AwaitsReaders() const;

 private:
  friend class Connection;
  /// Finds out what befalls the connection that is accepted next.
  void PrepareClient();
  void AddClient(Protocol::socket socket);
  void Add(const IndicationLog::Entry& entry) noexcept;
  struct Delayed {
    Clock::time_point until;
    IndicationLog::Entry entry;
  };
  void Delay(Milliseconds delay, const IndicationLog::Entry& entry) noexcept;
  /// Sends the delayed indications that are due, and calls OnTime() of each connection.
  void OnTime();
  void SendDelayed(Clock::time_point now) noexcept;
  /// Makes sure that OnTime() is called at `time`, or before.
  void WakeAt(Clock::time_point time) { wake_at_ = std::min(wake_at_, time); }
  uint32_t NewHandle() { return next_handle_++; }
  /// Returns the client that has this ticket and no second connection yet, which it then has. Null
  /// when there is none.
  std::shared_ptr<ClientState> Join(const SessionTicket& ticket);
  /// Closes the other connection of a client that has lost one. `client` may be null.
  void OnClose(const ClientState* client) noexcept;

  Faults& faults_;
  Record& record_;
  Complaints& complaints_;
  Model* model_ = nullptr;
  Acceptor acceptor_;
  Befalling faults_of_next_{};
  /// Room for all is reserved. Closed ones are removed before the next event.
  std::vector<std::shared_ptr<Connection>> connections_;
  bool some_are_closed_ = false;
  Alarm alarm_;
  Clock::time_point wake_at_ = kNever;
  IndicationLog log_;
  /// Indications that a fault delays, in no order. Room for all is reserved.
  std::vector<Delayed> delayed_;
  uint32_t next_handle_ = 5001;
};

}  // namespace sim
