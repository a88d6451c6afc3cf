/// The one object: its member classes, its creation and its end.
#include "mox/vendor/qcom/qcmap/qcmap_wrapper.h"

#include <ctime>

#include <qcmap_client.h>

#include "core/unlocked.h"

namespace mox::vendor::qcom::qcmap {

Mutex::Mutex() {
  pthread_mutex_init(&mutex_, nullptr);
}
Mutex::~Mutex() {
  pthread_mutex_destroy(&mutex_);
}
void Mutex::lock() {
  pthread_mutex_lock(&mutex_);
}
void Mutex::unlock() {
  pthread_mutex_unlock(&mutex_);
}

Condition::Condition() {
  pthread_condattr_t attributes;
  pthread_condattr_init(&attributes);
  pthread_condattr_setclock(&attributes, CLOCK_MONOTONIC);
  pthread_cond_init(&condition_, &attributes);
  pthread_condattr_destroy(&attributes);
}
Condition::~Condition() {
  pthread_cond_destroy(&condition_);
}

QcmapWrapper* QcmapWrapper::s_ins_ = nullptr;

QcmapWrapper* QcmapWrapper::GetInstance() {
  if (QcmapWrapper* instance = Load(s_ins_)) return instance;

  // Stored only when complete, so indications that arrive before that find no instance.
  auto* instance = new QcmapWrapper;
  Store(s_ins_, instance);
  return instance;
}

QcmapWrapper::QcmapWrapper() : connected_(false), client_(nullptr), profile_index_(0) {
  // The result does not matter: without a connection, every operation tries again.
  ConnectToQcmapIfNeeded();
}

QcmapWrapper::~QcmapWrapper() {
  delete client_;
}

}  // namespace mox::vendor::qcom::qcmap
