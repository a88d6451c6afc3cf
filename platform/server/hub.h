/// The server's connections: who is there, what they ask, and what is sent to them.
#pragma once

#include <asio/basic_socket_acceptor.hpp>
#include <asio/generic/seq_packet_protocol.hpp>
#include <asio/steady_timer.hpp>
#include <set>
#include <string>

#include "server/requests.h"

namespace sim {

class Connection;

/// Accepts clients, and knows every connection. A session has two, and ends with either of them.
/// Connections own themselves: each lives for as long as it waits for something.
class Hub {
 public:
  using Protocol = asio::generic::seq_packet_protocol;

  Hub(asio::io_context& io, Milliseconds latency);

  /// Has the clients of a listening socket, which it closes in the end, answered by `requests`.
  void Accept(int listening_fd, Requests& requests);
  /// Closes all connections, which lets them go while everything that they need is still there.
  void Close();
  /// Sends an indication to a session, or to all when `session` is 0.
  void Indicate(uint32_t session, const Indication& indication);
  /// Sends `elements`, whatever they are, to all.
  void IndicateRaw(uint32_t id, const std::string& elements);

 private:
  friend class Connection;
  void AcceptNext();
  /// Tells of a bad client on stderr: a line a second, which counts those left out.
  void Complain(const std::string& complaint);
  uint32_t NewHandle() { return next_handle_++; }

  asio::io_context& io_;
  Requests* requests_ = nullptr;
  const Milliseconds latency_;
  asio::basic_socket_acceptor<Protocol> acceptor_;
  asio::steady_timer pause_;
  std::set<Connection*> connections_;
  uint32_t next_handle_ = 5001;
  asio::steady_timer::time_point complained_{};
  unsigned complaints_left_out_ = 0;
};

}  // namespace sim
