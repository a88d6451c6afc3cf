/// Runs a child process and follows what it prints.
#include "process.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <stdexcept>

Process::Process(const std::string& program, const std::vector<std::string>& arguments) {
  int input[2], output[2];
  if (::pipe2(input, O_CLOEXEC) != 0 || ::pipe2(output, O_CLOEXEC) != 0)
    throw std::runtime_error("no pipe");
  std::vector<char*> argv;
  for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
  argv.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  ::posix_spawn_file_actions_init(&actions);
  ::posix_spawn_file_actions_adddup2(&actions, input[0], 0);
  for (const int fd : {1, 2}) ::posix_spawn_file_actions_adddup2(&actions, output[1], fd);
  const int error = ::posix_spawn(&pid_, program.c_str(), &actions, nullptr, argv.data(), environ);
  ::posix_spawn_file_actions_destroy(&actions);
  ::close(input[0]);
  ::close(output[1]);
  input_ = input[1];
  ::fcntl(input_, F_SETFL, O_NONBLOCK);
  output_fd_ = output[0];
  if (error != 0) throw std::runtime_error("cannot run " + program);
}

Process::~Process() {
  Signal(SIGKILL);
  if (!ended_) ::waitpid(pid_, nullptr, 0);
  ::close(input_);
  ::close(output_fd_);
}

void Process::Signal(int number) const {
  if (!ended_) ::kill(pid_, number);
}

void Process::Write(const std::string& text) const {
  size_t written = 0;
  const bool all = Eventually([&] {
    const ssize_t size = ::write(input_, text.data() + written, text.size() - written);
    if (size > 0) written += static_cast<size_t>(size);
    return written == text.size();
  });
  if (!all) throw std::runtime_error("the process does not read");
}

bool Process::WaitForOutput(const std::string& text) {
  const auto deadline = std::chrono::steady_clock::now() + kPatience;
  size_t searched = 0;
  while (output_.find(text, searched - std::min(searched, text.size())) == std::string::npos) {
    searched = output_.size();
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
        deadline - std::chrono::steady_clock::now());
    pollfd waited{output_fd_, POLLIN, 0};
    char bytes[65536];
    if (left.count() <= 0 || ::poll(&waited, 1, static_cast<int>(left.count())) <= 0) return false;
    const ssize_t size = ::read(output_fd_, bytes, sizeof bytes);
    if (size <= 0) return false;
    output_.append(bytes, static_cast<size_t>(size));
  }
  return true;
}

int Process::Wait() {
  int status = 0;
  ReadAll();
  ended_ = Eventually([&] { return ::waitpid(pid_, &status, WNOHANG) == pid_; });
  if (!ended_) throw std::runtime_error("the process does not end");
  return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}
