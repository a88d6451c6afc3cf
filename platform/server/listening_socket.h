/// The socket on which the server waits for clients, and what guards it.
#pragma once

#include <sys/un.h>

#include <string>

namespace sim {

/// Creates the socket in a directory that only this user can write, under a lock that keeps a
/// second server away; a socket that a dead server left is replaced. What it has made, the
/// directory included, is removed again.
class ListeningSocket {
 public:
  /// Throws std::runtime_error that says why there can be no socket at `path`.
  explicit ListeningSocket(const std::string& path);
  ~ListeningSocket();
  ListeningSocket(const ListeningSocket&) = delete;
  ListeningSocket& operator=(const ListeningSocket&) = delete;

  /// Whoever takes the descriptor closes it.
  int fd() const { return fd_; }

 private:
  ListeningSocket() = default;
  void OpenDirectory();
  void Lock();
  sockaddr_un Address() const;
  void RemoveStaleSocket();
  void Listen();

  std::string directory_, name_, lock_name_;
  bool made_directory_ = false, bound_ = false;
  int directory_fd_ = -1, lock_fd_ = -1, fd_ = -1;
};

}  // namespace sim
