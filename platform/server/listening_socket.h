/// The socket on which the server accepts clients.
#pragma once

#include <sys/un.h>

#include <string>

#include "protocol/descriptor.h"

namespace sim {

/// Creates the socket in a directory that only this user can write to. A lock file keeps a second
/// server away. A socket left by a killed server is replaced. The destructor removes whatever was
/// created, including the directory.
class ListeningSocket {
 public:
  /// Locks `path`. Throws std::runtime_error with the reason when no socket can be created there.
  explicit ListeningSocket(const std::string& path);
  ~ListeningSocket();
  ListeningSocket(const ListeningSocket&) = delete;
  ListeningSocket& operator=(const ListeningSocket&) = delete;

  /// Creates the socket and returns its descriptor. Throws std::runtime_error with the reason when
  /// that fails.
  Descriptor Listen();

 private:
  ListeningSocket() = default;
  void OpenDirectory();
  void Lock();
  sockaddr_un Address() const;
  void RemoveStaleSocket();

  std::string directory_, name_, lock_name_;
  bool made_directory_ = false, bound_ = false;
  Descriptor open_directory_, lock_;
  sockaddr_un address_{};
};

}  // namespace sim
