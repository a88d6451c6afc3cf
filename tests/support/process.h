/// A child process of a test, which ends with its scope.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

/// How long a test waits for what must happen.
constexpr std::chrono::seconds kPatience{10};

/// Waits until `condition` is true or time is up. Returns whether it is true.
template <typename Condition>
bool Eventually(Condition condition) {
  const auto deadline = std::chrono::steady_clock::now() + kPatience;
  while (std::chrono::steady_clock::now() < deadline) {
    if (condition()) return true;
    std::this_thread::yield();
  }
  return condition();
}

/// Whether a thread of this process sleeps, as it does while it waits for a mutex.
inline bool IsAsleep(pid_t thread) {
  std::ifstream stat("/proc/self/task/" + std::to_string(thread) + "/stat");
  std::string id, name, state;
  stat >> id >> name >> state;
  return state == "S";
}

class Process {
 public:
  /// Runs `program`. The first of `arguments` is the name under which it appears.
  Process(const std::string& program, const std::vector<std::string>& arguments);
  /// Kills the process if it still runs.
  ~Process();
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;

  pid_t pid() const { return pid_; }
  void Signal(int number) const;
  /// Feeds standard input.
  void Write(const std::string& text) const;
  /// Reads on until `text` has appeared on standard output or error. Returns false if both end
  /// first or time is up.
  bool WaitForOutput(const std::string& text);
  /// Reads on until both end.
  void ReadAll() { WaitForOutput("\1 which no process prints"); }
  /// What has been read from both so far.
  const std::string& output() const { return output_; }
  /// Waits for the end of the process. Returns its exit status, or -N after signal N. Throws
  /// if time is up.
  int Wait();

 private:
  pid_t pid_ = -1;
  bool ended_ = false;
  int input_, output_fd_;
  std::string output_;
};
