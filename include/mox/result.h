/// Result of the operations that tell more than success and failure.
#pragma once

#include <cstdint>

namespace mox {

enum class Result : int32_t {
  /// The request was granted; of ConnectBackhaul also: the family was connected already.
  SUCCESS = 0,
  /// No server, no such profile, a family the operation does not support, or a refusal; of
  /// DisconnectBackhaul also: the family is disconnected already, or its state cannot be read.
  FAILURE = 1,
  /// The IP family is outside IPV4, IPV6 and IPV4V6 (statistics only).
  INVALID_ARGUMENT = 11,
  /// The profile's call has no network, so there are no addresses to read.
  NO_NETWORK = 21,
  /// The call is in no state to be taken down.
  INCOMPATIBLE_STATE = 23,
};

}  // namespace mox
