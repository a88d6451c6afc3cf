/// What the server remembers of one client.
#pragma once

#include <cstdint>

namespace sim {

struct ClientState {
  /// The Mobile AP handle, never 0.
  uint32_t handle;
};

}  // namespace sim
