/// Takes the place of syslog and keeps what was logged.
#include "log_capture.h"

#include <gtest/gtest.h>

#include <cstdarg>
#include <cstdio>
#include <mutex>
#include <utility>

#include "allocation.h"

namespace {

std::mutex mutex;
std::vector<std::string> lines;

void Keep(int priority, const char* format, va_list arguments) {
  const Untracked untracked;
  if (std::string(format).rfind("%s %d: ", 0) != 0) {
    ADD_FAILURE() << "line without its head: " << format;
    return;
  }
  va_list head;
  va_copy(head, arguments);
  const std::string signature = va_arg(head, const char*);
  const int number = va_arg(head, int);
  va_end(head);
  EXPECT_GT(number, 0) << format;
  char text[2048];
  vsnprintf(text, sizeof text, format, arguments);
  const std::string start = signature + " " + std::to_string(number) + ": ";
  const std::lock_guard<std::mutex> lock(mutex);
  lines.push_back(Line(priority, signature, text + start.size()));
}

}  // namespace

std::string Line(int priority, std::string signature, const std::string& text) {
  const size_t at = signature.find('@');
  if (at != std::string::npos) signature.replace(at, 1, "mox::vendor::qcom::qcmap::QcmapWrapper::");
  return std::to_string(priority) + " " + signature + ": " + text;
}

std::vector<std::string> TakeLog() {
  const std::lock_guard<std::mutex> lock(mutex);
  return std::exchange(lines, {});
}

#define KEEP_LINE(priority, format)  \
  va_list arguments;                 \
  va_start(arguments, format);       \
  Keep(priority, format, arguments); \
  va_end(arguments)

extern "C" void syslog(int priority, const char* format, ...) {
  KEEP_LINE(priority, format);
}

// What a fortified build calls instead.
extern "C" void __syslog_chk(int priority, int, const char* format, ...) {
  KEEP_LINE(priority, format);
}
