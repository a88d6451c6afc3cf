/// Runs command lines as a user's shell would, with the built tools in PATH.
#pragma once

#include <stdlib.h>
#include <sys/wait.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>
#include <string>

inline std::string ReadFile(const std::string& path) {
  std::ostringstream text;
  text << std::ifstream(path).rdbuf();
  return text.str();
}

inline std::string Replace(const std::string& text, const std::string& pattern,
                           const std::string& by) {
  return std::regex_replace(text, std::regex(pattern), by);
}

struct Outcome {
  /// The exit status, or -N after signal N.
  int status;
  /// Times are replaced by TIME.
  std::string out;
  /// Wrapped lines are joined again.
  std::string err;
  double seconds;
};

/// `once COMMAND...` waits until the command succeeds. After 20 seconds it reports the command and
/// ends the whole script, even from a background job.
constexpr char kOnce[] =
    "once() {\n"
    "  timeout 20 sh -c 'until \"$@\"; do sleep 0.01; done' once \"$@\" && return\n"
    "  echo \"this never happened: $*\" >&2; kill $$; exit 1\n"
    "}\n";

/// Runs `script` with sh, started by `launcher`.
inline Outcome Shell(const std::string& script, const std::string& launcher = "") {
  char folder[] = "/tmp/qcmap-tool-XXXXXX";
  const std::string made = mkdtemp(folder);
  setenv("PATH", (std::string(MVQ_QCMAP_TOOLS ":/usr/bin:/bin")).c_str(), 1);
  // There is no server unless the script or the launcher starts one.
  setenv("QCMAP_SOCKET", (made + "/none").c_str(), 1);
  std::ofstream(made + "/script") << kOnce << script;
  const auto start = std::chrono::steady_clock::now();
  const std::string line =
      "exec " + launcher + "sh " + made + "/script >" + made + "/out 2>" + made + "/err";
  const int status = system(line.c_str());
  const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
  const Outcome outcome{WIFSIGNALED(status) ? -WTERMSIG(status) : WEXITSTATUS(status),
                        Replace(ReadFile(made + "/out"), "[0-9-]+T[0-9:]+\\.[0-9]{3}Z", "TIME"),
                        Replace(ReadFile(made + "/err"), "\n  +", " "), took.count()};
  std::filesystem::remove_all(made);
  return outcome;
}

/// Runs `script` against a server of its own with these options.
inline Outcome ShellWithServer(const std::string& options, const std::string& script) {
  return Shell(script, "mvq-qcmap-sim " + options + " -- ");
}
