/// Shows what passes the seam.
#include "tracer.h"

#include <cctype>
#include <cstdlib>
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
  sigval mark{};
  mark.sival_int = kMark;
  if (std::getline(comm, name) && name == kLauncherName) ::sigqueue(launcher, signal, mark);
}

}  // namespace

Tracer& Tracer::Get() {
  // Other threads may use it until the process has ended.
  static Tracer& tracer = *new Tracer(OptionsFromEnvironment());
  return tracer;
}

Tracer::Tracer(const Options& options)
    : options_(options), style_(options.json ? seam::Printer::kJson : seam::Printer::kPlain) {
  const Unnoticed unnoticed;
  bool has_names = options.host_names;
  if (options.is_shown) output_ = std::make_unique<LineFile>(options.output, "the trace");
  if (!options.record.empty()) recorder_ = Recorder::Start(options.record, has_names);
  if (!options.replay.empty()) {
    replay_ = std::make_unique<Replay>(
        options.replay, options.fast, [this] { Notify(options_.launcher, SIGUSR2); }, Deliver);
    has_names = replay_->has_host_names();
  }
  host_names_ = has_names ? seam::Printer::kShown : seam::Printer::kMasked;
  Notify(options.launcher, SIGUSR1);
}

bool Tracer::IsShown(const Event& event) const {
  if (output_ == nullptr || event.took_us < int64_t{options_.slow_ms} * 1000) return false;
  return options_.only.empty() ||
         options_.only.find("," + std::string(event.name) + ",") != std::string::npos;
}

void Tracer::Show(Event& event) {
  std::string line;
  line.reserve(300 + event.arguments.text.size() + event.answer.text.size());
  if (options_.json) {
    line += "{\"time\":\"" + WallTime(event.at_us) + '"';
    seam::Printer(line).Members(kEventNames, event.Members());
    line += '}';
  } else {
    line += WallTime(event.at_us) + " [" + std::to_string(event.thread) + "] " +
            std::to_string(event.took_us) + " us ";
    line += event.name;
    line += event.arguments.text;
    line += " = ";
    line += event.ok ? "ok" : event.returned ? InWords(event.error) : "exception";
    if (event.answer.text != "{}") (line += ' ') += event.answer.text;
  }
  output_->Write(line += '\n');
}

}  // namespace trace
