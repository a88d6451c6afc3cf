/// The least that a server can do: it reads datagrams and sends others of a given size.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <vector>

enum class Duty { ANSWER_ONE, ANSWER_MANY, INDICATE_TO_ALL };

/// A process that ends with this object. It waits in recv for a single client, and in epoll_wait
/// for many.
class BareServer {
 public:
  /// INDICATE_TO_ALL sends to all clients what the others send to the client that asked.
  BareServer(Duty duty, size_t clients, size_t reply_bytes);
  ~BareServer();
  BareServer(const BareServer&) = delete;
  BareServer& operator=(const BareServer&) = delete;

  /// Sends a datagram of `bytes` bytes.
  void Send(size_t client, size_t bytes) const;
  /// Waits for a datagram.
  void Receive(size_t client) const;

 private:
  [[noreturn]] static void Serve(Duty duty, const std::vector<int>& sockets, size_t reply_bytes);

  pid_t pid_;
  std::vector<int> sockets_;
};
