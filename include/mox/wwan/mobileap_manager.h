/// Records of the Mobile AP manager: VLANs, their mapping to data profiles, and IP passthrough.
#pragma once

#include <cstdint>
#include <string>

namespace mox {
namespace wwan {

class MobileapManager {
 public:
  /// A VLAN on a tethering interface. Trivially copyable.
  struct VlanConfig {
    /// 1 is rndis0, 2 is ecm0, 3 is eth0. Read back as 0 for any other interface.
    int32_t tethering_mode = 0;
    /// IEEE 802.1Q VLAN id, 2 to 4094.
    int32_t vlan_id = 0;
    /// The index of the data profile that the VLAN is mapped to; negative means none.
    int32_t profile_index = -1;
  };

  /// A VLAN that is mapped to a data profile (PDN). Trivially copyable.
  struct VlanMapping {
    int32_t vlan_id = 0;
    /// The index of the profile, or -1 if that profile has been deleted.
    int32_t profile_index = -1;
  };

  enum class DeviceType : int32_t { USB_HOST = 1 };

  /// The host to which IP passthrough hands the WWAN address.
  struct IpPassthroughConfig {
    /// USB_HOST is the only supported kind of host; 0 until one has been read.
    DeviceType device_type = DeviceType{};
    /// Host name, at most 100 bytes; not a MAC address.
    std::string host_device_name;
    /// The server's state byte, unchanged. Written by reading, ignored by setting.
    uint8_t pt_state = 0;
  };
};

}  // namespace wwan
}  // namespace mox
