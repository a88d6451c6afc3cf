/// Writes and reads recordings.
#include "recording.h"

#include <cstdio>
#include <cstring>
#include <ctime>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include "records/reader.h"

namespace trace {
namespace {

constexpr unsigned kVersion = 3;
constexpr const char* kHeaderNames[] = {"recording", "names", "program", "time", "at_us"};
constexpr std::string_view kEnd = "{\"end\":true}\n";

void ComplainOfProcess() {
  Complain("process " + std::to_string(::getpid()) + " is not recorded: another one is");
}

}  // namespace

std::string WallTime(int64_t at_us) {
  using std::chrono::system_clock;
  const auto wall = system_clock::now() - std::chrono::microseconds(Now() - at_us);
  const auto ms = wall.time_since_epoch() / std::chrono::milliseconds(1);
  const time_t now = system_clock::to_time_t(wall);
  // Most lines are of the same second as the line before.
  thread_local time_t second = 0;
  thread_local char text[sizeof "2000-01-01T00:00:00.000Z"] = "1970-01-01T00:00:00.000Z";
  tm parts{};
  if (now != second) std::strftime(text, sizeof text, "%FT%T.000Z", ::gmtime_r(&now, &parts));
  second = now;
  char* digit = std::strrchr(text, 'Z');
  for (auto left = ms % 1000; *--digit != '.'; left /= 10)
    *digit = static_cast<char>('0' + left % 10);
  return text;
}

std::string LineSum::After(std::string_view line) {
  const auto byte = [&](size_t i) {
    return uint32_t{static_cast<unsigned char>(line[i])} << i * 8;
  };
  for (; line.size() >= 4; line.remove_prefix(4))
    sum_ = (sum_ ^ (byte(0) | byte(1) | byte(2) | byte(3))) * 16777619u;
  for (; !line.empty(); line.remove_prefix(1)) sum_ = (sum_ ^ byte(0)) * 16777619u;
  char text[sizeof ",\"sum\":\"01234567\"}\n"];
  std::snprintf(text, sizeof text, ",\"sum\":\"%08x\"}\n", sum_);
  return text;
}

std::unique_ptr<Recorder> Recorder::Start(const std::string& path, bool has_host_names) {
  auto file = std::make_unique<LineFile>(path, "the recording");
  if (!file->Claim()) {
    if (!file->has_failed()) ComplainOfProcess();
    return nullptr;
  }
  std::string line = "{";
  const char* const program = program_invocation_short_name;
  const int64_t now = Now();
  seam::Printer(line).Members(
      kHeaderNames, std::make_tuple(kVersion, has_host_names, program, WallTime(now), now));
  std::unique_ptr<Recorder> recorder(new Recorder(std::move(file)));
  recorder->Write(line);
  return recorder;
}

void Recorder::Append(Event& event) {
  if (::getpid() != process_) {
    if (!has_complained_.exchange(true)) ComplainOfProcess();
    return;
  }
  std::string line = "{";
  line.reserve(300 + event.arguments.text.size() + event.answer.text.size());
  seam::Printer(line).Members(kEventNames, event.Members());
  const std::lock_guard<std::mutex> lock(mutex_);
  Write(line);
  ++count_;
}

void Recorder::Write(std::string& line) {
  file_->Write(line += sum_.After(line));
}

void EndRecording(const std::string& path) {
  std::ofstream(path, std::ios::app) << kEnd;
}

Recording::Recording(const std::string& path) {
  std::ifstream file(path);
  file.peek();  // A folder can be opened, but not read.
  if (!file.is_open() || file.bad()) throw std::runtime_error(path + ": " + std::strerror(errno));
  text.assign(std::istreambuf_iterator<char>(file), {});
  std::string_view left = text;
  size_t number = 0;
  const auto refuse_unless = [&](bool good, const std::string& why) {
    if (!good) throw std::runtime_error(path + ":" + std::to_string(number) + ": " + why);
  };
  for (LineSum sum; left != kEnd;) {
    ++number;
    const std::string_view line = left.substr(0, left.find('\n') + 1);
    refuse_unless(!line.empty(), "the recording is cut off here");
    left.remove_prefix(line.size());
    seam::Reader reader(line);
    reader.Expect("{");
    if (number == 1) {
      unsigned version = 0;
      reader.Member(kHeaderNames[0], version);
      refuse_unless(static_cast<bool>(reader), "this is not a recording");
      refuse_unless(version == kVersion, "version " + std::to_string(version) + " is unknown");
      reader.Member(kHeaderNames[1], has_host_names);
    } else {
      reader.Members(kEventNames, events.emplace_back().Members());
    }
    const size_t end = std::min(line.rfind(",\"sum\":"), line.size());
    refuse_unless(reader && sum.After(line.substr(0, end)) == line.substr(end),
                  "the line is damaged");
  }
}

}  // namespace trace
