/// Limits how often complaints are printed.
#include "server/complaints.h"

#include <new>
#include <string>

#include "server/printable.h"

namespace sim {
namespace {

constexpr std::chrono::seconds kInterval{1};

}  // namespace

Complaints::Complaints(asio::io_context& io, Output& output, const char* prefix)
    : output_(output), prefix_(prefix), alarm_(io, [this] { ReportTheRest(); }) {}

void Complaints::Add(std::string_view complaint) noexcept {
  if (Clock::now() >= next_line_at_) {
    try {
      return Print(std::string(prefix_) + ": " + Printable(complaint) + "\n");
    } catch (const std::bad_alloc&) {
      // It is counted.
    }
  }
  ++left_out_;
}

void Complaints::ReportTheRest() noexcept {
  if (left_out_ == 0) return;
  char line[128];
  std::snprintf(line, sizeof line, "%s: %u more complaints left out\n", prefix_, left_out_);
  left_out_ = 0;
  Print(line);
}

void Complaints::Arm() {
  alarm_.Set(left_out_ > 0 ? next_line_at_ : kNever);
}

void Complaints::Print(std::string_view line) noexcept {
  next_line_at_ = Clock::now() + kInterval;
  output_.Print(line);
}

}  // namespace sim
