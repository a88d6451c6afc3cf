/// One connection of a client.
#pragma once

#include <algorithm>
#include <array>
#include <memory>
#include <optional>
#include <string>

#include "server/hub.h"
#include "server/record.h"

namespace sim {

/// Carries either a client's requests and their replies, or its indications. Whatever goes wrong
/// ends the connection, and with it the client's other one. Nothing thrown leaves it, except by the
/// constructor.
///
/// Replies are never queued: a request is carried out when there is room for its reply. Indications
/// that the socket does not take stay in the hub's log, for as long as that has room for them.
class Connection : public std::enable_shared_from_this<Connection> {
 public:
  Connection(Hub& hub, Protocol::socket socket);

  void Start() noexcept { Guard(&Connection::Begin); }
  /// Sends what is new in the hub's log.
  void SendIndications() noexcept { Guard(&Connection::FlushIndications); }
  /// Whether it carries this indication.
  bool IsFor(const IndicationLog::Entry& entry) const {
    return gets_indications_ && (entry.receiver == 0 || entry.receiver == client_->ticket.handle);
  }
  /// Whether it has sent everything in the hub's log that it is to send.
  bool HasSentAll() const { return !gets_indications_ || position_ == hub_.log_.end(); }
  /// Whether it is far behind, but its client has read something a short time ago.
  bool IsCatchingUp();
  /// Does what is due.
  void OnTime(Clock::time_point now) noexcept;
  /// When OnTime() is to be called.
  Clock::time_point NextTime() const {
    return std::min({opening_limit_, reading_limit_, held_until_});
  }
  void Close() noexcept;
  bool IsOpen() const { return socket_.is_open(); }

 private:
  friend class Hub;
  using Handler = void (Connection::*)();
  /// Closes the connection when `handler` throws.
  void Guard(Handler handler) noexcept;
  void Await(asio::socket_base::wait_type type, Handler handler);

  void Begin();
  /// Notices a client that has gone at once, even while nothing is received from it.
  void AwaitEnd();
  void OnEnd();
  void Receive();
  void AwaitRequest() { Await(asio::socket_base::wait_read, &Connection::Receive); }
  void OnDatagram(const Datagram& datagram);
  /// Opens a session, or joins one, as the first datagram must ask. Returns the reply, or nothing
  /// when it has closed the connection.
  std::string Open(const Datagram& datagram);
  /// Carries out the request that was received, once there is room for the reply.
  void Answer();
  void Reply();
  /// Goes on with `next` after this time. At once if it is 0.
  void Hold(uint64_t ms, Handler next);
  /// The argument of a fault that befalls the request; 0 if it does not.
  uint64_t FaultOf(FaultKind kind) const { return faults_ ? (*faults_)[kind] : 0; }
  void Reach(Step step) const {
    if (faults_) sim::Reach(step, *faults_);
  }
  void FlushIndications();
  void OnRoom();
  bool Send(const std::string& datagram);
  void CloseBecause(const char* reason) noexcept;
  /// Closes the connection after the time limit unless the session is open by then.
  void LimitOpening(const char* reason);

  Hub& hub_;
  Protocol::socket socket_;
  Clock::time_point opening_limit_ = kNever;
  const char* opening_limit_reason_ = nullptr;
  /// When there must be room for the reply.
  Clock::time_point reading_limit_ = kNever;
  /// Null until the session is opened.
  std::shared_ptr<ClientState> client_;
  std::array<unsigned char, 512> received_;
  size_t received_size_ = 0;
  /// Known only while everything is recorded.
  Peer peer_;
  std::optional<Befalling> faults_;
  std::string reply_;
  Clock::time_point held_until_ = kNever;
  Handler held_ = nullptr;
  /// Whether it is a client's second connection.
  bool is_second_ = false;
  bool gets_indications_ = false;
  bool awaits_room_ = false;
  Reading reading_;
  Clock::time_point read_at_{};
  IndicationLog::Position position_ = 0;
};

}  // namespace sim
