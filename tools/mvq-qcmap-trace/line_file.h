/// A file to which the traced program's processes append lines, unnoticed by the program.
#pragma once

#include <pthread.h>
#include <signal.h>
#include <sys/stat.h>

#include <atomic>
#include <cerrno>
#include <string>
#include <string_view>

namespace trace {

/// Keeps errno, and holds back signals and cancellation: a handler might use the traced library
/// again, and files that are opened would be points at which a thread can be cancelled.
class Unnoticed {
 public:
  Unnoticed() {
    sigset_t all;
    ::sigfillset(&all);
    ::pthread_sigmask(SIG_SETMASK, &all, &mask_);
    ::pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &cancel_state_);
  }
  ~Unnoticed() {
    ::pthread_setcancelstate(cancel_state_, nullptr);
    ::pthread_sigmask(SIG_SETMASK, &mask_, nullptr);
    errno = errno_;
  }
  Unnoticed(const Unnoticed&) = delete;
  Unnoticed& operator=(const Unnoticed&) = delete;

 private:
  const int errno_ = errno;
  sigset_t mask_;
  int cancel_state_;
};

/// Opens the file again when the program has closed the descriptor, as daemons do with all of
/// theirs. Looks every 10 ms whether the descriptor has come to mean another file.
class LineFile {
 public:
  /// An empty path means standard error. `purpose` is what a message calls the file.
  LineFile(std::string path, const char* purpose);

  /// Appends with one write. After a failure, which is reported once, nothing more is written.
  /// To be called with signals held back: SIGPIPE and SIGXFSZ, if raised, are discarded.
  void Write(std::string_view line);
  /// Whether this call is the first to ask and the file is still empty, among all processes.
  bool Claim();
  bool has_failed() const { return failed_; }

 private:
  int Open() const;
  bool IsOurs() const;
  bool IsOpen();
  void Fail(int error);

  const std::string path_;
  const char* const purpose_;
  std::atomic<int> fd_;
  struct stat file_ {};
  /// When the descriptor was last looked at.
  std::atomic<int64_t> checked_us_{0};
  std::atomic<bool> failed_{false};
};

/// Prints a message of the library itself on standard error as it was when the program started.
void Complain(const std::string& message);

}  // namespace trace
