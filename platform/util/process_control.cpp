/// Finds processes by name in the process table.
#include "mox/util/process_control.h"

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "protocol/descriptor.h"

namespace mox::util {
namespace {

/// Returns argv[0] of a process. It is empty for zombies, kernel threads and processes that have
/// just ended.
std::string ProgramPath(const std::string& pid) {
  char text[PATH_MAX];
  const sim::Descriptor file(::open(("/proc/" + pid + "/cmdline").c_str(), O_RDONLY | O_CLOEXEC));
  const ssize_t length = ::read(file.Get(), text, sizeof text);
  return length > 0 ? std::string(text, ::strnlen(text, static_cast<size_t>(length)))
                    : std::string();
}

bool IsNumber(const std::string& text) {
  return std::all_of(text.begin(), text.end(), [](unsigned char c) { return std::isdigit(c); });
}

}  // namespace

// The name is taken from the command line, because /proc/PID/comm keeps only its first 15
// characters.
int ProcessControl::GetPidByProcessName(std::string name, int /*limit*/) {
  const std::unique_ptr<DIR, int (*)(DIR*)> processes(::opendir("/proc"), ::closedir);
  if (!processes || name.empty()) return -1;
  while (const dirent* entry = ::readdir(processes.get())) {
    const std::string pid = entry->d_name;
    if (!IsNumber(pid)) continue;
    const std::string path = ProgramPath(pid);
    if (path.substr(path.rfind('/') + 1) == name) return std::atoi(pid.c_str());
  }
  return -1;
}

}  // namespace mox::util
