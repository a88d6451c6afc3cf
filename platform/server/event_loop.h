/// Keeps the server's recurring activities going, whatever goes wrong.
#pragma once

#include <asio/io_context.hpp>
#include <vector>

namespace sim {

/// Something that the server does again and again, such as accepting clients.
class Activity {
 public:
  /// Begins to wait for the next event, unless it is already waiting or has nothing to wait for.
  /// May throw. The loop calls it before each event, so an activity that could not begin to wait,
  /// or lost its wait to an exception, soon tries again.
  virtual void Arm() = 0;

 protected:
  ~Activity() = default;
};

/// Runs handlers until `io` is stopped. An exception ends only what its handler was doing.
void RunEventLoop(asio::io_context& io, const std::vector<Activity*>& activities);

}  // namespace sim
