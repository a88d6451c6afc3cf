/// Tells whether the calling thread is running subscribers' callbacks.
#include "events/delivery.h"

namespace mox::vendor::qcom::qcmap {

namespace {

// The initial-exec model lets the library read it without calling the loader or allocating.
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
