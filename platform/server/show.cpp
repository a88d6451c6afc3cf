/// Prints the model, line by line.
#include "server/show.h"

#include <cstdio>
#include <sstream>

#include "server/printable.h"

namespace sim {
namespace {

const char* OnOff(bool on) {
  return on ? "on" : "off";
}

std::string Hex(uint32_t address) {
  char text[sizeof "0x12345678"];
  std::snprintf(text, sizeof text, "0x%08x", address);
  return text;
}

}  // namespace

std::string ModelAsText(Model& model) {
  std::ostringstream out;
  Modem& modem = model.modem;
  out << "mobile ap " << OnOff(modem.mobile_ap_enabled()) << ", network " << OnOff(modem.network())
      << ", roaming " << OnOff(modem.roaming()) << '\n';
  size_t index = 0;
  for (const Profile& profile : modem.profiles()) {
    out << "profile " << index++ << ": handle " << profile.handle << ", autoconnect "
        << OnOff(profile.autoconnect) << ", roaming " << OnOff(profile.roaming) << '\n';
    for (const FamilyIndex family : kFamilies)
      out << "  IPv" << (family == kIpv4 ? '4' : '6') << ": "
          << OnOff(profile.families[family].enabled) << ", status " << profile.Status(family)
          << '\n';
  }
  const Lan& lan = model.lan;
  out << "lan: gateway " << Hex(lan.config.gw_ip) << ", netmask " << Hex(lan.config.netmask)
      << ", dhcp " << OnOff(lan.config.enable_dhcp) << ", " << (lan.active ? "active" : "pending")
      << '\n';
  for (const auto& vlan : lan.vlans)
    out << "vlan " << vlan.vlan_id << " on " << Printable(vlan.iface_name) << '\n';
  for (const auto& mapping : lan.mappings)
    out << "vlan " << mapping.vlan_id << " mapped to handle " << mapping.profile_handle << '\n';
  out << "passthrough: mode " << lan.passthrough.mode << ", host '"
      << Printable(lan.passthrough.config.device_name) << "'\n";
  return out.str();
}

}  // namespace sim
