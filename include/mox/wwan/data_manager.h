/// Records of the WWAN data manager: policies, call states and addresses.
#pragma once

#include <cstdint>
#include <string>

#include "mox/util/ip_family.h"
#include "mox/wwan/tech.h"

namespace mox {
namespace wwan {

class DataManager {
 public:
  /// A WWAN policy, which defines one data profile. Trivially copyable.
  struct WwanPolicy {
    /// The modem's profile numbers for the IPv4 and IPv6 PDN connections, 0 to 255.
    int32_t profile_v4 = 0;
    int32_t profile_v6 = 0;
    Tech tech = Tech::ANY;
    util::IPFamily ip_family = util::IPFamily::NONE;
    /// The server's identifier of the policy, or 0xFFFFFFFF if the operation does not report it.
    uint32_t profile_handle = 0;
  };

  /// The state of one IP family of a profile's data call.
  enum class ConnectStatus : int32_t {
    /// The last attempt to connect or disconnect failed, or the server's code is unknown.
    UNKNOWN = 0,
    CONNECTING = 1,
    CONNECTED = 2,
    DISCONNECTING = 3,
    DISCONNECTED = 4,
  };

  /// The addresses of one IP family of a profile's data call, as text, in the server's order.
  struct NetworkConfig {
    /// IPV4 or IPV6 after a successful read, otherwise NONE.
    util::IPFamily ip_family = util::IPFamily::NONE;
    std::string address_1;
    std::string address_2;
    std::string address_3;
  };
};

}  // namespace wwan
}  // namespace mox
