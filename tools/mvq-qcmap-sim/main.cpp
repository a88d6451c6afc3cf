/// mvq-qcmap-sim: runs a program against a simulated server of its own.
#include <fcntl.h>
#include <limits.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <filesystem>
#include <random>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#include "ctl.h"
#include "launch/program.h"
#include "mox/vendor/qcom/qcmap/version.h"
#include "protocol/control.h"
#include "protocol/descriptor.h"
#include "protocol/standard_streams.h"

namespace {

namespace fs = std::filesystem;

/// How often a blocked standard error is looked at, and how long it has at the end.
constexpr int kPatienceMs = 200;

constexpr char kServerName[] = "QCMAP_ConnectionManager";
constexpr char kHelp[] =
    "Runs a program against a simulated server of its own.\n"
    "Usage: mvq-qcmap-sim [SERVER OPTIONS] -- PROGRAM [ARGUMENTS]\n"
    "       mvq-qcmap-sim ctl COMMAND | -\n"
    "\n"
    "The server gets a private socket, whose path the program finds in QCMAP_SOCKET. The server is\n"
    "ended when the program ends. Server options: see 'QCMAP_ConnectionManager --help'. With\n"
    "--console the server reads its commands from standard input, and the program's input is empty.\n"
    "\n"
    "'mvq-qcmap-sim ctl' sends a command to the server of QCMAP_CONTROL or QCMAP_SOCKET, waits until\n"
    "it has taken effect, and prints the answer. The command 'help' lists all commands. With - it\n"
    "sends the lines of standard input. The exit status is 2 if a command is wrong, and 8 if there is\n"
    "no server.\n"
    "\n"
    "  -h, --help     show this help\n"
    "  -V, --version  show the version\n"
    "  --replay FILE  start no server, but answer from a recording; --fast leaves its pauses out\n"
    "\n"
    "The exit status is the program's. If a signal ends the program, mvq-qcmap-sim ends with the same\n"
    "signal, which a shell shows as 128 plus the number of the signal.\n"
    "  125  the server could not be started, or the command line is wrong\n"
    "  126  the program could not be run\n"
    "  127  the program was not found\n";

/// Looks for the server in this program's own folder, then in the build tree, then in PATH.
std::string FindServer() {
  const fs::path here = launch::OwnFolder();
  for (const fs::path& place : {here / kServerName, here / MVQ_QCMAP_SERVER_IN_BUILD}) {
    if (access(place.c_str(), X_OK) == 0) return place;
  }
  return kServerName;
}

/// A temporary folder with a name that nobody can guess. The server makes it and removes it, even
/// if this program has been killed. The destructor removes what a killed server has left.
class PrivateFolder {
 public:
  PrivateFolder() {
    const char* parent = std::getenv("TMPDIR");
    std::random_device random;
    char name[sizeof "/qcmap-sim-0123456789abcdef"];
    std::snprintf(name, sizeof name, "/qcmap-sim-%08x%08x", random(), random());
    path_ = std::string(parent != nullptr && *parent != '\0' ? parent : "/tmp") + name;
  }
  ~PrivateFolder() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
  }
  PrivateFolder(const PrivateFolder&) = delete;
  PrivateFolder& operator=(const PrivateFolder&) = delete;

  std::string Socket() const { return path_ + "/server"; }

 private:
  std::string path_;
};

/// The server's process. The destructor ends it.
class Server {
 public:
  Server(std::vector<std::string> options, const std::string& socket, bool reads_input) {
    const std::string path = FindServer();
    options.insert(options.begin(), path);
    options.insert(options.end(), {"--socket", socket});
    std::vector<char*> arguments = launch::ToArguments(options);
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) launch::FailWithErrno("pipe");
    output_ = sim::Descriptor(ends[0]);
    const sim::Descriptor server_end(ends[1]);
    const pid_t parent = getpid();
    pid_ = fork();
    if (pid_ < 0) launch::FailWithErrno("fork");
    if (pid_ == 0) {
      // The server gets a signal that it can handle, to remove its folder. Unless it reads the
      // terminal, it has its own process group, so that interrupts from the terminal do not reach
      // it.
      launch::EndWithParent(parent, SIGTERM);
      if (!reads_input) setpgid(0, 0);
      sigset_t none;
      sigemptyset(&none);
      sigprocmask(SIG_SETMASK, &none, nullptr);
      if (!reads_input) launch::UseNoInput();
      dup2(server_end.Get(), STDOUT_FILENO);
      execvp(path.c_str(), arguments.data());
      std::fprintf(stderr, "mvq-qcmap-sim: %s: %s\n", path.c_str(), std::strerror(errno));
      _exit(launch::kExitFailed);
    }
  }
  ~Server() {
    // A stopped server must be resumed to end. One that listens gets time to clean up. Before, its
    // scenario may keep it busy, so that it does not notice the signal.
    kill(pid_, SIGCONT);
    kill(pid_, drain_.joinable() ? SIGTERM : SIGKILL);
    sigset_t child;
    sigemptyset(&child);
    sigaddset(&child, SIGCHLD);
    const timespec patience{5, 0};
    while (waitpid(pid_, nullptr, WNOHANG) == 0) {
      if (sigtimedwait(&child, nullptr, &patience) < 0 && errno == EAGAIN) kill(pid_, SIGKILL);
    }
    server_has_ended_ = true;
    if (drain_.joinable()) drain_.join();
  }
  Server(const Server&) = delete;
  Server& operator=(const Server&) = delete;

  /// Waits until the server prints that it listens. Returns 0, or the signal that comes first.
  int AwaitListening() {
    std::string line;
    char c = 0;
    while (line.rfind("listening on ", 0) != 0 || c != '\n') {
      if (c == '\n') line.clear();
      if (const int signal = launch::Program::SignalBeforeInput(output_.Get())) return signal;
      if (read(output_.Get(), &c, 1) != 1) launch::Fail("the server did not start");
      line += c;
    }
    drain_ = std::thread([this] { PassOutputOn(); });
    return 0;
  }

 private:
  /// Later output, such as the console's, goes to standard error, to keep it apart from the
  /// program's. When the server has ended, what nobody reads is dropped.
  void PassOutputOn() const {
    char buffer[PIPE_BUF];  // what a pipe that is ready takes without blocking
    for (ssize_t got; (got = read(output_.Get(), buffer, sizeof buffer)) > 0;) {
      pollfd errors{STDERR_FILENO, POLLOUT, 0};
      while (poll(&errors, 1, kPatienceMs) == 0)
        if (server_has_ended_) return;
      if (write(STDERR_FILENO, buffer, static_cast<size_t>(got)) < 0) return;
    }
  }

  pid_t pid_;
  sim::Descriptor output_;
  std::atomic<bool> server_has_ended_{false};
  std::thread drain_;
};

int Simulate(const std::vector<std::string>& options, const std::vector<std::string>& program) {
  launch::Program child;
  const bool console = std::find(options.begin(), options.end(), "--console") != options.end();
  const PrivateFolder folder;
  Server server(options, folder.Socket(), console);
  if (const int signal = server.AwaitListening()) return signal;
  setenv("QCMAP_SOCKET", folder.Socket().c_str(), 1);
  setenv("QCMAP_CONTROL", sim::ControlPath(folder.Socket()).c_str(), 1);
  return child.Run(program, !console);
}

/// Recordings are played by the launcher that makes them. It takes the same words.
int Replay(std::vector<std::string> words) {
  const fs::path here = launch::OwnFolder();
  words.insert(words.begin(), "mvq-qcmap-trace");
  for (const fs::path& folder : {here, here / "../mvq-qcmap-trace"})
    execv((folder / words[0]).c_str(), launch::ToArguments(words).data());
  std::fputs("mvq-qcmap-sim: mvq-qcmap-trace, which plays recordings, is not installed\n", stderr);
  return launch::kExitFailed;
}

}  // namespace

int main(int argc, char* argv[]) {
  sim::OpenStandardStreams();
  const std::vector<std::string> words(argv + 1, argv + argc);
  const auto separator = std::find(words.begin(), words.end(), "--");
  const auto given = [&](const char* letter, const char* name) {
    return std::find(words.begin(), separator, letter) != separator ||
           std::find(words.begin(), separator, name) != separator;
  };
  if (given("--replay", "--replay")) return Replay(words);
  if (given("-h", "--help")) {
    std::fputs(kHelp, stdout);
    return 0;
  }
  if (given("-V", "--version")) {
    std::puts("mvq-qcmap-sim " MVQ_QCMAP_VERSION);
    return 0;
  }
  if (!words.empty() && words[0] == "ctl") return SendCommands({words.begin() + 1, words.end()});
  if (separator == words.end() || separator + 1 == words.end()) {
    std::fputs("mvq-qcmap-sim: no program is given\nhint: mvq-qcmap-sim -- PROGRAM ARGUMENTS\n",
               stderr);
    return launch::kExitFailed;
  }
  try {
    return launch::Repeat(Simulate({words.begin(), separator}, {separator + 1, words.end()}));
  } catch (const std::exception& error) {
    std::fprintf(stderr, "mvq-qcmap-sim: %s\n", error.what());
    return launch::kExitFailed;
  }
}
