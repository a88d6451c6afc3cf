/// Prints lines without waiting.
#include "server/output.h"

#include <fcntl.h>
#include <limits.h>
#include <poll.h>
#include <sys/epoll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>

namespace sim {
namespace {

/// Holds the largest model that `show` can print.
constexpr size_t kMaxBytes = size_t{512} * 1024;
constexpr size_t kMaxNoteBytes = 64;
constexpr std::chrono::milliseconds kPatienceAtTheEnd{250};

}  // namespace

Output::Output(asio::io_context& io, int fd)
    : fd_(fd), own_fd_(ReopenWithoutBlocking(fd, O_WRONLY)), writable_(io, fd, EPOLLOUT) {
  unsent_.reserve(kMaxBytes + kMaxNoteBytes);
}

void Output::Print(std::string_view lines) noexcept {
  while (!lines.empty()) {
    const size_t size = std::min(lines.find('\n'), lines.size() - 1) + 1;
    if (lines_left_out_ != 0 || unsent_.size() + size > kMaxBytes) {
      ++lines_left_out_;
    } else {
      unsent_.append(lines.substr(0, size));
    }
    lines.remove_prefix(size);
  }
  Flush();
}

void Output::Arm() {
  if (!unsent_.empty()) writable_.Wait([this] { Flush(); });
}

void Output::Flush() noexcept {
  for (;;) {
    if (unsent_.empty() && lines_left_out_ != 0) {
      char note[kMaxNoteBytes];
      std::snprintf(note, sizeof note, "%u lines left out\n", lines_left_out_);
      unsent_ = note;
      lines_left_out_ = 0;
    }
    if (unsent_.empty()) return;
    const ssize_t written = WriteSome();
    if (written != -1) {
      unsent_.erase(0, static_cast<size_t>(written));
    } else if (errno == EAGAIN) {
      return;
    } else {
      // The reader has gone, or the disk is full. The next line makes another attempt.
      lines_left_out_ += static_cast<unsigned>(std::count(unsent_.begin(), unsent_.end(), '\n'));
      unsent_.clear();
      return;
    }
  }
}

// After poll, a pipe takes PIPE_BUF bytes without blocking, unless another program has written to
// it in between. Only a pipe that cannot be reopened runs that risk.
ssize_t Output::WriteSome() {
  if (own_fd_.IsOpen()) return ::write(own_fd_.Get(), unsent_.data(), unsent_.size());
  if (Poll(fd_, POLLOUT) != 0)
    return ::write(fd_, unsent_.data(), std::min<size_t>(unsent_.size(), PIPE_BUF));
  errno = EAGAIN;
  return -1;
}

void Output::Finish() noexcept {
  using Clock = std::chrono::steady_clock;
  const auto end = Clock::now() + kPatienceAtTheEnd;
  for (Flush(); !unsent_.empty() && Clock::now() < end; Flush())
    Poll(fd_, POLLOUT, kPatienceAtTheEnd);
}

}  // namespace sim
