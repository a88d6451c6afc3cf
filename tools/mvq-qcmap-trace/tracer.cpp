/// Shows what passes the seam.
#include "tracer.h"

#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>

#include "records/reader.h"

namespace trace {
namespace {

Options OptionsFromEnvironment() {
  Options options;
  const char* const text = std::getenv(kVariable);
  seam::Reader(text != nullptr ? text : "").Members(kOptionNames, options.Members());
  return options;
}

/// Appends the time in UTC, with milliseconds. The text of a second is made once.
void AppendWallTime(std::string& line, Clock::time_point time) {
  using std::chrono::milliseconds, std::chrono::system_clock;
  thread_local time_t second = -1;
  thread_local char text[24] = "";
  const auto wall = system_clock::now() - (Clock::now() - time);
  const auto ms = std::chrono::duration_cast<milliseconds>(wall.time_since_epoch()).count();
  if (ms / 1000 != second) {
    second = static_cast<time_t>(ms / 1000);
    tm parts{};
    ::gmtime_r(&second, &parts);
    std::strftime(text, sizeof text, "%FT%T", &parts);
  }
  line += text;
  line += '.' + std::to_string(1000 + ms % 1000).substr(1) + 'Z';
}

std::string InWords(qmi_error_type_v01 error) {
  const char* const name = seam::NameOf(error);
  std::string words = name != nullptr ? name : "error";
  for (char& c : words) c = c == '_' ? ' ' : static_cast<char>(std::tolower(c));
  return words + " (" + std::to_string(error) + ")";
}

/// The launcher may have ended, and another process may have got its number.
void Notify(pid_t launcher, int signal) {
  std::ifstream comm("/proc/" + std::to_string(launcher) + "/comm");
  std::string name;
  if (std::getline(comm, name) && name == "mvq-qcmap-trace") ::kill(launcher, signal);
}

}  // namespace

Tracer& Tracer::Get() {
  // Other threads may use it until the process has ended.
  static Tracer& tracer = *new Tracer(OptionsFromEnvironment());
  return tracer;
}

Tracer::Tracer(const Options& options)
    : options_(options),
      host_names_(options.host_names ? seam::Printer::kShown : seam::Printer::kMasked),
      style_(options.json ? seam::Printer::kJson : seam::Printer::kPlain) {
  const Unnoticed unnoticed;
  if (options.is_shown) output_ = std::make_unique<LineFile>(options.output, "the trace");
  if (!options.record.empty()) recorder_ = Recorder::Start(options.record, host_names_);
  if (!options.replay.empty()) {
    replay_ = std::make_unique<Replay>(ReadRecording(options.replay), options.fast,
                                       [this] { Notify(options_.launcher, SIGUSR2); });
  }
  Notify(options.launcher, SIGUSR1);
}

bool Tracer::IsShown(const Event& event) const {
  if (output_ == nullptr || event.took < std::chrono::milliseconds(options_.slow_ms)) return false;
  return options_.only.empty() ||
         options_.only.find("," + std::string(event.name) + ",") != std::string::npos;
}

void Tracer::Show(const Event& event, const Texts& texts) {
  std::string line;
  line.reserve(200 + texts.arguments.size() + texts.answers.size());
  if (options_.json) line += "{\"time\":\"";
  AppendWallTime(line, event.start);
  if (options_.json) {
    line += '"' + Describe(event, texts) + '}';
  } else {
    line += " [" + std::to_string(event.thread) + "] " + std::to_string(Microseconds(event.took)) +
            " us ";
    line += event.name;
    line += texts.arguments + " = " + (event.ok ? "ok" : InWords(event.error));
    if (texts.answers != "{}") line += ' ' + texts.answers;
  }
  output_->Write(line += '\n');
}

}  // namespace trace
