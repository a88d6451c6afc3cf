/// Takes the place of syslog, remembers what is logged, and passes it on to the system log.

// With it, syslog is an inline function, which cannot be defined again.
#undef _FORTIFY_SOURCE
#include "log_hook.h"

#include <syslog.h>

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <mutex>
#include <utility>

// If these were hidden like the rest of the program, the library would call those of libc.
#define EXPORTED __attribute__((visibility("default")))

namespace qcmapctl {
namespace {

constexpr char kLost[] = "lost the server";

// Of fixed size, so that logging cannot fail.
thread_local char last_line[1024];
thread_local char errors[4096];

struct LossHandler {
  std::mutex mutex;
  std::function<void()> handler;
};

/// Never destroyed, because the client's thread may log until the process ends.
LossHandler& TheLossHandler() {
  static LossHandler& handler = *new LossHandler;
  return handler;
}

/// Adds the last line to the errors if there is room.
void KeepError() {
  const size_t used = std::strlen(errors);
  const size_t length = std::strcspn(last_line, "\n");
  std::snprintf(errors + used, sizeof errors - used, "%s%.*s", used > 0 ? "\n" : "",
                static_cast<int>(length), last_line);
}

__attribute__((format(printf, 2, 0))) void Log(int priority, const char* format,
                                               va_list arguments) {
  va_list copy;
  va_copy(copy, arguments);
  std::vsnprintf(last_line, sizeof last_line, format, copy);
  va_end(copy);
  if (LOG_PRI(priority) <= LOG_ERR) KeepError();
  ::vsyslog(priority, format, arguments);
  if (std::strstr(last_line, kLost) == nullptr) return;
  LossHandler& loss = TheLossHandler();
  const std::lock_guard<std::mutex> lock(loss.mutex);
  if (loss.handler) loss.handler();
}

}  // namespace

std::string Errors() {
  return errors;
}

std::string LastError() {
  const char* const end = std::strrchr(errors, '\n');
  return end == nullptr ? errors : end + 1;
}

std::string LastLine() {
  return last_line;
}

void ForgetErrors() {
  errors[0] = '\0';
}

void OnServerLost(std::function<void()> handler) {
  LossHandler& loss = TheLossHandler();
  const std::lock_guard<std::mutex> lock(loss.mutex);
  loss.handler = std::move(handler);
}

}  // namespace qcmapctl

extern "C" EXPORTED void syslog(int priority, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  qcmapctl::Log(priority, format, arguments);
  va_end(arguments);
}

// What syslog is called in programs that are compiled with _FORTIFY_SOURCE.
// NOLINTNEXTLINE(bugprone-reserved-identifier)
extern "C" EXPORTED __attribute__((format(printf, 3, 4))) void __syslog_chk(int priority, int,
                                                                            const char* format,
                                                                            ...) {
  va_list arguments;
  va_start(arguments, format);
  qcmapctl::Log(priority, format, arguments);
  va_end(arguments);
}
