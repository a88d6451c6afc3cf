/// Writes and reads recordings.
#include "recording.h"

#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include "records/reader.h"

namespace trace {
namespace {

constexpr unsigned kVersion = 2;
constexpr const char* kHeaderNames[] = {"recording", "names", "program"};
constexpr std::string_view kEnd = "{\"end\":true}\n";

}  // namespace

std::string LineSum::After(std::string_view line) {
  for (const char c : line) sum_ = (sum_ ^ static_cast<unsigned char>(c)) * 16777619u;
  char text[sizeof ",\"sum\":\"01234567\"}\n"];
  std::snprintf(text, sizeof text, ",\"sum\":\"%08x\"}\n", sum_);
  return text;
}

std::unique_ptr<Recorder> Recorder::Start(const std::string& path, bool has_host_names) {
  auto file = std::make_unique<LineFile>(path, "the recording");
  if (!file->Claim()) {
    Complain("process " + std::to_string(::getpid()) + " is not recorded: another one is");
    return nullptr;
  }
  std::string line = "{";
  const std::string_view program = program_invocation_short_name;
  seam::Printer(line).Members(kHeaderNames, std::tie(kVersion, has_host_names, program));
  std::unique_ptr<Recorder> recorder(new Recorder(std::move(file)));
  recorder->Append(line);
  recorder->count_ = 0;
  return recorder;
}

void Recorder::Append(std::string event) {
  if (::getpid() != process_) return;
  const std::lock_guard<std::mutex> lock(mutex_);
  file_->Write(event += sum_.After(event));
  ++count_;
}

void EndRecording(const std::string& path) {
  std::ofstream(path, std::ios::app) << kEnd;
}

Recording::Recording(const std::string& path) {
  std::ifstream file(path);
  if (!file) throw std::runtime_error(path + ": " + std::strerror(errno));
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
