/// What the launchers share: a program that runs as their child and whose end they repeat.
#pragma once

#include <signal.h>
#include <sys/types.h>

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace launch {

// Exit statuses of a launcher itself, the same as those of env and timeout.
constexpr int kExitFailed = 125;
constexpr int kExitNotExecutable = 126;
constexpr int kExitNotFound = 127;

/// Throws std::runtime_error.
[[noreturn]] void Fail(const std::string& message);
/// Adds what `errno` means.
[[noreturn]] void FailWithErrno(const std::string& message);

/// The words as execvp takes them. They must outlive the result.
std::vector<char*> ToArguments(const std::vector<std::string>& words);

/// Has this process, a child of `parent`, receive `signal` when its parent ends for whatever
/// reason.
void EndWithParent(pid_t parent, int signal);

void UseNoInput();

/// The folder of the running launcher.
std::string OwnFolder();

/// Runs a program. From its construction on, this process and its later threads receive the awaited
/// signals only while the program runs, or by SignalBeforeInput.
class Program {
 public:
  Program();

  /// Has `handler` called when this process receives `signal` while the program runs. Unless it
  /// returns true, the signal is passed on to the program.
  void On(int signal, std::function<bool(const siginfo_t&)> handler);
  /// Waits until `fd` can be read. Returns 0, or the signal that comes first: one that Run
  /// would pass on, and that is not ignored.
  static int SignalBeforeInput(int fd);
  /// Runs the program until it ends, and returns its status as waitpid gives it. SIGHUP, SIGINT,
  /// SIGQUIT and SIGTERM are passed on to it.
  int Run(const std::vector<std::string>& words, bool has_input = true);
  /// The process, while it runs.
  pid_t pid() const { return pid_; }

 private:
  int Await();

  sigset_t awaited_;
  sigset_t mask_before_;
  std::map<int, std::function<bool(const siginfo_t&)>> handlers_;
  pid_t pid_ = -1;
};

/// Ends this process with the signal, or returns the exit status, with which the program ended.
int Repeat(int status);

}  // namespace launch
