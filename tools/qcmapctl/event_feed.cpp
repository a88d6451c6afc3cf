/// A queue that hands the events of calls over from the library's thread.
#include "event_feed.h"

#include <limits>

#include "arguments.h"
#include "log_hook.h"

namespace qcmapctl {

using mox::util::EventDic;
namespace qcmap = mox::vendor::qcom::qcmap;

EventFeed::EventFeed(qcmap::QcmapWrapper& wrapper) : wrapper_(wrapper) {
  qcmap::Subscribe(wrapper_, this, [this](EventDic& event) { Put(event); });
  OnServerLost([this] { Wake(); });
}

EventFeed::~EventFeed() {
  OnServerLost(nullptr);
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

void EventFeed::Wake() {
  const std::lock_guard<std::mutex> lock(mutex_);
  woken_ = true;
  arrived_.notify_one();
}

std::vector<Event> EventFeed::Take(Clock::time_point deadline) {
  std::unique_lock<std::mutex> lock(mutex_);
  arrived_.wait_until(lock, deadline, [this] { return woken_ || !events_.empty(); });
  woken_ = false;
  std::vector<Event> taken;
  taken.swap(events_);
  return taken;
}

}  // namespace qcmapctl
