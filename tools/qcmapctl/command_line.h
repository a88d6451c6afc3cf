/// The grammar of the command line: objects, verbs, ids and options.
#pragma once

#include <CLI/CLI.hpp>
#include <chrono>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "deadline.h"
#include "output.h"
#include "router.h"

namespace qcmapctl {

constexpr std::chrono::milliseconds kUsualLimit{5000};
/// For commands that wait for calls.
constexpr std::chrono::milliseconds kLimitOfCalls{30000};
constexpr auto kNoLimit = std::chrono::milliseconds::max();

/// What a command runs with.
struct Context {
  Router router;
  Options options;
  /// When to stop waiting for events. In the past if the command is not to wait for any.
  Clock::time_point deadline;
};

/// Carries out a command and returns its result, which is empty if it has printed its own.
using Handler = std::function<Report(Context&)>;

class CommandLine {
 public:
  CommandLine();

  /// Adds an object without verbs.
  CLI::App* AddObject(const std::string& name, const std::string& description, Handler handler);
  /// Adds an object with verbs. The verb that is added first is used if the command line has none.
  CLI::App* AddObject(const std::string& name, const std::string& description);
  CLI::App* AddVerb(CLI::App* object, const std::string& name, const std::string& description,
                    Handler handler);
  /// Sets what to do if the command line has no object.
  void RunWithoutObject(Handler handler) { commands_[&app_].run = std::move(handler); }
  /// Sets the time limit that a command has without -w.
  void SetTimeLimit(const CLI::App* command, std::chrono::milliseconds limit) {
    commands_[command].limit = limit;
  }

  /// What the command line asks for.
  struct Command {
    Handler run;
    std::chrono::milliseconds limit = kUsualLimit;
    Options options;
    /// The help or the version, if that is all there is to print.
    std::string text;
  };

  /// Parses a command line. If it is wrong, throws CommandFailed, whose hint names the nearest
  /// word.
  Command Parse(const std::vector<std::string>& arguments);
  /// The object and verb that Parse has recognised so far, as messages show them.
  std::string Operation() const;

  const CLI::App& app() const { return app_; }

 private:
  void AddOptions();
  std::vector<std::string> WithDefaultVerb(std::vector<std::string> arguments) const;

  CLI::App app_;
  Options options_;
  std::map<const CLI::App*, Command> commands_;
};

}  // namespace qcmapctl
