/// Prints the model, line by line.
#include "server/show.h"

#include <cstdio>
#include <sstream>

#include "records/printer.h"
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

using seam::Printer;

void PutFamily(Printer& printer, std::string& line, const Modem& modem, const Profile& profile,
               FamilyIndex family) {
  line += family == kIpv4 ? ",\"ipv4\":{" : ",\"ipv6\":{";
  printer.Member("enabled", profile.families[family].enabled);
  printer.Member("status", profile.Status(family));
  const auto bytes = modem.Count(profile.families[family]);
  printer.Member("received_bytes", bytes[0]);
  printer.Member("sent_bytes", bytes[1]);
  line += '}';
}

template <typename Entry>
seam::Entries<const Entry> EntriesOf(const std::vector<Entry>& entries) {
  return {entries.data(), entries.size()};
}

}  // namespace

std::string ModelAsJson(Model& model) {
  std::string line = "{";
  Printer printer(line);
  const Modem& modem = model.modem;
  printer.Member("mobile_ap", modem.mobile_ap_enabled());
  printer.Member("network", modem.network());
  printer.Member("roaming", modem.roaming());
  line += ",\"profiles\":[";
  for (const Profile& profile : model.modem.profiles()) {
    line += line.back() == '[' ? "{" : ",{";
    printer.Member("handle", profile.handle);
    printer.Member("policy", profile.policy);
    printer.Member("autoconnect", profile.autoconnect);
    printer.Member("roaming", profile.roaming);
    for (const FamilyIndex family : kFamilies) PutFamily(printer, line, modem, profile, family);
    line += '}';
  }
  line += ']';
  const Lan& lan = model.lan;
  printer.Member("lan", lan.config);
  printer.Member("lan_active", lan.active);
  printer.Member("vlans", EntriesOf(lan.vlans));
  printer.Member("mappings", EntriesOf(lan.mappings));
  line += ",\"passthrough\":{";
  printer.Member("mode", lan.passthrough.mode);
  printer.Member("config", lan.passthrough.config);
  return line + "}}\n";
}

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
