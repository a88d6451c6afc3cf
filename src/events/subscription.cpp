/// Subscribing to events.
#include "mox/vendor/qcom/qcmap/subscription.h"

#include <mutex>
#include <utility>

#include "core/log.h"
#include "events/delivery.h"

namespace mox {
namespace vendor {
namespace qcom {
namespace qcmap {

namespace {

// Of the initial-exec model, so that reading it calls into no other library and allocates nothing.
[[gnu::tls_model("initial-exec")]] thread_local bool runs_on_this_thread = false;

}  // namespace

Delivery::Delivery() {
  runs_on_this_thread = true;
}
Delivery::~Delivery() {
  runs_on_this_thread = false;
}
bool Delivery::RunsOnThisThread() {
  return runs_on_this_thread;
}

// What a callback owns may take locks or subscribe when it goes: in both functions the callback
// that is replaced or removed outlives the lock.

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

}  // namespace qcmap
}  // namespace qcom
}  // namespace vendor
}  // namespace mox
