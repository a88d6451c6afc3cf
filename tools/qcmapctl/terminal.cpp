/// Fits text to the terminal that shows it.
#include "terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <string_view>

namespace qcmapctl {
namespace {

constexpr size_t kUsualColumns = 80;

// Printable removes these characters from texts that come from outside.
constexpr char kGreen = '\1';
constexpr char kRed = '\2';
constexpr char kYellow = '\3';
constexpr char kEnd = '\4';

bool IsMark(char c) {
  return c >= kGreen && c <= kEnd;
}

const char* SequenceOf(char mark) {
  switch (mark) {
    case kGreen:
      return "\033[32m";
    case kRed:
      return "\033[31m";
    case kYellow:
      return "\033[33m";
    default:
      return "\033[0m";
  }
}

size_t ColumnsOfTerminal(int fd) {
  winsize size{};
  const bool known = ::ioctl(fd, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
  return known ? size.ws_col : kUsualColumns;
}

bool ShowsColours(int fd, Colour colour) {
  if (colour != Colour::AUTO) return colour == Colour::ALWAYS;
  const char* const refused = std::getenv("NO_COLOR");
  const char* const terminal = std::getenv("TERM");
  return ::isatty(fd) == 1 && (refused == nullptr || *refused == '\0') && terminal != nullptr &&
         std::string_view(terminal) != "dumb";
}

/// Where the lines go on into which `line` is broken: below the second column of a list, or a bit
/// to the right of its start.
size_t HangingIndent(const std::string& line, size_t columns) {
  const size_t start = line.find_first_not_of(' ');
  const size_t gap = start == 0 ? std::string::npos : line.find("  ", start);
  const size_t indent = gap == std::string::npos ? start + 2 : line.find_first_not_of(' ', gap);
  return indent < columns / 2 ? indent : 2;
}

std::string Wrap(const std::string& line, size_t columns) {
  if (ColumnsOf(line) <= columns) return line;
  const size_t indent = HangingIndent(line, columns);
  std::string wrapped;
  size_t column = 0;
  for (size_t at = 0; at < line.size();) {
    const size_t start = std::min(line.find_first_not_of(' ', at), line.size());
    const size_t end = std::min(line.find(' ', start), line.size());
    const std::string word = line.substr(start, end - start);
    size_t gap = start - at;
    if (column > indent && column + gap + ColumnsOf(word) > columns) {
      wrapped += "\n";
      column = 0;
      gap = indent;
    }
    wrapped += std::string(gap, ' ') + word;
    column += gap + ColumnsOf(word);
    at = end;
  }
  return wrapped;
}

}  // namespace

std::string Printable(std::string text) {
  std::replace_if(
      text.begin(), text.end(), [](unsigned char c) { return c < 0x20 || c == 0x7f; }, '?');
  return text;
}

std::string Colourful(const std::string& text) {
  char mark = kEnd;
  if (text == "connected" || text == "up" || text == "already up") mark = kGreen;
  if (text == "disconnected" || text == "down" || text == "already down") mark = kRed;
  if (text == "HALF UP") mark = kYellow;
  return mark == kEnd ? text : mark + text + kEnd;
}

size_t ColumnsOf(const std::string& text) {
  // The bytes after the first one of a character in UTF-8 take no column either.
  return static_cast<size_t>(std::count_if(text.begin(), text.end(), [](char c) {
    return !IsMark(c) && (static_cast<unsigned char>(c) & 0xc0U) != 0x80;
  }));
}

std::string Fit(const std::string& text, int fd, std::optional<Colour> colour) {
  const size_t columns = ColumnsOfTerminal(fd);
  const bool in_colour = ShowsColours(fd, colour.value_or(Colour::AUTO));
  std::string fitted;
  for (size_t at = 0; at < text.size();) {
    const size_t end = std::min(text.find('\n', at), text.size());
    for (char c : Wrap(text.substr(at, end - at), columns)) {
      if (!IsMark(c)) {
        fitted += c;
      } else if (in_colour) {
        fitted += SequenceOf(c);
      }
    }
    fitted += '\n';
    at = end + 1;
  }
  return fitted;
}

}  // namespace qcmapctl
