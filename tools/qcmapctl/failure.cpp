/// The table of exit codes, messages and hints.
#include "failure.h"

#include <array>
#include <utility>

namespace qcmapctl {
namespace {

struct Entry {
  int exit_code;
  const char* message;
  const char* hint;
};

constexpr Entry kEntries[] = {
#define EXIT_CODE(code, meaning)
#define FAILURE(name, code, message, hint) {code, message, hint},
#include "failures.inc"
#undef EXIT_CODE
#undef FAILURE
};

const Entry& EntryOf(Failure failure) {
  return kEntries[static_cast<size_t>(failure)];
}

}  // namespace

CommandFailed::CommandFailed(Failure failure, const std::string& subject, const Reason& reason)
    : failure_(failure),
      exit_code_(EntryOf(failure).exit_code),
      message_((subject.empty() ? "" : subject + ": ") + MessageOf(failure, reason)),
      hint_(failure == Failure::REFUSED && !reason.next.empty() ? reason.next
                                                                : EntryOf(failure).hint) {}

CommandFailed::CommandFailed(std::string usage_message, std::string hint)
    : exit_code_(kExitUsage), message_(std::move(usage_message)), hint_(std::move(hint)) {}

std::string MessageOf(Failure failure, const Reason& reason) {
  const std::string message = EntryOf(failure).message;
  return reason.text.empty() ? message : message + " (" + reason.text + ")";
}

std::string DescribeExitCodes() {
  std::string text = "Exit codes:\n";
#define EXIT_CODE(code, meaning) \
  text += (code < 10 ? "   " #code "  " : "  " #code "  ") + std::string(meaning) + "\n";
#define FAILURE(name, code, message, hint)
#include "failures.inc"
#undef EXIT_CODE
#undef FAILURE
  return text;
}

}  // namespace qcmapctl
