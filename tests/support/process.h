/// A child process of a test, which is gone at the end of its scope.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <string>
#include <vector>

constexpr std::chrono::seconds kPatience{10};

class Process {
 public:
  /// Runs `program` with `arguments`, the first of which is its name. Throws std::runtime_error
  /// when it cannot be run.
  Process(const std::string& program, const std::vector<std::string>& arguments);
  /// Kills it when it still runs.
  ~Process();
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;

  pid_t pid() const { return pid_; }
  void Signal(int number) const;
  /// Feeds standard input.
  void Write(const std::string& text) const;
  /// Waits until standard output or error has shown `text`, or until both have ended; tells which.
  bool WaitForOutput(const std::string& text);
  /// Waits for the end. Returns the exit status, -N after signal N, or -1000 when it does not end.
  int Wait();
  const std::string& output() const { return output_; }

 private:
  pid_t pid_ = -1;
  bool ended_ = false;
  int status_ = 0;
  int input_ = -1, output_fd_ = -1;
  std::string output_;
};
