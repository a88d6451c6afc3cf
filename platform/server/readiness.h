/// Waits until a descriptor that other programs may share can be read or written.
#pragma once

#include <asio/posix/stream_descriptor.hpp>
#include <chrono>
#include <functional>

#include "protocol/descriptor.h"

namespace sim {

/// Returns a new descriptor for the pipe, terminal or device behind `fd`, opened with `access`
/// (O_RDONLY or O_WRONLY) in a non-blocking mode of its own. It is not open where that is not
/// possible.
Descriptor ReopenWithoutBlocking(int fd, int access);

/// Waits until one of `events` holds for `fd`, or its other end has gone. Returns which of `events`
/// hold, and POLLHUP or POLLERR for such an end. 0 if patience has ended.
int Poll(int fd, short events, std::chrono::milliseconds patience = {});
/// Whether the other end of a connection has gone.
bool HasEnded(int fd);

/// What the other end of a connection has not read yet. A full socket has room for more only when
/// three quarters of it have been read, so a slow reader makes room only now and then.
class Reading {
 public:
  /// Whether something has been read since the last call, or sent.
  bool HasGoneOn(int fd);

 private:
  int unread_ = 0;
};

/// Asio would switch the descriptor to non-blocking mode for every program that shares it. So Asio
/// waits for an epoll instance instead, which in turn watches the descriptor.
class Readiness {
 public:
  /// `event` is EPOLLIN or EPOLLOUT. Throws std::system_error when there are no descriptors left.
  Readiness(asio::io_context& io, int fd, uint32_t event);

  /// Calls `ready` once the descriptor is ready. Does nothing if a wait is in progress. A plain
  /// file is always ready.
  void Wait(std::function<void()> ready);

 private:
  asio::posix::stream_descriptor watch_;
  bool is_plain_file_ = false;
  bool waiting_ = false;
};

}  // namespace sim
