/// Writes results and failures in the form that the options ask for.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "failure.h"
#include "report.h"
#include "terminal.h"

namespace qcmapctl {

/// The options that every command takes.
struct Options {
  bool json = false;
  bool key_values = false;
  /// Not empty if only these fields are printed.
  std::vector<std::string> fields;
  std::optional<Colour> colour;
  bool quiet = false;
  bool verbose = false;
  /// Empty for the command's usual time limit.
  std::optional<std::chrono::milliseconds> wait;
};

/// The time in RFC 3339 form: UTC, with milliseconds.
std::string FormatTime(std::chrono::system_clock::time_point time);

/// Prints the last or only result of a command. Throws CommandFailed if it cannot be written.
void Print(const Report& report, const Options& options);

/// Prints one of many results, on one line and without delay.
void PrintLine(const Report& line, const Options& options);

/// Prints why the command failed on standard error, and returns the exit code.
int PrintFailure(const CommandFailed& failure, const std::string& operation,
                 const Options& options);

}  // namespace qcmapctl
