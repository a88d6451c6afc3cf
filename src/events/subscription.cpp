/// Subscribing to the events of data calls.
#include "mox/vendor/qcom/qcmap/subscription.h"

#include <mutex>
#include <utility>

#include "core/log.h"
#include "events/delivery.h"

namespace mox::vendor::qcom::qcmap {

// Destroying a callback may run code that takes locks or subscribes. So in both functions, the
// callback that is replaced or removed is destroyed only after the mutex has been released.

void Subscribe(QcmapWrapper& wrapper, void* subscriber,
               std::function<void(mox::util::EventDic&)> callback) {
  if (Delivery::RunsOnThisThread()) {
    SYSLOG(LOG_ERR, "called from within a callback, ignored\n");
    return;
  }
  const std::lock_guard<Mutex> lock(wrapper.event_callbacks_mutex_);
  wrapper.event_callbacks_[subscriber].swap(callback);
}

void Unsubscribe(QcmapWrapper& wrapper, void* subscriber) {
  if (Delivery::RunsOnThisThread()) {
    SYSLOG(LOG_ERR, "called from within a callback, ignored\n");
    return;
  }
  decltype(wrapper.event_callbacks_)::node_type removed;
  const std::lock_guard<Mutex> lock(wrapper.event_callbacks_mutex_);
  removed = wrapper.event_callbacks_.extract(subscriber);
}

}  // namespace mox::vendor::qcom::qcmap
