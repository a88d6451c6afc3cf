/// Serves without a protocol, a model or any check.
#include "bare_server.h"

#include <signal.h>
#include <sys/epoll.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace {

constexpr size_t kMaxBytes = 65536;
char buffer[kMaxBytes];

[[noreturn]] void Fail(const char* what) {
  throw std::system_error(errno, std::generic_category(), what);
}

}  // namespace

BareServer::BareServer(Duty duty, size_t clients, size_t reply_bytes) {
  std::vector<int> servers_sockets;
  for (size_t client = 0; client < clients; ++client) {
    int pair[2];
    if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, pair) != 0) Fail("socketpair");
    sockets_.push_back(pair[0]);
    servers_sockets.push_back(pair[1]);
  }
  pid_ = ::fork();
  if (pid_ < 0) Fail("fork");
  if (pid_ == 0) Serve(duty, servers_sockets, reply_bytes);
  for (const int socket : servers_sockets) ::close(socket);
}

BareServer::~BareServer() {
  ::kill(pid_, SIGKILL);
  ::waitpid(pid_, nullptr, 0);
  for (const int socket : sockets_) ::close(socket);
}

void BareServer::Send(size_t client, size_t bytes) const {
  if (::send(sockets_[client], buffer, bytes, 0) < 0) Fail("send");
}

void BareServer::Receive(size_t client) const {
  static thread_local char received[kMaxBytes];
  if (::recv(sockets_[client], received, sizeof received, 0) <= 0) Fail("recv");
}

void BareServer::Serve(Duty duty, const std::vector<int>& sockets, size_t reply_bytes) {
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
  const auto serve_one = [&](int socket) {
    if (::recv(socket, buffer, sizeof buffer, 0) <= 0) ::_exit(0);
    if (duty != Duty::INDICATE_TO_ALL) {
      ::send(socket, buffer, reply_bytes, 0);
      return;
    }
    for (const int receiver : sockets) ::send(receiver, buffer, reply_bytes, 0);
  };
  if (duty == Duty::ANSWER_ONE)
    for (;;) serve_one(sockets[0]);

  const int epoll = ::epoll_create1(EPOLL_CLOEXEC);
  for (const int socket : sockets) {
    epoll_event event{};
    event.events = EPOLLIN;
    event.data.fd = socket;
    ::epoll_ctl(epoll, EPOLL_CTL_ADD, socket, &event);
  }
  for (;;) {
    epoll_event events[64];
    const int count = ::epoll_wait(epoll, events, 64, -1);
    for (int i = 0; i < count; ++i) serve_one(events[i].data.fd);
  }
}
