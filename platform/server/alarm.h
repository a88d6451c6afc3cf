/// A timer that is set again and again.
#pragma once

#include <asio/io_context.hpp>
#include <asio/steady_timer.hpp>
#include <functional>

namespace sim {

using Clock = asio::steady_timer::clock_type;
constexpr Clock::time_point kNever = Clock::time_point::max();

/// Calls a function at a given time. The alarm must live as long as the event loop runs.
class Alarm {
 public:
  Alarm(asio::io_context& io, std::function<void()> ring) : timer_(io), ring_(std::move(ring)) {}

  /// Sets the time, in place of the earlier one. Does nothing if the alarm is set to that time
  /// already. If this throws, the alarm is not set.
  void Set(Clock::time_point time) {
    if (time == set_for_) return;
    set_for_ = kNever;
    timer_.cancel();
    if (time == kNever) return;
    timer_.expires_at(time);
    timer_.async_wait([this, time](const asio::error_code& cancelled) {
      // A wait that was over before it was cancelled still gets here.
      if (cancelled || time != set_for_) return;
      set_for_ = kNever;
      ring_();
    });
    set_for_ = time;
  }

 private:
  asio::steady_timer timer_;
  const std::function<void()> ring_;
  Clock::time_point set_for_ = kNever;
};

}  // namespace sim
