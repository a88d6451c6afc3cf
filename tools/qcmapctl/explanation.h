/// Explains error codes and log lines. What it says is in docs/log-lines.md, which is built into
/// the program.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace qcmapctl {

struct CodeExplanation {
  std::string meaning;
  std::string next;
};

/// Empty if the page does not have that code.
std::optional<CodeExplanation> ExplainCode(uint32_t code);

/// All codes with their meanings, one on each line.
std::string DescribeCodes();

struct LineExplanation {
  /// The line as the source has it, such as "check netmask [%s]\n".
  std::string line;
  std::string level;
  std::string cause;
  std::string next;
  /// The server's error code in the line.
  std::optional<uint32_t> code;
};

/// `text` may be a whole line of the system log, or what the library logged without its head.
std::optional<LineExplanation> ExplainLine(const std::string& text);

/// Why a request failed, as far as the log line about it tells. The texts are empty if it does not.
struct Reason {
  std::string text;
  std::string next;
  /// The server's error code; empty if the library itself refused.
  std::optional<uint32_t> code;
};
Reason ReasonIn(const std::string& log_line);

}  // namespace qcmapctl
