/// Commands from standard input, by which a person or a scenario plays the network.
#pragma once

#include <asio/posix/stream_descriptor.hpp>
#include <asio/steady_timer.hpp>
#include <string>
#include <vector>

#include "server/hub.h"

namespace sim {

/// Reads one command a line. A line that cannot be carried out is answered on stderr with what is
/// wrong with it, and changes nothing. `sleep` holds back the lines after it, not the server, which
/// also runs on when the input ends.
class Console {
 public:
  Console(asio::io_context& io, Model& model, Requests& requests, Hub& hub);

  void Start() { WaitForInput(); }

 private:
  using Words = std::vector<std::string>;
  struct Command;
  static const Command kCommands[];

  void WaitForInput();
  void ReadInput();
  void RunLines();
  /// Each returns what is wrong; empty when nothing is.
  std::string Run(const std::string& line);
  std::string Drop(const Words& words);
  std::string Fail(const Words& words);
  std::string Network(const Words& words);
  std::string Roaming(const Words& words);
  std::string Traffic(const Words& words);
  std::string Indicate(const Words& words);
  std::string IndicateRaw(const Words& words);
  std::string Sleep(const Words& words);
  std::string Show(const Words& words);
  std::string Quit(const Words& words);
  std::string Help(const Words& words);
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
