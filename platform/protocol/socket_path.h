/// The socket through which client and server connect, and which peers they trust.
#pragma once

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <optional>
#include <string>

namespace sim {

/// The server's socket, unless --socket names another one.
inline std::string DefaultSocketPath() {
  const char* const path = std::getenv("QCMAP_SOCKET");
  if (path != nullptr && *path != '\0') return path;
  const char* const runtime = std::getenv("XDG_RUNTIME_DIR");
  if (runtime != nullptr && *runtime != '\0') return std::string(runtime) + "/qcmap/server";
  return "/tmp/qcmap-" + std::to_string(::geteuid()) + "/server";
}

/// Returns nothing when `path` is empty or too long for a socket address.
inline std::optional<sockaddr_un> ToAddress(const std::string& path) {
  sockaddr_un address{AF_UNIX, {}};
  if (path.empty() || path.size() >= sizeof address.sun_path) return std::nullopt;
  std::memcpy(address.sun_path, path.data(), path.size());
  return address;
}

/// The user that owns the process at the other end. An unknown owner is reported as the user id
/// that nobody has.
inline uid_t PeerUser(int socket) {
  constexpr auto kNobody = static_cast<uid_t>(-1);
  ucred peer{0, kNobody, kNobody};
  socklen_t size = sizeof peer;
  ::getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &peer, &size);
  return peer.uid;
}

/// Whether the process at the other end belongs to this user or to root.
inline bool IsTrustedPeer(int socket) {
  const uid_t user = PeerUser(socket);
  return user == ::geteuid() || user == 0;
}

}  // namespace sim
