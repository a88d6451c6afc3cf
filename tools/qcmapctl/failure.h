/// The failures of commands. One table holds their exit codes, messages and hints.
#pragma once

#include <exception>
#include <string>

#include "explanation.h"

namespace qcmapctl {

constexpr int kExitDone = 0;
constexpr int kExitUsage = 2;
constexpr int kExitPartlyDone = 7;

enum class Failure {
#define EXIT_CODE(code, meaning)
#define FAILURE(name, code, message, hint) name,
#include "failures.inc"
#undef EXIT_CODE
#undef FAILURE
};

/// Ends a command. Carries the message and the hint for the user.
class CommandFailed : public std::exception {
 public:
  /// `subject` says what failed, for example "profile 3". It is empty if the whole command failed.
  /// `reason` is what the log says about it.
  explicit CommandFailed(Failure failure, const std::string& subject = {},
                         const Reason& reason = {});
  /// For a wrong command line.
  CommandFailed(std::string usage_message, std::string hint);

  const char* what() const noexcept override { return message_.c_str(); }
  Failure failure() const { return failure_; }
  int exit_code() const { return exit_code_; }
  const std::string& hint() const { return hint_; }

 private:
  Failure failure_ = Failure::UNEXPECTED;
  int exit_code_;
  std::string message_;
  std::string hint_;
};

/// Only the message of a failure, for messages that report several.
std::string MessageOf(Failure failure, const Reason& reason = {});

/// All exit codes with their meanings, one on each line.
std::string DescribeExitCodes();

}  // namespace qcmapctl
