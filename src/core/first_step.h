/// The first step of every operation: the connection and the profile.
#pragma once

#include "core/unlocked.h"
#include "mox/vendor/qcom/qcmap/qcmap_wrapper.h"

namespace mox::vendor::qcom::qcmap {

inline bool QcmapWrapper::Connect() {
  return Load(connected_) || ConnectToQcmapIfNeeded();
}

inline bool QcmapWrapper::Select(uint32_t index) {
  return (Load(connected_) && index == Load(profile_index_)) || ChangeWwanProfile(index);
}

}  // namespace mox::vendor::qcom::qcmap
