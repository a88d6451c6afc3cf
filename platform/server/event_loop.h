/// Keeps the server's recurring activities going, whatever goes wrong.
#pragma once

#include <asio/io_context.hpp>
#include <vector>

namespace sim {

/// Something that the server does again and again, such as accepting clients.
class Activity {
 public:
  /// Begins to wait for the next event, unless it waits already or has nothing to wait for. May
  /// throw. It is called before each event, so an activity whose wait could not begin, or has been
  /// lost by an exception, soon goes on.
  virtual void Arm() = 0;

 protected:
  ~Activity() = default;
};

/// Runs handlers until `io` is stopped. An exception costs no more than what its handler was doing.
void RunEventLoop(asio::io_context& io, const std::vector<Activity*>& activities);

}  // namespace sim
