/// Reads commands from standard input.
#pragma once

#include <asio/posix/stream_descriptor.hpp>
#include <asio/steady_timer.hpp>
#include <string>

#include "server/console_commands.h"

namespace sim {

/// Carries out one command for each line. An error goes to stderr, with the number of its line. A
/// `sleep` holds back the lines after it, but not the server, which also runs on when the input
/// ends.
class Console {
 public:
  Console(asio::io_context& io, ConsoleCommands& commands);

  void Start() { WaitForInput(); }
  void Stop();

 private:
  void WaitForInput();
  void ReadInput();
  void RunLines();
  void RunLine(const std::string& line);
  void Sleep(Milliseconds time);

  asio::io_context& io_;
  ConsoleCommands& commands_;
  asio::posix::stream_descriptor input_;
  asio::steady_timer pause_;
  bool paused_ = false;
  std::string unread_;
  unsigned line_number_ = 0;
};

}  // namespace sim
