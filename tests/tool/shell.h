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
  std::string err;
  double seconds;
};

/// Runs `script` with sh; there is no server unless it starts one.
inline Outcome Shell(const std::string& script) {
  char folder[] = "/tmp/qcmap-tool-XXXXXX";
  const std::string made = mkdtemp(folder);
  setenv("PATH", (std::string(MVQ_QCMAP_TOOLS ":/usr/bin:/bin")).c_str(), 1);
  setenv("QCMAP_SOCKET", (made + "/none").c_str(), 1);
  std::ofstream(made + "/script") << script;
  const auto start = std::chrono::steady_clock::now();
  const std::string line = "exec sh " + made + "/script >" + made + "/out 2>" + made + "/err";
  const int status = system(line.c_str());
  const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
  const Outcome outcome{WIFSIGNALED(status) ? -WTERMSIG(status) : WEXITSTATUS(status),
                        Replace(ReadFile(made + "/out"), "[0-9-]+T[0-9:]+\\.[0-9]{3}Z", "TIME"),
                        ReadFile(made + "/err"), took.count()};
  std::filesystem::remove_all(made);
  return outcome;
}

/// Runs `script` against a server of its own with these options.
inline Outcome ShellWithServer(const std::string& options, const std::string& script) {
  return Shell("exec mvq-qcmap-sim " + options + " -- sh -c '" + Replace(script, "'", "'\\''") +
               "'");
}
