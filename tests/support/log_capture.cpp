/// Takes the place of syslog and keeps what was logged.
#include "log_capture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <set>
#include <utility>

#include "allocation.h"

namespace {

// Clang spells signatures differently, and numbers a call by the line on which it ends.
#ifdef __clang__
constexpr bool kIsGcc = false;
#else
constexpr bool kIsGcc = true;
#endif

struct Entry {
  int priority;
  std::string signature;
  int number;
  std::string format;
  std::string text;
};

std::mutex mutex;
std::vector<Entry> entries;

[[gnu::format(printf, 2, 0)]] void Keep(int priority, const char* format, va_list arguments) {
  const Untracked untracked;
  Entry entry{priority, "", 0, format, ""};
  if (entry.format.rfind("%s %d: ", 0) == 0) {
    va_list head;
    va_copy(head, arguments);
    entry.signature = va_arg(head, const char*);
    entry.number = va_arg(head, int);
    va_end(head);
  }
  char text[2048];
  vsnprintf(text, sizeof text, format, arguments);
  const std::string start = entry.signature + " " + std::to_string(entry.number) + ": ";
  entry.text = std::string(text).substr(start.size());
  const std::lock_guard<std::mutex> lock(mutex);
  entries.push_back(entry);
}

/// Whether some source has the call that logged it on the line of its number.
bool IsWhereItSays(const Entry& entry) {
  std::string literal = entry.format.substr(7);
  if (!literal.empty() && literal.back() == '\n') literal.replace(literal.size() - 1, 1, "\\n");
  for (const auto& file : std::filesystem::recursive_directory_iterator(MVQ_QCMAP_SOURCE_DIR)) {
    if (file.path().extension() != ".cpp") continue;
    std::ifstream stream(file.path());
    std::string line, next;
    for (int i = 0; i < entry.number; ++i) std::getline(stream, line);
    std::getline(stream, next);
    if (line.find("SYSLOG(") != std::string::npos &&
        (line + next).find('"' + literal + '"') != std::string::npos)
      return true;
  }
  return false;
}

}  // namespace

std::string Line(int priority, std::string signature, const std::string& text) {
  if (!kIsGcc) {
    signature.erase(std::min(signature.find('('), signature.size()));
    signature.erase(0, signature.find_last_of(" :@") + 1);
  }
  const size_t at = signature.find('@');
  if (at != std::string::npos) signature.replace(at, 1, "mox::vendor::qcom::qcmap::QcmapWrapper::");
  return std::to_string(priority) + " " + signature + ": " + text;
}

std::vector<std::string> TakeLog() {
  static std::set<std::string> checked;
  std::vector<std::string> lines;
  const std::lock_guard<std::mutex> lock(mutex);
  for (const Entry& entry : std::exchange(entries, {})) {
    EXPECT_NE(entry.signature, "") << "line without its head: " << entry.format;
    const std::string call = entry.signature + std::to_string(entry.number) + entry.format;
    if (kIsGcc && checked.insert(call).second) {
      EXPECT_TRUE(IsWhereItSays(entry)) << entry.signature << " logged from line " << entry.number
                                        << ", which is no SYSLOG( of: " << entry.format;
    }
    lines.push_back(Line(entry.priority, entry.signature, entry.text));
  }
  return lines;
}

#define KEEP_LINE(priority, format)  \
  va_list arguments;                 \
  va_start(arguments, format);       \
  Keep(priority, format, arguments); \
  va_end(arguments)

extern "C" [[gnu::format(printf, 2, 3)]] void syslog(int priority, const char* format, ...) {
  KEEP_LINE(priority, format);
}

// What a fortified build calls instead.
extern "C" [[gnu::format(printf, 3, 4)]] void __syslog_chk(int priority, int, const char* format,
                                                           ...) {
  KEEP_LINE(priority, format);
}
