/// The time limit of a command.
#pragma once

#include <chrono>
#include <functional>

namespace qcmapctl {

using Clock = std::chrono::steady_clock;

/// Ends the process after `limit`, even while the library waits for the server. `report` tells the
/// user and returns the exit code; it runs on a thread of its own.
void EndAfter(Clock::time_point limit, std::function<int()> report);

/// Lets the command run for as long as it likes.
void RunWithoutLimit();

}  // namespace qcmapctl
