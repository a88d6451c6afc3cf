/// One connection of a client.
#pragma once

#include <array>
#include <asio/steady_timer.hpp>
#include <deque>
#include <memory>
#include <string>

#include "server/hub.h"

namespace sim {

/// One connection of a client: it either brings requests or gets indications.
class Connection : public std::enable_shared_from_this<Connection> {
 public:
  Connection(Hub& hub, Hub::Protocol::socket socket);
  /// Ends the session, if there is one.
  ~Connection();

  void Start();
  /// Queues a datagram. A client that leaves too many unread is cut.
  void Send(std::string datagram);
  void Close();
  /// The session whose indications go here; 0 when none do.
  uint32_t IndicatedHandle() const { return gets_indications_ ? client_->handle : 0; }

 private:
  void Receive();
  void OnDatagram(size_t size);
  /// Answers the first datagram, which says whose connection this is. False when it does not.
  bool Open(const Datagram& datagram);
  /// Sends what the socket takes, and goes on when it takes more.
  void Flush();
  void CloseBecause(const char* reason);
  /// Has the connection closed unless the timer is set anew or cancelled in time.
  void SetTimeLimit(const char* reason);

  Hub& hub_;
  Hub::Protocol::socket socket_;
  asio::steady_timer timer_;
  /// Shared by the session's two connections; null until opened.
  std::shared_ptr<ClientState> client_;
  bool gets_indications_ = false;
  bool receiving_ = false;
  asio::socket_base::message_flags received_flags_ = 0;
  std::array<unsigned char, 512> received_;
  std::deque<std::string> unsent_;
};

}  // namespace sim
