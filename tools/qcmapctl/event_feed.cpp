/// A queue that hands the events of calls over from the library's thread.
#include "event_feed.h"

#include <limits>

#include "arguments.h"

namespace qcmapctl {

using mox::util::EventDic;
namespace qcmap = mox::vendor::qcom::qcmap;

EventFeed::EventFeed(qcmap::QcmapWrapper& wrapper) : wrapper_(wrapper) {
  qcmap::Subscribe(wrapper_, this, [this](EventDic& event) { Put(event); });
}

EventFeed::~EventFeed() {
  qcmap::Unsubscribe(wrapper_, this);
}

void EventFeed::Put(EventDic& event) {
  Event taken;
  taken.time = std::chrono::system_clock::now();
  taken.code = event.event_;
  const auto version = event.params_.find(EventDic::IP_VERSION);
  if (version != event.params_.end()) {
    taken.family = version->second == "6" ? IPFamily::IPV6 : IPFamily::IPV4;
  }
  const auto handle = event.params_.find(EventDic::PROFILE_HANDLE);
  if (handle != event.params_.end()) {
    taken.profile_handle = ToNumber(handle->second, std::numeric_limits<uint32_t>::max());
  }
  const std::lock_guard<std::mutex> lock(mutex_);
  events_.push_back(taken);
  arrived_.notify_one();
}

std::vector<Event> EventFeed::Take(std::chrono::steady_clock::time_point deadline) {
  std::unique_lock<std::mutex> lock(mutex_);
  arrived_.wait_until(lock, deadline, [this] { return !events_.empty(); });
  std::vector<Event> taken;
  taken.swap(events_);
  return taken;
}

}  // namespace qcmapctl
