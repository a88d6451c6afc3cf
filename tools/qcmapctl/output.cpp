/// Writes results and failures in the form that the options ask for.
#include "output.h"

#include <unistd.h>

#include <ctime>
#include <iostream>
#include <mutex>

#include "fields.h"

namespace qcmapctl {
namespace {

/// Held while something is written, so that the time limit ends no command in the middle of it.
/// Never destroyed, because the thread of the time limit may still use it when the process ends.
std::mutex& WritingMutex() {
  static std::mutex& mutex = *new std::mutex;
  return mutex;
}

/// After the last result or failure, nothing else may be written.
void WriteNothingElse() {
  WritingMutex().lock();
}

/// `json` as text. Bytes that are not valid UTF-8 are replaced.
std::string Dump(const Json& json, bool on_one_line) {
  return json.dump(on_one_line ? -1 : 2, ' ', false, Json::error_handler_t::replace) + "\n";
}

std::string Render(const Report& report, const Options& options, bool on_one_line) {
  if (report.data.is_null()) return "";
  if (options.json) return Dump(report.data, on_one_line);
  if (options.key_values) return KeyValues(report.data, on_one_line ? ' ' : '\n');
  if (!options.fields.empty()) return Fields(report.data, options.fields);
  return Fit(report.describe(report.data), STDOUT_FILENO, options.colour);
}

void Write(const std::string& text) {
  std::cout << text << std::flush;
  if (std::cout) return;
  WritingMutex().unlock();
  throw CommandFailed(Failure::NOT_WRITTEN);
}

}  // namespace

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

void Print(const Report& report, const Options& options) {
  const std::string text = options.quiet ? "" : Render(report, options, false);
  WriteNothingElse();
  Write(text);
}

void PrintLine(const Report& line, const Options& options) {
  const std::string text = options.quiet ? "" : Render(line, options, true);
  WritingMutex().lock();
  Write(text);
  WritingMutex().unlock();
}

int PrintFailure(const CommandFailed& failure, const std::string& operation,
                 const Options& options) {
  std::string text;
  if (options.json) {
    Json error;
    error["operation"] = operation;
    error["message"] = failure.what();
    error["hint"] = failure.hint();
    error["exit"] = failure.exit_code();
    text = Dump(Json{{"error", error}}, true);
  } else {
    text = Fit("qcmapctl: " + (operation.empty() ? "" : operation + ": ") + failure.what() +
                   "\nhint: " + failure.hint() + "\n",
               STDERR_FILENO, options.colour);
  }
  WriteNothingElse();
  std::cerr << text;
  return failure.exit_code();
}

}  // namespace qcmapctl
