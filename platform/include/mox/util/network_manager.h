/// The seam to the device software's address utilities. Addresses are dotted quads.
#pragma once

#include <string>

namespace mox {
namespace util {

class __attribute__((visibility("default"))) NetworkManager {
 public:
  /// Whether `address` is acceptable in a LAN configuration. `flag` belongs to the device's own
  /// library; the stand-in does not use it.
  static bool IsValidAddress(std::string address, bool flag);

  /// Works out a DHCP range in the gateway's subnet. Returns false when the subnet has no room for
  /// a range; `start` and `end` then keep their values.
  static bool GetIpv4DhcpRange(std::string gateway, std::string netmask, std::string& start,
                               std::string& end);

  /// Whether `start` to `end` is an acceptable DHCP range for that gateway and netmask.
  static bool CheckIpv4DhcpRangeValidation(std::string gateway, std::string netmask,
                                           std::string start, std::string end);

  /// Whether `text` is a well-formed MAC address.
  static bool CheckIpv4MacValidation(std::string text);
};

}  // namespace util
}  // namespace mox
