/// The file that keeps what passed the seam, an event in each line.
#pragma once

#include <sys/types.h>
#include <unistd.h>

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "event.h"
#include "line_file.h"

namespace trace {

/// Members of a JSON object, each after a comma.
std::string Describe(const Event& event, const Texts& texts);

/// Records what one process does.
class Recorder {
 public:
  /// Null, with a message, when the file cannot be written or another process records into it.
  static std::unique_ptr<Recorder> Start(const std::string& path, seam::Printer::Names host_names);

  /// `now` is the count when the event has ended. Does nothing in a forked child.
  void Append(const Event& event, const Texts& texts, IndicationCount now);

 private:
  explicit Recorder(std::unique_ptr<LineFile> file) : file_(std::move(file)) {}

  void Write(std::string line);

  const pid_t process_ = ::getpid();
  const Clock::time_point start_ = Clock::now();
  const std::unique_ptr<LineFile> file_;
  /// Held while a line is written, so that sums follow each other as the lines do.
  std::mutex mutex_;
  uint32_t sum_ = 0;
};

/// Marks a recording whose program has ended as complete.
void EndRecording(const std::string& path);

/// An event as it was recorded. Its start is counted from the beginning of the recording.
struct RecordedEvent : Event {
  size_t line;
  std::string_view arguments, answers;
  unsigned returned_at_end;
};

struct Recording {
  /// The events refer to parts of it.
  std::unique_ptr<const std::string> text;
  bool has_host_names;
  std::vector<RecordedEvent> events;
};

/// Throws std::runtime_error, with file, line and reason, when the recording cannot be played.
Recording ReadRecording(const std::string& path);

}  // namespace trace
