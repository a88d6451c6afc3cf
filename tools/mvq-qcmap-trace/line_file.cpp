/// Appends lines to a file without a trace in the program.
#include "line_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstring>
#include <ctime>
#include <utility>

namespace trace {
namespace {

/// Out of the way of the numbers that the program's own files get.
constexpr int kLowestDescriptor = 200;

/// Unlike write(), this is no point at which a thread can be cancelled.
ssize_t WriteAll(int fd, std::string_view text) {
  return ::syscall(SYS_write, fd, text.data(), text.size());
}

}  // namespace

void Complain(const std::string& message) {
  WriteAll(STDERR_FILENO, "mvq-qcmap-trace: " + message + "\n");
}

LineFile::LineFile(std::string path, const char* purpose)
    : path_(std::move(path)), purpose_(purpose) {
  Open();
}

void LineFile::Open() {
  int fd = STDERR_FILENO;
  if (!path_.empty()) {
    const int opened = ::open(path_.c_str(), O_WRONLY | O_APPEND | O_CLOEXEC);
    if (opened < 0) return Fail(errno);
    fd = ::fcntl(opened, F_DUPFD_CLOEXEC, kLowestDescriptor);
    if (fd < 0)
      fd = opened;
    else
      ::close(opened);
  }
  struct stat file {};
  if (::fstat(fd, &file) != 0) return Fail(errno);
  device_ = file.st_dev;
  inode_ = file.st_ino;
  fd_ = fd;
}

bool LineFile::IsOpen() {
  // Looking takes a third of the time of a write. A number of ours is not given away at once.
  timespec now{};
  ::clock_gettime(CLOCK_MONOTONIC_COARSE, &now);
  const int64_t now_ms = int64_t{now.tv_sec} * 1000 + now.tv_nsec / 1000000;
  if (fd_ >= kLowestDescriptor && now_ms - checked_ms_ < 10) return true;
  checked_ms_ = now_ms;
  struct stat file {};
  return ::fstat(fd_, &file) == 0 && file.st_dev == device_ && file.st_ino == inode_;
}

void LineFile::Write(std::string_view line) {
  if (!failed_ && !IsOpen()) path_.empty() ? Fail(EBADF) : Open();
  if (failed_) return;
  const ssize_t written = WriteAll(fd_, line);
  if (written == static_cast<ssize_t>(line.size())) return;
  Fail(written < 0 ? errno : ENOSPC);
  sigset_t raised;
  ::sigemptyset(&raised);
  ::sigaddset(&raised, SIGPIPE);
  ::sigaddset(&raised, SIGXFSZ);
  const timespec at_once{0, 0};
  ::sigtimedwait(&raised, nullptr, &at_once);
}

bool LineFile::Claim() {
  struct stat file {};
  if (failed_ || ::flock(fd_, LOCK_EX | LOCK_NB) != 0) return false;
  return ::fstat(fd_, &file) == 0 && file.st_size == 0;
}

void LineFile::Fail(int error) {
  if (!failed_.exchange(true))
    Complain(std::string(purpose_) + " ends here: " + std::strerror(error));
}

}  // namespace trace
