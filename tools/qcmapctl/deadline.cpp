/// The time limit of a command.
#include "deadline.h"

#include <unistd.h>

#include <atomic>
#include <thread>
#include <utility>

namespace qcmapctl {
namespace {

std::atomic<bool> is_lifted{false};

}  // namespace

void EndAfter(Clock::time_point limit, std::function<int()> report) {
  std::thread([limit, report = std::move(report)] {
    std::this_thread::sleep_until(limit);
    // Objects that the main thread still uses must not be destroyed, so no exit handler runs.
    if (!is_lifted) ::_exit(report());
  }).detach();
}

void RunWithoutLimit() {
  is_lifted = true;
}

}  // namespace qcmapctl
