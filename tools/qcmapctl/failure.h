/// What a command can end with: one table of exit codes, messages and hints.
#pragma once

#include <exception>
#include <string>

namespace qcmapctl {

constexpr int kExitDone = 0;
constexpr int kExitUsage = 2;

enum class Failure {
#define EXIT_CODE(code, meaning)
#define FAILURE(name, code, message, hint) name,
#include "failures.inc"
#undef EXIT_CODE
#undef FAILURE
};

/// Ends a command. Carries all that the user is told.
class CommandFailed : public std::exception {
 public:
  /// `subject` says what it happened to, as "profile 3"; empty when that is the whole command.
  explicit CommandFailed(Failure failure, const std::string& subject = {});
  /// For a wrong command line.
  CommandFailed(std::string usage_message, std::string hint);

  const char* what() const noexcept override { return message_.c_str(); }
  Failure failure() const { return failure_; }
  int exit_code() const { return exit_code_; }
  const std::string& hint() const { return hint_; }

 private:
  Failure failure_ = Failure::UNFORESEEN;
  int exit_code_;
  std::string message_;
  std::string hint_;
};

/// The message of a failure alone, for reports that name several.
const char* MessageOf(Failure failure);

/// Every exit code with its meaning, a line each.
std::string DescribeExitCodes();

}  // namespace qcmapctl
