/// Follows a profile's call until it is in a state.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "event_feed.h"
#include "report.h"
#include "router.h"

namespace qcmapctl {

/// The differences between bringing a call up and taking it down.
struct Direction {
  const char* word;
  ConnectStatus target;
  ConnectStatus moving;
  mox::Result (QcmapWrapper::*request)(uint32_t, IPFamily);
  uint32_t done_event;
  uint32_t failed_event;
  Failure refused;
  Failure failed;
};

/// Waits until families of a profile's call are in a state, after it has requested the change, or
/// without a request. Subscribes before it reads or requests anything, so that it misses no event.
class CallChange {
 public:
  /// Without `direction`, nothing is requested.
  CallChange(Router& router, uint32_t index, ConnectStatus target, const Direction* direction);

  /// Adds a family, and requests its change unless it is in the state already.
  void Add(IPFamily family);
  /// Returns when each family has its outcome, or at `deadline`.
  void Wait(Clock::time_point deadline);
  /// With `may_be_pending`, a change that is still in progress counts as a success. Throws
  /// CommandFailed if any family is not in the state.
  Report Conclude(bool may_be_pending);

 private:
  /// One family of the call.
  struct Leg {
    IPFamily family;
    ConnectStatus state;
    /// Empty while the change is in progress, and after a failure.
    std::optional<std::string> result;
    /// Why the change failed, also in words.
    std::optional<Failure> failure;
    Reason reason;
    bool seen_moving = false;
    bool outcome_reported = false;
  };

  bool IsUnderWay() const;
  void Explain(Leg& leg, mox::Result result);
  void Note(const Event& event);
  void Judge(Leg& leg) const;
  [[noreturn]] void Fail() const;

  Router& router_;
  const Direction* direction_;
  ConnectStatus target_;
  Profile profile_;
  EventFeed feed_;
  std::vector<Leg> legs_;
};

}  // namespace qcmapctl
