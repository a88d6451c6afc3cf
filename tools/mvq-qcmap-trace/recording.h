/// The file that keeps what passed the seam, an event in each line.
#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "event.h"
#include "line_file.h"

namespace trace {

/// Ends each line with a sum of it and all lines before it, so that none can change or be missing
/// unnoticed. It is made like FNV-1a, of four bytes at a time.
class LineSum {
 public:
  /// What comes after `line`, up to its end.
  std::string After(std::string_view line);

 private:
  uint32_t sum_ = 0;
};

/// Records what one process does.
class Recorder {
 public:
  /// Null, with a message, when the file cannot be written or another process records into it.
  static std::unique_ptr<Recorder> Start(const std::string& path, bool has_host_names);

  /// How many events have been recorded.
  unsigned count() const { return count_; }
  void Append(Event& event);

 private:
  explicit Recorder(std::unique_ptr<LineFile> file) : file_(std::move(file)) {}

  void Write(std::string& line);

  const pid_t process_ = ::getpid();
  const std::unique_ptr<LineFile> file_;
  std::atomic<unsigned> count_{0};
  /// Whether a forked child has said that it is not recorded.
  std::atomic<bool> has_complained_{false};
  /// Has the lines in the order of their sums.
  std::mutex mutex_;
  LineSum sum_;
};

/// Ends a recording. One that has no end is refused as incomplete.
void EndRecording(const std::string& path);

/// A whole recording. The events refer to its text.
struct Recording {
  /// Throws std::runtime_error, with the line, if it is no whole recording.
  explicit Recording(const std::string& path);
  Recording(const Recording&) = delete;
  Recording& operator=(const Recording&) = delete;

  std::string text;
  bool has_host_names = false;
  std::vector<Event> events;
};

}  // namespace trace
