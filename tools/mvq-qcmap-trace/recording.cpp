/// Writes and reads recordings.
#include "recording.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include "records/reader.h"

namespace trace {
namespace {

constexpr unsigned kVersion = 1;
constexpr std::string_view kEnd = "{\"end\":true}\n";

/// The end of a line: a sum (FNV-1a) of it and all lines before it, so that none can change or be
/// missing unnoticed.
std::string SumUp(std::string_view line, uint32_t& sum) {
  for (const char c : line) sum = (sum ^ static_cast<unsigned char>(c)) * 16777619u;
  char text[sizeof ",\"sum\":\"01234567\"}\n"];
  std::snprintf(text, sizeof text, ",\"sum\":\"%08x\"}\n", sum);
  return text;
}

RecordedEvent ReadEvent(seam::Reader& reader, size_t line) {
  RecordedEvent event{};
  int64_t at = 0, took = 0;
  unsigned before[2] = {};
  event.line = line;
  reader.Expect("{");
  reader.Member("at_us", at);
  reader.Member("thread", event.thread);
  reader.Member("client", event.client);
  reader.Expect(",\"name\":\"");
  event.name = reader.SkipUntil('"');
  reader.Expect("\",\"arguments\":");
  event.arguments = reader.SkipObject();
  reader.Member("took_us", took);
  reader.Member("ok", event.ok);
  reader.Member("error", event.error);
  reader.Expect(",\"answer\":");
  event.answers = reader.SkipObject();
  reader.Member("before", before);
  reader.Member("returned", event.returned_at_end);
  event.before = {before[0], before[1]};
  event.start = Clock::time_point(std::chrono::microseconds(at));
  event.took = std::chrono::microseconds(took);
  return event;
}

}  // namespace

std::string Describe(const Event& event, const Texts& texts) {
  std::string text = ",\"thread\":" + std::to_string(event.thread);
  seam::Printer printer(text);
  printer.Member("client", event.client);
  printer.Member("name", std::string(event.name));
  text += ",\"arguments\":" + texts.arguments;
  printer.Member("took_us", Microseconds(event.took));
  printer.Member("ok", event.ok);
  printer.Member("error", event.error);
  return text + ",\"answer\":" + texts.answers;
}

std::unique_ptr<Recorder> Recorder::Start(const std::string& path,
                                          seam::Printer::Names host_names) {
  auto file = std::make_unique<LineFile>(path, "the recording");
  if (!file->Claim()) {
    Complain("process " + std::to_string(::getpid()) + " is not recorded: another one is");
    return nullptr;
  }
  std::unique_ptr<Recorder> recorder(new Recorder(std::move(file)));
  std::string line = "{";
  seam::Printer printer(line);
  printer.Member("recording", kVersion);
  printer.Member("names", host_names == seam::Printer::kShown);
  printer.Member("program", static_cast<const char*>(program_invocation_short_name));
  recorder->Write(line);
  return recorder;
}

void Recorder::Append(const Event& event, const Texts& texts, IndicationCount now) {
  if (::getpid() != process_) return;
  const unsigned before[] = {event.before.come, event.before.returned};
  std::string line =
      "{\"at_us\":" + std::to_string(Microseconds(event.start - start_)) + Describe(event, texts);
  seam::Printer printer(line);
  printer.Member("before", before);
  printer.Member("returned", now.returned);
  Write(line);
}

void Recorder::Write(std::string line) {
  const std::lock_guard<std::mutex> lock(mutex_);
  line += SumUp(line, sum_);
  file_->Write(line);
}

void EndRecording(const std::string& path) {
  std::ofstream(path, std::ios::app) << kEnd;
}

Recording ReadRecording(const std::string& path) {
  std::ifstream file(path);
  if (!file) throw std::runtime_error(path + ": " + std::strerror(errno));
  std::ostringstream text;
  text << file.rdbuf();
  Recording recording{std::make_unique<const std::string>(text.str()), false, {}};

  size_t number = 0;
  uint32_t sum = 0;
  std::string_view left = *recording.text;
  const auto refuse_unless = [&](bool good, const std::string& why) {
    if (!good) throw std::runtime_error(path + ":" + std::to_string(number) + ": " + why);
  };
  while (left != kEnd) {
    ++number;
    const std::string_view line = left.substr(0, left.find('\n') + 1);
    refuse_unless(!line.empty(), "the recording is cut off here");
    left.remove_prefix(line.size());
    seam::Reader reader(line);
    if (number == 1) {
      unsigned version = 0;
      reader.Expect("{");
      reader.Member("recording", version);
      refuse_unless(static_cast<bool>(reader), "this is not a recording");
      refuse_unless(version == kVersion, "version " + std::to_string(version) + " is unknown");
      reader.Member("names", recording.has_host_names);
    } else {
      recording.events.push_back(ReadEvent(reader, number));
    }
    const size_t end = std::min(line.rfind(",\"sum\":"), line.size());
    refuse_unless(reader && SumUp(line.substr(0, end), sum) == line.substr(end),
                  "the line is damaged");
  }
  return recording;
}

}  // namespace trace
