/// A queue that hands the events of calls over from the library's thread.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <optional>
#include <vector>

#include "mox/vendor/qcom/qcmap/subscription.h"
#include "vocabulary.h"

namespace qcmapctl {

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

  /// Returns the events since the last call, in order. If there are none, waits for one until
  /// `deadline`.
  std::vector<Event> Take(std::chrono::steady_clock::time_point deadline);

 private:
  void Put(mox::util::EventDic& event);

  mox::vendor::qcom::qcmap::QcmapWrapper& wrapper_;
  /// Guards `events_`. Never held while the library is called.
  std::mutex mutex_;
  std::condition_variable arrived_;
  std::vector<Event> events_;
};

}  // namespace qcmapctl
