/// Handles one event after the other.
#include "server/event_loop.h"

#include <chrono>

namespace sim {
namespace {

/// How long an activity pauses when its wait could not begin, most likely for want of memory.
constexpr std::chrono::milliseconds kPause{10};

bool TryToArm(Activity& activity) {
  try {
    activity.Arm();
    return true;
  } catch (...) {
    return false;
  }
}

}  // namespace

void RunEventLoop(asio::io_context& io, const std::vector<Activity*>& activities) {
  while (!io.stopped()) {
    bool armed = true;
    for (Activity* const activity : activities) armed = TryToArm(*activity) && armed;
    try {
      if (armed) {
        io.run_one();
      } else {
        io.run_one_for(kPause);
      }
    } catch (...) {
      // Handlers report what they lose. What they waited for is armed again.
    }
  }
}

}  // namespace sim
