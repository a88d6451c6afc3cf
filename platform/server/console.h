/// Commands from standard input, by which a person or a scenario plays the network.
#pragma once

#include <asio/posix/stream_descriptor.hpp>
#include <asio/steady_timer.hpp>
#include <string>

#include "server/hub.h"

namespace sim {

/// Carries out one command a line. A line that cannot be carried out is answered on stderr with
/// what is wrong with it, and changes nothing. `sleep` holds back the lines after it, not the
/// server, which also runs on when the input ends.
class Console {
 public:
  Console(asio::io_context& io, Model& model, Requests& requests, Hub& hub);

  void Start() { WaitForInput(); }
  void Stop();

 private:
  struct Command;
  static const Command kCommands[];

  void WaitForInput();
  void ReadInput();
  void RunLines();
  /// Returns what is wrong with the line; empty when nothing is.
  std::string Run(const std::string& line);
  void Sleep(Milliseconds time);
  void Show();
  void Help();
  /// Null when there is no such profile.
  Profile* FindProfile(const std::string& index);

  asio::io_context& io_;
  Model& model_;
  Requests& requests_;
  Hub& hub_;
  asio::posix::stream_descriptor input_;
  asio::steady_timer pause_;
  bool paused_ = false;
  std::string unread_;
  unsigned line_number_ = 0;
};

}  // namespace sim
