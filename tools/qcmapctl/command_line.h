/// The grammar of the command line: objects, verbs, ids and options.
#pragma once

#include <CLI/CLI.hpp>
#include <chrono>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "output.h"
#include "router.h"

namespace qcmapctl {

/// The options that every command takes.
struct Options {
  bool json = false;
  bool quiet = false;
  bool verbose = false;
  std::chrono::milliseconds wait{30000};
};

/// What a command runs with.
struct Context {
  Router router;
  Options options;
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

  /// What the command line asks for.
  struct Command {
    /// The object and its verb, as messages show them.
    std::string operation;
    /// Empty if the command line has no object, or if only `text` is to be printed.
    Handler run;
    Options options;
    /// The help or the version, if that is all there is to print.
    std::string text;
  };

  /// Parses a command line. If it is wrong, throws CommandFailed, whose hint names the nearest
  /// word.
  Command Parse(const std::vector<std::string>& arguments);
  /// The object and verb that Parse has recognised so far, for messages about its failure.
  std::string Operation() const;

 private:
  std::vector<std::string> WithDefaultVerb(std::vector<std::string> arguments) const;
  [[noreturn]] void FailUsage(const CLI::ParseError& error) const;
  /// The object or verb that was recognised last.
  const CLI::App* Innermost() const;

  CLI::App app_;
  Options options_;
  std::map<const CLI::App*, Handler> handlers_;
};

}  // namespace qcmapctl
