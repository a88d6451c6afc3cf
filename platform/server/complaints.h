/// Complaints about clients or about console lines, on standard error.
#pragma once

#include <string_view>

#include "server/alarm.h"
#include "server/event_loop.h"
#include "server/output.h"

namespace sim {

/// Prints at most one line a second, so that nobody can flood the output. The others are counted,
/// and their number is printed when a second has passed.
class Complaints : public Activity {
 public:
  /// Each line begins with `prefix`.
  Complaints(asio::io_context& io, Output& output, const char* prefix);

  /// Bytes that are not printable are escaped.
  void Add(std::string_view complaint) noexcept;
  /// Prints how many complaints have been left out, if any.
  void ReportTheRest() noexcept;
  void Arm() override;

 private:
  void Print(std::string_view line) noexcept;

  Output& output_;
  const char* const prefix_;
  Alarm alarm_;
  /// When another line may be printed.
  Clock::time_point next_line_at_{};
  unsigned left_out_ = 0;
};

}  // namespace sim
