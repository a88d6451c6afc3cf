/// The commands by which a person, a script or a program controls the simulated network.
#pragma once

#include <optional>
#include <string>

#include "server/hub.h"

namespace sim {

/// What follows from a command.
struct CommandResult {
  /// What is wrong with the command, which has then changed nothing. Empty when it was carried out.
  std::string error{};
  /// What the command shows, in whole lines.
  std::string output{};
  /// How long the next command from the same place has to wait.
  std::optional<Milliseconds> pause{};
  /// The time of the model for which the next command from the same place has to wait.
  std::optional<Timeline::Time> awaited{};
  /// Whether the server is to end.
  bool quits = false;
};

/// Carries out commands, wherever they come from.
class Commands {
 public:
  Commands(Model& model, Faults& faults, Hub& hub, Record& record)
      : model_(model), faults_(faults), hub_(hub), record_(record) {}

  /// Carries out one line. An empty line and a comment, which begins with #, do nothing.
  CommandResult Run(const std::string& line);
  /// Whether the time of the model has come so far.
  bool HasReached(Timeline::Time time) const { return model_.modem.timeline().Now() >= time; }

 private:
  struct Command;
  static const Command kCommands[];

  CommandResult Execute(Words words);
  CommandResult AddFault(const std::string& kind, Words words);
  CommandResult Heal(Words words);
  CommandResult Drop(Words words);
  CommandResult FailCall(Words words);
  CommandResult SetNetwork(Words words);
  CommandResult SetRoaming(Words words);
  CommandResult SetMobileAp(Words words);
  CommandResult AddTraffic(Words words);
  CommandResult Indicate(Words words);
  CommandResult IndicateRaw(Words words);
  CommandResult Advance(Words words);
  CommandResult Sleep(Words words);
  CommandResult Echo(Words words);
  CommandResult Show(Words words);
  CommandResult Quit(Words words);
  CommandResult Help(Words words);
  Profile& ReadProfile(Words& words);

  Model& model_;
  Faults& faults_;
  Hub& hub_;
  Record& record_;
};

}  // namespace sim
