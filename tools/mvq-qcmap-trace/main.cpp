/// mvq-qcmap-trace: runs a program and shows, records or replays what it asks of the modem.
#include <fcntl.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include "launch/program.h"
#include "mox/vendor/qcom/qcmap/version.h"
#include "options.h"
#include "recording.h"

namespace {

namespace fs = std::filesystem;

struct CommandLine {
  trace::Options options;
  std::vector<std::string> only, program;
};

std::set<std::string> NamesOfEvents() {
  std::set<std::string> names;
  for (const seam::Request& request : seam::kRequests) names.insert(request.name);
  for (const seam::Request& other :
       {trace::kIndication, trace::kConstructor, trace::kDestructor, trace::kProbe})
    names.insert(other.name);
  return names;
}

void AddOptions(CLI::App& app, CommandLine& line) {
  trace::Options& options = line.options;
  app.set_help_flag("-h,--help", "Show this help");
  app.set_version_flag("-V,--version", "mvq-qcmap-trace " MVQ_QCMAP_VERSION, "Show the version");
  const auto add_file = [&](const char* name, std::string& path, const char* help) {
    return app.add_option(name, path, help)->type_name("FILE");
  };
  add_file("--output", options.output, "Append to FILE instead of standard error");
  app.add_flag("--json", options.json, "Print one JSON object a line");
  app.add_option("--only", line.only, "Show these requests only")
      ->type_name("REQUEST,...")
      ->delimiter(',')
      ->check(CLI::IsMember(NamesOfEvents()));
  app.add_option("--slow", options.slow_ms, "Show only what takes MS milliseconds or more")
      ->type_name("MS");
  app.add_flag("--names", options.host_names, "Do not mask host names");
  auto* const record = add_file("--record", options.record, "Record into FILE");
  auto* const replay = add_file("--replay", options.replay, "Answer from the recording in FILE");
  replay->excludes(record);
  app.add_flag("--fast", options.fast, "Replay without the recorded pauses")->needs(replay);
  app.add_option("PROGRAM", line.program, "The program and its arguments, after --")
      ->type_name("")
      ->required();
}

/// Makes the path absolute, since the program may change its folder. Throws unless the file can be
/// written.
void Create(std::string& path, int flags) {
  if (path.empty()) return;
  const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | flags, 0600);
  if (fd < 0) launch::FailWithErrno(path);
  ::close(fd);
  path = fs::absolute(path);
}

/// Has the loader put our library before all others in this process's children.
void Preload() {
  const fs::path folder = launch::OwnFolder();
  fs::path library = folder / "libmvq_qcmap_trace.so";  // in the build tree
  if (!fs::exists(library)) library = folder / MVQ_QCMAP_TRACE_LIBRARY;
  std::string path = fs::canonical(library);
  // The loader takes spaces and colons for the end of a path.
  if (path.find_first_of(" :") != std::string::npos) {
    const int fd = ::open(path.c_str(), O_PATH);
    path = "/proc/" + std::to_string(::getpid()) + "/fd/" + std::to_string(fd);
  }
  const char* const others = std::getenv("LD_PRELOAD");
  if (others != nullptr) path += ":" + std::string(others);
  ::setenv("LD_PRELOAD", path.c_str(), 1);
}

int Run(CommandLine& line) {
  trace::Options& options = line.options;
  for (const std::string& name : line.only) options.only += "," + name + ",";
  options.is_shown =
      !options.output.empty() || options.json || (options.record.empty() && options.replay.empty());
  options.launcher = ::getpid();
  if (!options.replay.empty()) {
    static_cast<void>(trace::Recording(options.replay));  // refuses a bad one
    options.replay = fs::absolute(options.replay);
  }
  Create(options.output, O_APPEND);
  Create(options.record, O_TRUNC);
  Preload();
  std::string text;
  seam::Printer(text).Members(trace::kOptionNames, options.Members());
  ::setenv(trace::kVariable, text.c_str(), 1);

  launch::Program program;
  bool is_used = false, differs = false;
  program.On(SIGUSR1, [&](const siginfo_t&) { is_used = true; });
  program.On(SIGUSR2, [&](const siginfo_t& sender) {
    differs = true;
    ::kill(sender.si_pid, SIGKILL);
    ::kill(program.pid(), SIGKILL);
  });
  const int status = program.Run(line.program);
  if (differs) return 1;
  if (!is_used) std::fputs("mvq-qcmap-trace: no process used the library\n", stderr);
  if (is_used && !options.record.empty()) trace::EndRecording(options.record);
  return launch::Repeat(status);
}

}  // namespace

int main(int argc, char* argv[]) {
  CommandLine line;
  CLI::App app("Runs a program, and shows, records or replays what it asks of the modem.",
               "mvq-qcmap-trace");
  AddOptions(app, line);
  try {
    app.parse(argc, argv);
    return Run(line);
  } catch (const CLI::Success& help) {
    return app.exit(help);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "mvq-qcmap-trace: %s\n", error.what());
    return launch::kExitFailed;
  }
}
