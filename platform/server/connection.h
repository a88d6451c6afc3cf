/// One connection of a client.
#pragma once

#include <array>
#include <asio/steady_timer.hpp>
#include <deque>
#include <memory>
#include <string>

#include "server/hub.h"

namespace sim {

/// Carries either a client's requests and their replies, or its indications.
class Connection : public std::enable_shared_from_this<Connection> {
 public:
  Connection(Hub& hub, Hub::Protocol::socket socket);
  /// Also ends the client's other connection.
  ~Connection();

  void Start();
  /// Queues a datagram. Closes the connection of a client that leaves too many datagrams unread.
  void Send(std::string datagram);
  void Close();
  /// Handle of the client whose indications go here; 0 when this connection carries requests.
  uint32_t IndicatedHandle() const { return gets_indications_ ? client_->handle : 0; }

 private:
  void Receive();
  void OnDatagram(size_t size);
  /// Whether the caller has given the request up or has gone. Then the request must not be carried
  /// out, since the caller would not learn of it.
  bool IsGivenUp(const Header& request);
  /// Answers the first datagram, which must open a session or join one. Returns false when it does
  /// neither.
  bool Open(const Datagram& datagram);
  void Reply(uint32_t id, std::string reply);
  /// Sends as much as the socket takes, and continues when it takes more.
  void Flush();
  void CloseBecause(const char* reason);
  /// Closes the connection after the time limit, unless the timer is reset or cancelled first.
  void SetTimeLimit(const char* reason);

  Hub& hub_;
  Hub::Protocol::socket socket_;
  asio::steady_timer timer_;
  /// Shared by the client's two connections; null until the session is opened.
  std::shared_ptr<ClientState> client_;
  bool gets_indications_ = false;
  bool receiving_ = false;
  asio::socket_base::message_flags received_flags_ = 0;
  std::array<unsigned char, 512> received_;
  std::deque<std::string> unsent_;
};

}  // namespace sim
