/// The command line: objects, verbs, ids and options.
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

  /// An object without verbs of its own.
  CLI::App* AddObject(const std::string& name, const std::string& description, Handler handler);
  /// An object; the first verb added to it is the one that a bare object means.
  CLI::App* AddObject(const std::string& name, const std::string& description);
  CLI::App* AddVerb(CLI::App* object, const std::string& name, const std::string& description,
                    Handler handler);

  /// What the command line asks for.
  struct Command {
    /// The object and its verb, as they stand in messages.
    std::string operation;
    /// Empty without an object, and when only `text` is to be printed.
    Handler run;
    Options options;
    /// Help or version.
    std::string text;
  };

  /// Reads a command line. Throws CommandFailed with the nearest word when it is wrong.
  Command Parse(const std::vector<std::string>& arguments);
  /// The operation that Parse has recognised so far; for its failures.
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
