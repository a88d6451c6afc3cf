/// The commands by which a person or a script controls the simulated network.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "server/hub.h"

namespace sim {

/// What follows from a command line.
struct CommandResult {
  /// What is wrong with the line, which has then changed nothing. Empty when it was carried out.
  std::string error;
  /// What the command shows, in whole lines.
  std::string output{};
  /// How long the line after this one has to wait.
  std::optional<Milliseconds> pause{};
  /// Whether the server is to end.
  bool quits = false;
};

/// Carries out commands. It does not know where the lines come from.
class ConsoleCommands {
 public:
  ConsoleCommands(Model& model, Requests& requests, Hub& hub);

  /// Carries out one line. An empty line and a comment, which begins with #, do nothing.
  CommandResult Run(const std::string& line);

 private:
  using Words = std::vector<std::string>;
  struct Command;
  static const Command kCommands[];

  CommandResult Drop(const Words& words);
  CommandResult Fail(const Words& words);
  CommandResult SetNetwork(const Words& words);
  CommandResult SetRoaming(const Words& words);
  CommandResult AddTraffic(const Words& words);
  CommandResult Indicate(const Words& words);
  CommandResult IndicateRaw(const Words& words);
  CommandResult Sleep(const Words& words);
  CommandResult Echo(const Words& words);
  CommandResult Show(const Words& words);
  CommandResult Quit(const Words& words);
  CommandResult Help(const Words& words);
  /// Null when there is no such profile.
  Profile* FindProfile(const std::string& index);

  Model& model_;
  Requests& requests_;
  Hub& hub_;
};

}  // namespace sim
