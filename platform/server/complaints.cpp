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
  if (Clock::now() < next_line_at_ || !Print(complaint)) ++left_out_;
}

void Complaints::ReportTheRest() noexcept {
  if (left_out_ == 0) return;
  char text[64];
  std::snprintf(text, sizeof text, "%u more complaints left out", left_out_);
  if (Print(text)) left_out_ = 0;
}

void Complaints::Arm() {
  alarm_.Set(left_out_ > 0 ? next_line_at_ : kNever);
}

bool Complaints::Print(std::string_view text) noexcept {
  next_line_at_ = Clock::now() + kInterval;
  try {
    output_.Print(std::string(prefix_) + ": " + Printable(text) + "\n");
    return true;
  } catch (const std::bad_alloc&) {
    return false;
  }
}

}  // namespace sim
