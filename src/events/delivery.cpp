/// Whether subscribers' callbacks are running on a thread.
#include "events/delivery.h"

namespace mox::vendor::qcom::qcmap {

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

}  // namespace mox::vendor::qcom::qcmap
