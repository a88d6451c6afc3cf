/// Results on standard output, as aligned text or as JSON.
#pragma once

#include <chrono>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace qcmapctl {

using Json = nlohmann::ordered_json;

/// A result in both forms.
struct Report {
  /// Ends with a newline unless empty.
  std::string text;
  Json json;
};

/// Rows of cells, printed in aligned columns.
class Table {
 public:
  explicit Table(std::vector<std::string> head = {}) { AddRow(std::move(head)); }
  void AddRow(std::vector<std::string> cells);
  std::string Render() const;

 private:
  std::vector<std::vector<std::string>> rows_;
};

/// `list`, or only its first element if `one` was asked for by name.
Json OneOrAll(Json list, bool one);

/// `text` with every line moved to the right.
std::string Indent(const std::string& text);

/// `text` with each byte that a terminal might obey shown as '?'.
std::string Printable(std::string text);

/// The time in RFC 3339 form: UTC, with milliseconds.
std::string FormatTime(std::chrono::system_clock::time_point time);

/// `json` on one line or several; bytes that are no UTF-8 are replaced, never refused.
std::string Dump(const Json& json, bool on_one_line);

/// Prints a command's result, if there is one. Throws CommandFailed when it cannot be written.
void Print(const Report& report, bool as_json);

/// Prints one line of a stream of results at once.
void PrintLine(const Report& line, bool as_json);

}  // namespace qcmapctl
