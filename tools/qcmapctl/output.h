/// Results on standard output, as aligned text or as JSON.
#pragma once

#include <chrono>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace qcmapctl {

using Json = nlohmann::ordered_json;

/// The result of a command as text and as JSON.
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

/// `list`, or only its first element if the command names `one` profile.
Json OneOrAll(Json list, bool one);

/// `text` with every line indented.
std::string Indent(const std::string& text);

/// `text` with each control character replaced by '?', so that it cannot affect a terminal.
std::string Printable(std::string text);

/// The time in RFC 3339 form: UTC, with milliseconds.
std::string FormatTime(std::chrono::system_clock::time_point time);

/// `json` as text, on one line or several. Bytes that are not valid UTF-8 are replaced.
std::string Dump(const Json& json, bool on_one_line);

/// Prints the result of a command unless it is empty. Throws CommandFailed if it cannot be written.
void Print(const Report& report, bool as_json);

/// Prints one of many results, on one line and without delay.
void PrintLine(const Report& line, bool as_json);

}  // namespace qcmapctl
