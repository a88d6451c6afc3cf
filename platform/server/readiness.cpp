/// Watches descriptors through an epoll instance.
#include "server/readiness.h"

#include <fcntl.h>
#include <linux/sockios.h>
#include <poll.h>
#include <sys/epoll.h>
#include <sys/ioctl.h>
#include <sys/stat.h>

#include <asio/post.hpp>
#include <cerrno>
#include <string>
#include <system_error>

namespace sim {

Descriptor ReopenWithoutBlocking(int fd, int access) {
  struct stat status {};
  ::fstat(fd, &status);
  if (!S_ISFIFO(status.st_mode) && !S_ISCHR(status.st_mode)) return Descriptor();
  const std::string path = "/proc/self/fd/" + std::to_string(fd);
  return Descriptor(::open(path.c_str(), access | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
}

int Poll(int fd, short events, std::chrono::milliseconds patience) {
  pollfd polled{};
  polled.fd = fd;
  polled.events = events;
  static_cast<void>(::poll(&polled, 1, static_cast<int>(patience.count())));
  return polled.revents;
}

bool HasEnded(int fd) {
  return Poll(fd, 0) != 0;
}

bool Reading::HasGoneOn(int fd) {
  const int before = unread_;
  ::ioctl(fd, SIOCOUTQ, &unread_);
  return unread_ != before;
}

Readiness::Readiness(asio::io_context& io, int fd, uint32_t event) : watch_(io) {
  const int watch = ::epoll_create1(EPOLL_CLOEXEC);
  watch_.assign(watch);
  epoll_event events{};
  events.events = event;
  is_plain_file_ = ::epoll_ctl(watch, EPOLL_CTL_ADD, fd, &events) != 0;
}

void Readiness::Wait(std::function<void()> ready) {
  if (waiting_) return;
  const auto handler = [this, ready = std::move(ready)](auto...) {
    waiting_ = false;
    ready();
  };
  if (is_plain_file_) {
    asio::post(watch_.get_executor(), handler);
  } else {
    watch_.async_wait(asio::posix::stream_descriptor::wait_read, handler);
  }
  waiting_ = true;
}

}  // namespace sim
