/// A child process of a test, which is gone at the end of its scope.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <string>
#include <thread>
#include <vector>

/// How long a test waits for what must happen.
constexpr std::chrono::seconds kPatience{10};

/// Whether `condition` comes true.
template <typename Condition>
bool Eventually(Condition condition) {
  const auto deadline = std::chrono::steady_clock::now() + kPatience;
  while (!condition() && std::chrono::steady_clock::now() < deadline) std::this_thread::yield();
  return condition();
}

class Process {
 public:
  /// Runs `program`; the first of `arguments` is the name that it is to bear.
  Process(const std::string& program, const std::vector<std::string>& arguments);
  /// Kills it when it still runs.
  ~Process();
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;

  pid_t pid() const { return pid_; }
  void Signal(int number) const;
  /// Feeds standard input.
  void Write(const std::string& text) const;
  /// Reads on until standard output or error has shown `text`. False when they end or nothing
  /// comes any more.
  bool WaitForOutput(const std::string& text);
  /// What both have shown so far.
  const std::string& output() const { return output_; }
  /// Reads both to their end. Returns the exit status, or -N after signal N.
  int Wait();

 private:
  pid_t pid_ = -1;
  bool ended_ = false;
  int input_, output_fd_;
  std::string output_;
};
