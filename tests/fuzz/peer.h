/// A server, within the fuzzing process, that sends its one client whatever it is given.
#pragma once

#include <sys/socket.h>
#include <unistd.h>

#include <filesystem>
#include <future>
#include <utility>

#include "fuzz.h"
#include "protocol/messages.h"
#include "protocol/socket_path.h"

/// The handle of a session that was opened properly.
constexpr uint32_t kMobileApHandle = 77;

class Peer {
 public:
  enum Connection : size_t { kRequests, kIndications };

  Peer() {
    char folder[] = "/tmp/qcmap-fuzz-XXXXXX";
    Require(::mkdtemp(folder) != nullptr, "there is a folder for the socket");
    folder_ = folder;
    const std::string path = folder_ + "/server";
    ::setenv("QCMAP_SOCKET", path.c_str(), 1);
    const auto address = sim::ToAddress(path);
    listening_ = ::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0);
    Require(address &&
                ::bind(listening_, reinterpret_cast<const sockaddr*>(&*address), sizeof *address) ==
                    0 &&
                ::listen(listening_, 8) == 0,
            "there is a socket");
  }
  ~Peer() {
    HangUp();
    ::close(listening_);
    std::filesystem::remove_all(folder_);
  }
  Peer(const Peer&) = delete;
  Peer& operator=(const Peer&) = delete;

  /// Serves the client that `connect` makes: accepts both its connections, and has the first
  /// request on each answered by `answer(connection, request)`. Returns what `connect` returns.
  template <typename Connect, typename Answer>
  auto Serve(Connect connect, Answer answer) {
    HangUp();
    const auto served = std::async(std::launch::async, [&] {
      for (int& fd : fds_) fd = ::accept4(listening_, nullptr, nullptr, SOCK_CLOEXEC);
      for (const Connection connection : {kRequests, kIndications})
        answer(connection, TakeRequests(connection, 0));
    });
    return connect();
  }
  /// Reads the requests that have come. Returns the header of the last.
  sim::Header TakeRequests(Connection connection, int flags = MSG_DONTWAIT) {
    sim::Header header{};
    unsigned char bytes[sizeof header + 256];
    for (ssize_t size; (size = ::recv(fds_[connection], bytes, sizeof bytes, flags)) > 0;) {
      const auto request = sim::ParseDatagram(bytes, static_cast<size_t>(size));
      Require(request.has_value(), "a request has a header");
      header = request->header;
      flags = MSG_DONTWAIT;
    }
    return header;
  }
  /// Does not wait for room.
  void Send(Connection connection, const std::string& datagram) {
    ::send(fds_[connection], datagram.data(), datagram.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
  }
  void Reply(Connection connection, sim::Header request, const std::string& record,
             int32_t error = 0) {
    request.error = error;
    request.length = static_cast<uint32_t>(record.size());
    Send(connection, Bytes(request) + record);
  }
  /// Opens the session, as a server does in answer to the first request on each connection.
  void OpenSession(Connection connection, const sim::Header& request) {
    Reply(connection, request, Bytes(sim::SessionTicket{kMobileApHandle, {}}));
  }
  void HangUp() {
    for (int& fd : fds_)
      if (fd >= 0) ::close(std::exchange(fd, -1));
  }

  template <typename Record>
  static std::string Bytes(const Record& record) {
    return {reinterpret_cast<const char*>(&record), sizeof record};
  }

 private:
  std::string folder_;
  int listening_ = -1;
  int fds_[2] = {-1, -1};
};
