/// Exchanges commands and answers with the server's control socket.
#include "ctl.h"

#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <iostream>
#include <stdexcept>

#include "protocol/control.h"
#include "protocol/descriptor.h"

namespace {

constexpr int kExitWrong = 2;
constexpr int kExitNoServer = 8;

struct NoServer : std::runtime_error {
  using std::runtime_error::runtime_error;
};

class ControlSocket {
 public:
  explicit ControlSocket(const std::string& path) : path_(path) {
    const auto address = sim::ToAddress(path);
    if (!address ||
        connect(fd_.Get(), reinterpret_cast<const sockaddr*>(&*address), sizeof *address) != 0)
      throw NoServer("no server accepts commands at " + path);
    if (!sim::IsTrustedPeer(fd_.Get()))
      throw NoServer("the server at " + path + " is another user's");
  }

  /// Prints the answer. Returns what is wrong with the command, or an empty string.
  std::string Run(const std::string& command) const {
    if (send(fd_.Get(), command.data(), command.size(), MSG_NOSIGNAL) < 0) Lost();
    for (;;) {
      char part[1 + sim::kMaxAnswerBytes];
      const ssize_t size = recv(fd_.Get(), part, sizeof part, 0);
      if (size <= 0) Lost();
      std::string text(part + 1, static_cast<size_t>(size) - 1);
      if (part[0] == sim::kIsWrong) return text;
      std::cout << text << std::flush;
      if (part[0] == sim::kTookEffect) return {};
    }
  }

 private:
  [[noreturn]] void Lost() const { throw NoServer("lost the server at " + path_); }

  const std::string path_;
  const sim::Descriptor fd_{socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0)};
};

int RunLines(const ControlSocket& server) {
  std::string line;
  for (unsigned number = 1; std::getline(std::cin, line); ++number) {
    const std::string wrong = line.empty() ? "" : server.Run(line);
    if (wrong.empty()) continue;
    std::fprintf(stderr, "mvq-qcmap-sim: ctl: line %u: %s\n", number, wrong.c_str());
    return kExitWrong;
  }
  return 0;
}

}  // namespace

int SendCommands(const std::vector<std::string>& words) {
  std::string command;
  for (const std::string& word : words) command += (command.empty() ? "" : " ") + word;
  if (command.empty()) {
    std::fputs("mvq-qcmap-sim: ctl: no command is given\nhint: mvq-qcmap-sim ctl help\n", stderr);
    return kExitWrong;
  }
  try {
    const ControlSocket server(sim::DefaultControlPath());
    if (command == "-") return RunLines(server);
    const std::string wrong = server.Run(command);
    if (wrong.empty()) return 0;
    std::fprintf(stderr, "mvq-qcmap-sim: ctl: %s\n", wrong.c_str());
    return kExitWrong;
  } catch (const NoServer& error) {
    std::fprintf(stderr,
                 "mvq-qcmap-sim: ctl: %s\nhint: start one, or check QCMAP_CONTROL and "
                 "QCMAP_SOCKET\n",
                 error.what());
    return kExitNoServer;
  }
}
