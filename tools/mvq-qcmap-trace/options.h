/// What the launcher tells the preloaded library, as JSON in an environment variable.
#pragma once

#include <string>
#include <tuple>

namespace trace {

constexpr char kVariable[] = "MVQ_QCMAP_TRACE";
/// What the launcher is called in the list of processes, whatever the name of its file.
constexpr char kLauncherName[] = "mvq-qcmap-trace";
/// Tells signals of the preloaded library from those of others.
constexpr int kMark = 0x747263;

struct Options {
  /// The launcher's process. It is told of the first use by SIGUSR1, and by SIGUSR2 when the
  /// program does something else than was recorded. Both carry kMark.
  int launcher = 0;
  bool is_shown = false, json = false, host_names = false, fast = false;
  int slow_ms = 0;
  /// The names to show, each between commas. Empty for all.
  std::string only;
  /// Paths. Empty for standard error, or for none.
  std::string output, record, replay;

  auto Members() {
    return std::tie(launcher, is_shown, json, host_names, fast, slow_ms, only, output, record,
                    replay);
  }
};
constexpr const char* kOptionNames[] = {"launcher", "is_shown", "json",   "host_names", "fast",
                                        "slow_ms",  "only",     "output", "record",     "replay"};

}  // namespace trace
