/// Explains error codes and log lines.
#include "explanation.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <sstream>
#include <string_view>
#include <vector>

#include "built_in.h"

namespace qcmapctl {
namespace {

using Cells = std::vector<std::string>;

/// The cells of each row of the page's tables.
std::vector<Cells> ReadRows() {
  std::vector<Cells> rows;
  std::istringstream page(kLogPage);
  for (std::string line; std::getline(page, line);) {
    if (line.rfind("| ", 0) != 0) continue;
    Cells cells;
    for (size_t at = 2; at < line.size();) {
      const size_t end = std::min(line.find(" |", at - 1), line.size());
      cells.push_back(at < end ? line.substr(at, end - at) : "");
      at = end + 3;
    }
    rows.push_back(std::move(cells));
  }
  return rows;
}

const std::vector<Cells>& Rows() {
  static const std::vector<Cells> rows = ReadRows();
  return rows;
}

/// Whether a row explains a code, such as "3 (0x3)".
bool IsAboutCode(const Cells& cells) {
  return cells.size() == 3 && cells[0].find(" (0x") != std::string::npos;
}

std::string WithoutBackticks(std::string text) {
  std::replace(text.begin(), text.end(), '`', '\'');
  return text;
}

/// Whether `text` is what a printf with `format` can print.
bool Matches(std::string_view format, std::string_view text) {
  if (format.empty()) return text.empty();
  if (format.front() != '%') {
    return !text.empty() && text.front() == format.front() &&
           Matches(format.substr(1), text.substr(1));
  }
  const char kind = format[1];
  for (size_t length = 0;; ++length) {
    if (Matches(format.substr(2), text.substr(length))) return true;
    if (length == text.size()) return false;
    const auto next = static_cast<unsigned char>(text[length]);
    if (kind != 's' && std::isxdigit(next) == 0 && next != '-' && next != 'x') return false;
  }
}

/// The text that follows the head of the library's lines, "SIGNATURE NUMBER: "; empty if there is
/// no such head.
std::optional<std::string_view> TextAfterHead(std::string_view line) {
  for (size_t at = line.find(") "); at != std::string_view::npos; at = line.find(") ", at + 1)) {
    const size_t end = std::min(line.find_first_not_of("0123456789", at + 2), line.size());
    if (end > at + 2 && line.substr(end, 1) == ":") {
      return line.substr(std::min(end + 2, line.size()));
    }
  }
  return std::nullopt;
}

/// Where the library's text may begin in a line without its head.
std::vector<std::string_view> PossibleTexts(std::string_view line) {
  std::vector<std::string_view> texts = {line};
  for (size_t at = line.find(": "); at != std::string_view::npos; at = line.find(": ", at + 1)) {
    texts.push_back(line.substr(at + 2));
  }
  return texts;
}

std::optional<uint32_t> CodeIn(const std::string& text) {
  for (const char* before : {"error ", "err [", "errno ["}) {
    const size_t at = text.rfind(before);
    const char* const number = text.c_str() + at + std::string_view(before).size();
    if (at == std::string::npos || std::isdigit(static_cast<unsigned char>(*number)) == 0) continue;
    return static_cast<uint32_t>(std::strtoul(number, nullptr, 10));
  }
  return std::nullopt;
}

}  // namespace

std::optional<CodeExplanation> ExplainCode(uint32_t code) {
  for (const Cells& cells : Rows()) {
    if (!IsAboutCode(cells) || std::strtoul(cells[0].c_str(), nullptr, 10) != code) continue;
    return CodeExplanation{WithoutBackticks(cells[1]), WithoutBackticks(cells[2])};
  }
  return std::nullopt;
}

std::string DescribeCodes() {
  std::string text = "Error codes:";
  for (const Cells& cells : Rows()) {
    if (!IsAboutCode(cells)) continue;
    const std::string code = cells[0].substr(0, cells[0].find(' '));
    text += "\n" + std::string(4 - code.size(), ' ') + code + "  " + WithoutBackticks(cells[1]);
  }
  return text;
}

std::optional<LineExplanation> ExplainLine(const std::string& text) {
  const std::string_view line(text.c_str(), text.find_last_not_of(" \r\n") + 1);
  const auto after_head = TextAfterHead(line);
  const auto texts = after_head ? std::vector{*after_head} : PossibleTexts(line);
  const Cells* best = nullptr;
  for (const Cells& cells : Rows()) {
    if (cells.size() != 4 || cells[0].front() != '`') continue;
    std::string format = cells[0].substr(1, cells[0].size() - 2);
    if (format.size() >= 2 && format.substr(format.size() - 2) == "\\n") {
      format.resize(format.size() - 2);
    }
    // Without the head, a line of values alone could be anybody's.
    if (!after_head && format.find_first_not_of("% sd") == std::string::npos) continue;
    if (best != nullptr && cells[0].size() < (*best)[0].size()) continue;
    for (const std::string_view candidate : texts) {
      if (Matches(format, candidate)) best = &cells;
    }
  }
  if (best == nullptr) return std::nullopt;
  LineExplanation explanation{(*best)[0].substr(1, (*best)[0].size() - 2), (*best)[1],
                              WithoutBackticks((*best)[2]), WithoutBackticks((*best)[3]),
                              std::nullopt};
  if (explanation.level != "DEBUG") explanation.code = CodeIn(text);
  return explanation;
}

Reason ReasonIn(const std::string& log_line) {
  const auto explanation = ExplainLine(log_line);
  const auto code = explanation ? explanation->code : CodeIn(log_line);
  if (!code) return explanation ? Reason{explanation->cause, explanation->next, {}} : Reason{};
  const auto known = ExplainCode(*code);
  const std::string number = std::to_string(*code);
  if (!known) return {"the server said unknown code " + number, "", code};
  return {"the server said " + number + ": " + known->meaning, known->next, code};
}

}  // namespace qcmapctl
