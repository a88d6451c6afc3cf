/// mvq-qcmap-trace: runs a program and shows, records or replays what it asks of the modem.
#include <fcntl.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "launch/program.h"
#include "mox/vendor/qcom/qcmap/version.h"
#include "options.h"
#include "recording.h"

namespace {

namespace fs = std::filesystem;

constexpr char kHint[] = "PROGRAM and its arguments follow after --.";

std::set<std::string> NamesOfEvents() {
  std::set<std::string> names;
  for (const seam::Request& request : seam::kRequests) names.insert(request.name);
  for (const seam::Request& other :
       {trace::kIndication, trace::kConstructor, trace::kDestructor, trace::kProbe})
    names.insert(other.name);
  return names;
}

void AddOptions(CLI::App& app, trace::Options& options) {
  app.footer(kHint);
  app.set_help_flag("-h,--help", "Show this help");
  app.set_version_flag("-V,--version", "mvq-qcmap-trace " MVQ_QCMAP_VERSION, "Show the version");
  const auto add_file = [&](const char* name, std::string& path, const char* help) {
    return app.add_option(name, path, help)->type_name("FILE");
  };
  add_file("--output", options.output, "Append to FILE instead of standard error");
  app.add_flag("--json", options.json, "Print one JSON object a line");
  const auto set_names = [&](const std::vector<std::string>& names) {
    for (const std::string& name : names) options.only += "," + name + ",";
  };
  app.add_option_function<std::vector<std::string>>("--only", set_names, "Show these requests only")
      ->type_name("REQUEST")
      ->delimiter(',')
      ->check(CLI::IsMember(NamesOfEvents()).description(""));
  app.add_option("--slow", options.slow_ms, "Show only what takes MS milliseconds or more")
      ->type_name("MS")
      ->check(CLI::Validator(CLI::NonNegativeNumber).description(""));
  app.add_flag("--names", options.host_names, "Do not mask host names");
  auto* const record = add_file("--record", options.record, "Record into FILE");
  auto* const replay = add_file("--replay", options.replay, "Answer from the recording in FILE");
  replay->excludes(record);
  app.add_flag("--fast", options.fast, "Replay without the recorded pauses")->needs(replay);
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

int Run(trace::Options& options, const std::vector<std::string>& words) {
  options.is_shown =
      !options.output.empty() || options.json || (options.record.empty() && options.replay.empty());
  options.launcher = ::getpid();
  ::prctl(PR_SET_NAME, trace::kLauncherName);
  if (!options.replay.empty()) {
    static_cast<void>(trace::Recording(options.replay));  // refuses a bad one
    options.replay = fs::absolute(options.replay);
  }
  Create(options.output, O_APPEND);
  std::error_code missing;
  if (fs::equivalent(options.output, options.record, missing))
    launch::Fail("--record and --output need files of their own");
  Create(options.record, O_TRUNC);
  Preload();
  std::string text;
  seam::Printer(text).Members(trace::kOptionNames, options.Members());
  ::setenv(trace::kVariable, text.c_str(), 1);

  launch::Program program;
  bool is_used = false, differs = false;
  const auto is_ours = [](const siginfo_t& signal) {
    return signal.si_code == SI_QUEUE && signal.si_value.sival_int == trace::kMark;
  };
  program.On(SIGUSR1, [&](const siginfo_t& signal) {
    is_used |= is_ours(signal);
    return is_ours(signal);
  });
  program.On(SIGUSR2, [&](const siginfo_t& signal) {
    if (!is_ours(signal)) return false;
    differs = true;
    if (signal.si_pid > 0) ::kill(signal.si_pid, SIGKILL);
    ::kill(program.pid(), SIGKILL);
    return true;
  });
  const int status = program.Run(words);
  if (differs) return 1;
  // A program that runs as another user cannot send signals, but it can write.
  std::error_code failed;
  const auto recorded = fs::file_size(options.record, failed);
  is_used |= !failed && recorded > 0;
  if (!is_used) std::fputs("mvq-qcmap-trace: no process used the library\n", stderr);
  ::signal(SIGXFSZ, SIG_IGN);  // the recording may have ended for this reason
  if (is_used && !options.record.empty()) trace::EndRecording(options.record);
  return launch::Repeat(status);
}

}  // namespace

int main(int argc, char* argv[]) {
  // The program's own words are nothing for the parser, which would split some of them.
  char** const separator = std::find(argv, argv + argc, std::string_view("--"));
  const std::vector<std::string> words(std::min(separator + 1, argv + argc), argv + argc);
  trace::Options options;
  CLI::App app("Runs a program, and shows, records or replays what it asks of the modem.",
               "mvq-qcmap-trace");
  AddOptions(app, options);
  try {
    app.parse(static_cast<int>(separator - argv), argv);
    if (words.empty()) launch::Fail(std::string("no program is given\n") + kHint);
    return Run(options, words);
  } catch (const CLI::Success& help) {
    return app.exit(help);
  } catch (const CLI::ExtrasError& error) {
    std::fprintf(stderr, "mvq-qcmap-trace: %s\n%s\n", error.what(), kHint);
    return launch::kExitFailed;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "mvq-qcmap-trace: %s\n", error.what());
    return launch::kExitFailed;
  }
}
