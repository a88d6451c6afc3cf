/// Appends lines to a file without a trace in the program.
#include "line_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstring>
#include <utility>

#include "event.h"

namespace trace {
namespace {

/// Out of the way of the numbers that the program's own files get.
constexpr int kLowestDescriptor = 200;

/// Unlike write(), this is no point at which a thread can be cancelled.
ssize_t WriteAll(int fd, std::string_view text) {
  return ::syscall(SYS_write, fd, text.data(), text.size());
}

}  // namespace

static LineFile& StandardError() {
  // Other threads may use it until the process has ended.
  static LineFile& file = *new LineFile("", "standard error");
  return file;
}

/// When this library is loaded, the program has not run yet.
[[gnu::constructor]] static void RememberStandardError() {
  StandardError();
}

void Complain(const std::string& message) {
  StandardError().Write("mvq-qcmap-trace: " + message + "\n");
}

LineFile::LineFile(std::string path, const char* purpose)
    : path_(std::move(path)), purpose_(purpose), fd_(Open()) {
  if (fd_ < 0 || ::fstat(fd_, &file_) != 0) Fail(errno);
}

int LineFile::Open() const {
  if (path_.empty()) return STDERR_FILENO;
  const int opened = ::open(path_.c_str(), O_WRONLY | O_APPEND | O_CLOEXEC);
  if (opened < 0) return opened;
  const int fd = ::fcntl(opened, F_DUPFD_CLOEXEC, kLowestDescriptor);
  if (fd < 0) return opened;
  ::close(opened);
  return fd;
}

bool LineFile::IsOurs() const {
  struct stat now {};
  return ::fstat(fd_, &now) == 0 && now.st_dev == file_.st_dev && now.st_ino == file_.st_ino;
}

bool LineFile::IsOpen() {
  // Looking takes a third of the time of a write. A number of ours is not given away at once.
  const int64_t now_us = Now();
  if (fd_ >= kLowestDescriptor && now_us - checked_us_ < 10000) return true;
  checked_us_ = now_us;
  return IsOurs();
}

void LineFile::Write(std::string_view line) {
  if (failed_) return;
  if (!IsOpen()) {
    fd_ = Open();
    // Standard error has become another file, which is no place for a message either.
    if (!IsOurs()) return path_.empty() ? failed_.store(true) : Fail(EBADF);
  }
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
  return !failed_ && ::flock(fd_, LOCK_EX | LOCK_NB) == 0 && file_.st_size == 0;
}

void LineFile::Fail(int error) {
  if (!failed_.exchange(true))
    Complain(std::string(purpose_) + " ends here: " + std::strerror(error));
}

}  // namespace trace
