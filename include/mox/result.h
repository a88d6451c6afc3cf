/// The result of operations that can fail in more than one way.
#pragma once

#include <cstdint>

namespace mox {

enum class Result : int32_t {
  /// The server accepted the request. ConnectBackhaul also returns it if the family is already up.
  SUCCESS = 0,
  /// No connection, no such profile, a family that the operation does not support, or a refusal.
  /// DisconnectBackhaul also returns it if the family is already down or its state cannot be read.
  FAILURE = 1,
  /// The IP family is outside IPV4, IPV6 and IPV4V6 (statistics only).
  INVALID_ARGUMENT = 11,
  /// The profile's call has no addresses.
  NO_NETWORK = 21,
  /// The call cannot be taken down in its present state.
  INCOMPATIBLE_STATE = 23,
};

}  // namespace mox
