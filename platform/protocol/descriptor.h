/// Owns a file descriptor.
#pragma once

#include <unistd.h>

#include <utility>

namespace sim {

/// Closes the descriptor at its end. There may be none, which is -1 as in system calls.
class Descriptor {
 public:
  explicit Descriptor(int fd = -1) : fd_(fd) {}
  ~Descriptor() {
    if (IsOpen()) ::close(fd_);
  }
  Descriptor(Descriptor&& other) noexcept : fd_(other.Release()) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(fd_, other.fd_);
    return *this;
  }

  bool IsOpen() const { return fd_ != -1; }
  int Get() const { return fd_; }
  /// Hands the descriptor over, which is then no longer closed here.
  int Release() { return std::exchange(fd_, -1); }

 private:
  int fd_;
};

}  // namespace sim
