/// The time of the model, and what is to happen in it.
#pragma once

#include <functional>
#include <vector>

#include "protocol/messages.h"
#include "server/alarm.h"
#include "server/event_loop.h"

namespace sim {

/// Places in Profile::families.
enum FamilyIndex : size_t { kIpv4 = 0, kIpv6 = 1 };
constexpr FamilyIndex kFamilies[] = {kIpv4, kIpv6};

/// One queue of all events of the model, in the order in which they fall due. The model's time is
/// the machine's, or it stands still and moves only when it is advanced.
class Timeline : public Activity {
 public:
  using Time = Clock::time_point;
  /// Something that is to happen to one family of a profile.
  struct Event {
    Time at;
    profile_handle_type_v01 profile;
    FamilyIndex family;
  };

  /// `happen` gets each event at its time. It must not throw. While `must_wait` holds, no advance
  /// goes on.
  Timeline(asio::io_context& io, bool is_manual, std::function<void(const Event&)> happen,
           std::function<bool()> must_wait);

  Time Now() const { return is_manual_ ? now_ : Clock::now(); }
  Time start() const { return start_; }

  /// Makes room for so many events, so that adding them needs no memory.
  void Reserve(size_t events) { queue_.reserve(events); }
  /// Adds an event. Its family must have none that has not happened yet.
  void Add(const Event& event) noexcept;
  void Remove(profile_handle_type_v01 profile, FamilyIndex family) noexcept;

  /// Has time move on, once it has reached the end of earlier advances. Returns the time that it
  /// will reach. Clients are served meanwhile.
  Time Advance(std::chrono::milliseconds duration);
  void Arm() override;

 private:
  void Proceed();

  const bool is_manual_;
  const std::function<void(const Event&)> happen_;
  const std::function<bool()> must_wait_;
  Alarm alarm_;
  const Time start_ = Clock::now();
  /// These are used only when time stands still.
  Time now_ = start_, target_ = start_;
  /// The machine's time at which an advance goes on.
  Time next_turn_at_{};
  std::vector<Event> queue_;
};

}  // namespace sim
