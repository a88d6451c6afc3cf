/// Results on standard output, as aligned text or as JSON.
#include "output.h"

#include <algorithm>
#include <ctime>
#include <iostream>

#include "failure.h"

namespace qcmapctl {
namespace {

void Write(const std::string& text) {
  std::cout << text << std::flush;
  if (!std::cout) throw CommandFailed(Failure::NOT_WRITTEN);
}

}  // namespace

void Table::AddRow(std::vector<std::string> cells) {
  if (!cells.empty()) rows_.push_back(std::move(cells));
}

std::string Table::Render() const {
  std::vector<size_t> widths;
  for (const auto& row : rows_) {
    widths.resize(std::max(widths.size(), row.size()));
    for (size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], row[i].size());
  }
  std::string text;
  for (const auto& row : rows_) {
    std::string line;
    for (size_t i = 0; i < row.size(); ++i) {
      line += row[i] + std::string(widths[i] - row[i].size() + 2, ' ');
    }
    line.erase(line.find_last_not_of(' ') + 1);
    text += line + "\n";
  }
  return text;
}

Json OneOrAll(Json list, bool one) {
  return one ? list.at(0) : list;
}

std::string Indent(const std::string& text) {
  std::string indented;
  bool at_start = true;
  for (char c : text) {
    if (at_start && c != '\n') indented += "  ";
    indented += c;
    at_start = c == '\n';
  }
  return indented;
}

std::string Printable(std::string text) {
  std::replace_if(
      text.begin(), text.end(), [](unsigned char c) { return c < 0x20 || c == 0x7f; }, '?');
  return text;
}

std::string FormatTime(std::chrono::system_clock::time_point time) {
  const auto since_epoch =
      std::chrono::duration_cast<std::chrono::milliseconds>(time.time_since_epoch());
  const std::time_t seconds = std::chrono::system_clock::to_time_t(time);
  std::tm utc{};
  gmtime_r(&seconds, &utc);
  char date[32];
  std::strftime(date, sizeof date, "%Y-%m-%dT%H:%M:%S", &utc);
  std::string milliseconds = std::to_string(since_epoch.count() % 1000);
  milliseconds.insert(0, 3 - milliseconds.size(), '0');
  return std::string(date) + "." + milliseconds + "Z";
}

std::string Dump(const Json& json, bool on_one_line) {
  return json.dump(on_one_line ? -1 : 2, ' ', false, Json::error_handler_t::replace) + "\n";
}

void Print(const Report& report, bool as_json) {
  if (as_json && report.json.is_null()) return;
  Write(as_json ? Dump(report.json, false) : report.text);
}

void PrintLine(const Report& line, bool as_json) {
  Write(as_json ? Dump(line.json, true) : line.text);
}

}  // namespace qcmapctl
