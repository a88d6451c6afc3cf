/// Waits for peers and checks who they are.
#include "server/acceptor.h"

#include <fcntl.h>
#include <sys/socket.h>

#include "protocol/socket_path.h"

namespace sim {
namespace {

constexpr std::chrono::milliseconds kPause{100};

}  // namespace

Acceptor::Acceptor(asio::io_context& io, Complaints& complaints,
                   std::function<void(Protocol::socket)> take, std::function<void()> prepare)
    : io_(io),
      complaints_(complaints),
      take_(std::move(take)),
      prepare_(std::move(prepare)),
      acceptor_(io),
      again_(io, [] { /* The loop then arms this activity. */ }) {}

void Acceptor::Listen(Descriptor socket) {
  acceptor_.assign(Protocol(AF_UNIX, 0), socket.Release());
  acceptor_.non_blocking(true);
}

void Acceptor::Await() {
  const bool pauses = Clock::now() < again_at_;
  again_.Set(pauses ? again_at_ : kNever);
  if (pauses) return;
  acceptor_.async_wait(asio::socket_base::wait_read, [this](auto) { OnPeer(); });
  accepting_ = true;
}

void Acceptor::OnPeer() {
  accepting_ = false;
  try {
    AcceptOne();
  } catch (...) {
    complaints_.Add("a client could not be accepted");
  }
}

void Acceptor::AcceptOne() {
  prepare_();
  asio::error_code error;
  Protocol::socket socket = acceptor_.accept(io_, error);
  if (error) {  // most likely out of descriptors, so trying again at once would not help
    again_at_ = Clock::now() + kPause;
    complaints_.Add("cannot accept: " + error.message());
  } else if (!IsTrustedPeer(socket.native_handle())) {
    complaints_.Add("another user's connection refused");
  } else {
    ::fcntl(socket.native_handle(), F_SETFD, FD_CLOEXEC);
    take_(std::move(socket));
  }
}

}  // namespace sim
