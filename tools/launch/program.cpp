/// Runs a program as the child of a launcher.
#include "launch/program.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/signalfd.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "protocol/descriptor.h"

namespace {

constexpr int kPassedOn[] = {SIGHUP, SIGINT, SIGQUIT, SIGTERM};

}  // namespace

namespace launch {

void Fail(const std::string& message) {
  throw std::runtime_error(message);
}

void FailWithErrno(const std::string& message) {
  Fail(message + ": " + std::strerror(errno));
}

std::vector<char*> ToArguments(const std::vector<std::string>& words) {
  std::vector<char*> arguments;
  arguments.reserve(words.size() + 1);
  for (const std::string& word : words) arguments.push_back(const_cast<char*>(word.c_str()));
  arguments.push_back(nullptr);
  return arguments;
}

void EndWithParent(pid_t parent, int signal) {
  prctl(PR_SET_PDEATHSIG, signal);
  if (getppid() != parent) _exit(kExitFailed);
}

void UseNoInput() {
  const int none = open("/dev/null", O_RDONLY | O_CLOEXEC);
  if (none >= 0) dup2(none, STDIN_FILENO);
}

std::string OwnFolder() {
  std::error_code error;
  return std::filesystem::read_symlink("/proc/self/exe", error).parent_path();
}

Program::Program() {
  sigemptyset(&awaited_);
  sigaddset(&awaited_, SIGCHLD);
  for (const int signal : kPassedOn) sigaddset(&awaited_, signal);
  sigprocmask(SIG_BLOCK, &awaited_, &mask_before_);
}

void Program::On(int signal, std::function<bool(const siginfo_t&)> handler) {
  handlers_[signal] = std::move(handler);
  sigaddset(&awaited_, signal);
  sigprocmask(SIG_BLOCK, &awaited_, nullptr);
}

int Program::SignalBeforeInput(int fd) {
  sigset_t ending;
  sigemptyset(&ending);
  for (const int signal : kPassedOn) {
    struct sigaction action;
    sigaction(signal, nullptr, &action);
    if (action.sa_handler != SIG_IGN) sigaddset(&ending, signal);
  }
  const sim::Descriptor signals(signalfd(-1, &ending, SFD_CLOEXEC | SFD_NONBLOCK));
  pollfd waited[] = {{signals.Get(), POLLIN, 0}, {fd, POLLIN, 0}};
  poll(waited, 2, -1);
  signalfd_siginfo came;
  return read(signals.Get(), &came, sizeof came) > 0 ? static_cast<int>(came.ssi_signo) : 0;
}

int Program::Run(const std::vector<std::string>& words, bool has_input) {
  const pid_t parent = getpid();
  pid_ = fork();
  if (pid_ < 0) FailWithErrno("fork");
  if (pid_ > 0) return Await();
  EndWithParent(parent, SIGKILL);
  sigprocmask(SIG_SETMASK, &mask_before_, nullptr);
  if (!has_input) UseNoInput();
  execvp(words[0].c_str(), ToArguments(words).data());
  std::fprintf(stderr, "%s: %s: %s\n", program_invocation_short_name, words[0].c_str(),
               std::strerror(errno));
  _exit(errno == ENOENT ? kExitNotFound : kExitNotExecutable);
}

int Program::Await() {
  for (;;) {
    siginfo_t info;
    const int signal = sigwaitinfo(&awaited_, &info);
    const auto handler = handlers_.find(signal);
    if (handler != handlers_.end() && handler->second(info)) continue;
    if (signal == SIGCHLD) {
      int status = 0;
      if (waitpid(pid_, &status, WNOHANG) == pid_) return status;
    } else if (signal > 0 && info.si_code != SI_KERNEL) {
      // Signals from the terminal (SI_KERNEL) have already reached the program.
      kill(pid_, signal);
    }
  }
}

int Repeat(int status) {
  if (WIFEXITED(status)) return WEXITSTATUS(status);
  const int signal = WTERMSIG(status);
  const rlimit no_core{0, 0};
  setrlimit(RLIMIT_CORE, &no_core);
  ::signal(signal, SIG_DFL);
  raise(signal);
  sigset_t only;
  sigemptyset(&only);
  sigaddset(&only, signal);
  sigprocmask(SIG_UNBLOCK, &only, nullptr);
  return 128 + signal;
}

}  // namespace launch
