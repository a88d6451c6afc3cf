/// A queue that hands the events of calls over from the library's thread.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <optional>
#include <vector>

#include "deadline.h"
#include "mox/vendor/qcom/qcmap/subscription.h"
#include "vocabulary.h"

namespace qcmapctl {

/// How often those who wait for events check that the server is still there. Not every client logs
/// that it has lost its server, and not every change of a state sends an event.
constexpr std::chrono::milliseconds kCheckEvery{500};

struct Event {
  std::chrono::system_clock::time_point time;
  /// One of mox::vendor::qcom::qcmap::EventCode.
  uint32_t code = 0;
  IPFamily family = IPFamily::NONE;
  /// Empty if the server did not name the profile.
  std::optional<uint32_t> profile_handle;
};

/// Subscribed for as long as it exists. Events are queued because a callback on the library's
/// thread must not read the policies.
class EventFeed {
 public:
  explicit EventFeed(mox::vendor::qcom::qcmap::QcmapWrapper& wrapper);
  ~EventFeed();
  EventFeed(const EventFeed&) = delete;
  EventFeed& operator=(const EventFeed&) = delete;

  /// Returns the events since the last call, in order. If there are none, waits until `deadline`
  /// for one, or for the client to report that the server is lost. The next request then fails.
  std::vector<Event> Take(Clock::time_point deadline);

 private:
  void Put(mox::util::EventDic& event);
  void Wake();

  mox::vendor::qcom::qcmap::QcmapWrapper& wrapper_;
  /// Guards the members below. Never held while the library is called.
  std::mutex mutex_;
  std::condition_variable arrived_;
  std::vector<Event> events_;
  bool woken_ = false;
};

}  // namespace qcmapctl
