/// A peer that speaks bytes, in the place of a client or a server.
#pragma once

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <cerrno>
#include <string>

#include "process.h"
#include "protocol/messages.h"

/// A socket that is connected to the one at `path`.
inline int RawSocket(const std::string& path) {
  sockaddr_un address{AF_UNIX, {}};
  path.copy(address.sun_path, sizeof address.sun_path - 1);
  const int fd = ::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0);
  const timeval patience{kPatience.count(), 0};
  ::setsockopt(fd, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
  const auto* const where = reinterpret_cast<sockaddr*>(&address);
  const int result = ::connect(fd, where, sizeof address);
  EXPECT_EQ(result, 0) << path;
  return fd;
}

/// The datagram that opens a session or, with a session's ticket, its second connection.
inline std::string OpenSession(const sim::SessionTicket& ticket = {}) {
  return sim::MakeDatagram(sim::message::OpenSession::kId, 1, 0,
                           {reinterpret_cast<const char*>(&ticket), sizeof ticket});
}

inline void Send(int fd, const std::string& bytes) {
  ::send(fd, bytes.data(), bytes.size(), MSG_NOSIGNAL);
}

/// Returns one datagram. It is empty if the connection was closed.
inline std::string Receive(int fd) {
  std::string bytes(sim::kMaxDatagramBytes, '\0');
  const ssize_t size = ::recv(fd, bytes.data(), bytes.size(), 0);
  EXPECT_FALSE(size < 0 && errno == EAGAIN) << "neither an answer nor the end";
  bytes.resize(size > 0 ? static_cast<size_t>(size) : 0);
  return bytes;
}

/// Opens a session on `requests` and returns its ticket. The session still lacks its second
/// connection.
inline sim::SessionTicket OpenHalf(int requests) {
  Send(requests, OpenSession());
  std::string reply = Receive(requests);
  sim::SessionTicket ticket{};
  const auto datagram =
      sim::ParseDatagram(reinterpret_cast<unsigned char*>(reply.data()), reply.size());
  EXPECT_TRUE(datagram && Unpack(*datagram, ticket));
  return ticket;
}
