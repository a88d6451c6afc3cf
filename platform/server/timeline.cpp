/// Keeps the model's events in order and lets each happen when its time has come.
#include "server/timeline.h"

#include <algorithm>

#include "server/words.h"

namespace sim {
namespace {

/// How long clients may have to wait for events that fall due together.
constexpr std::chrono::milliseconds kMaxTurn{1};
/// How long an advance pauses when it must wait.
constexpr std::chrono::milliseconds kPause{1};
constexpr std::chrono::hours kMaxAdvance{24 * 366 * 100};

}  // namespace

Timeline::Timeline(asio::io_context& io, bool is_manual, std::function<void(const Event&)> happen,
                   std::function<bool()> must_wait)
    : is_manual_(is_manual),
      happen_(std::move(happen)),
      must_wait_(std::move(must_wait)),
      alarm_(io, [this] { Proceed(); }) {}

void Timeline::Add(const Event& event) noexcept {
  const auto is_earlier = [](const Event& a, const Event& b) { return a.at < b.at; };
  queue_.insert(std::upper_bound(queue_.begin(), queue_.end(), event, is_earlier), event);
}

void Timeline::Remove(profile_handle_type_v01 profile, FamilyIndex family) noexcept {
  const auto is_its = [&](const Event& event) {
    return event.profile == profile && event.family == family;
  };
  queue_.erase(std::remove_if(queue_.begin(), queue_.end(), is_its), queue_.end());
}

Timeline::Time Timeline::Advance(std::chrono::milliseconds duration) {
  if (!is_manual_)
    throw WrongCommand("time is the machine's; start the server with --clock manual");
  if (target_ + duration > start_ + kMaxAdvance) throw WrongCommand("that is too far ahead");
  return target_ += duration;
}

void Timeline::Arm() {
  if (is_manual_) {
    alarm_.Set(now_ < target_ ? next_turn_at_ : kNever);
  } else {
    alarm_.Set(queue_.empty() ? kNever : queue_.front().at);
  }
}

void Timeline::Proceed() {
  const Time start = Clock::now();
  if (is_manual_ && must_wait_()) {
    next_turn_at_ = start + kPause;
    return;
  }
  const Time end = is_manual_ ? target_ : start;
  while (!queue_.empty() && queue_.front().at <= end) {
    if (Clock::now() - start >= kMaxTurn) return;
    const Event event = queue_.front();
    queue_.erase(queue_.begin());
    now_ = event.at;
    happen_(event);
  }
  now_ = end;
}

}  // namespace sim
