/// What the server remembers of one client.
#pragma once

#include "protocol/messages.h"

namespace sim {

struct ClientState {
  /// The Mobile AP handle, never 0.
  uint32_t handle;
  /// Handle of the current profile. 0 until the first per-profile request, which selects the first
  /// profile in the list.
  profile_handle_type_v01 profile = 0;
};

}  // namespace sim
