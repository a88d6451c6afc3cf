/// Answers to the requests about the LAN side: LAN and DHCP, VLANs, their mapping, IP passthrough.
#include <arpa/inet.h>

#include <algorithm>

#include "mox/util/network_manager.h"
#include "server/requests.h"

namespace sim {
namespace {

using mox::util::NetworkManager;
using Mapping = qcmap_msgr_pdn_to_vlan_mapping_v01;
using Vlan = qcmap_msgr_vlan_config_v01;

std::string ToText(uint32_t address) {
  char text[INET_ADDRSTRLEN];
  const in_addr in_network_order{htonl(address)};
  return ::inet_ntop(AF_INET, &in_network_order, text, sizeof text);
}

bool IsSound(const qcmap_msgr_lan_config_v01& lan) {
  const std::string gateway = ToText(lan.gw_ip), netmask = ToText(lan.netmask);
  std::string start, end;
  if (lan.enable_dhcp > 1) return false;
  return lan.enable_dhcp == 1
             ? NetworkManager::CheckIpv4DhcpRangeValidation(
                   gateway, netmask, ToText(lan.dhcp_start_ip), ToText(lan.dhcp_end_ip))
             : NetworkManager::GetIpv4DhcpRange(gateway, netmask, start, end);
}

template <size_t kSize>
bool IsTerminated(const char (&field)[kSize]) {
  return std::memchr(field, '\0', kSize) != nullptr;
}

bool IsSound(const Vlan& vlan) {
  return vlan.vlan_id >= 2 && vlan.vlan_id <= 4094 && IsTerminated(vlan.iface_name) &&
         vlan.iface_name[0] != '\0';
}

auto Find(Lan& lan, const Vlan& vlan) {
  return std::find_if(lan.vlans.begin(), lan.vlans.end(), [&](const Vlan& other) {
    return other.vlan_id == vlan.vlan_id && std::strcmp(other.iface_name, vlan.iface_name) == 0;
  });
}

auto FindMapping(Lan& lan, int16_t vlan_id) {
  return std::find_if(lan.mappings.begin(), lan.mappings.end(),
                      [&](const Mapping& mapping) { return mapping.vlan_id == vlan_id; });
}

}  // namespace

namespace answer {

Error GetLANConfig(Model& model, Session&, const Nothing&, qcmap_msgr_lan_config_v01& config) {
  config = model.lan.config;
  return QMI_ERR_NONE_V01;
}

Error SetLANConfig(Model& model, Session&, const qcmap_msgr_lan_config_v01& config, Nothing&) {
  if (!IsSound(config)) return QMI_ERR_INVALID_ARG_V01;
  model.lan.config = config;
  model.lan.active = false;
  return QMI_ERR_NONE_V01;
}

Error ActivateLAN(Model& model, Session&, const Nothing&, Nothing&) {
  model.lan.active = true;
  return QMI_ERR_NONE_V01;
}

Error SetVLANConfig(Model& model, Session&, const Vlan& vlan, uint8_t&) {
  auto& vlans = model.lan.vlans;
  if (!IsSound(vlan)) return QMI_ERR_INVALID_ARG_V01;
  if (Find(model.lan, vlan) != vlans.end()) return QMI_ERR_NO_EFFECT_V01;
  if (vlans.size() == QCMAP_MSGR_MAX_VLAN_ENTRIES_V01) return QMI_ERR_NO_MEMORY_IN_LIST_V01;
  vlans.push_back(vlan);
  return QMI_ERR_NONE_V01;
}

Error DeleteVLANConfig(Model& model, Session&, const Vlan& vlan, Nothing&) {
  if (!IsSound(vlan)) return QMI_ERR_INVALID_ARG_V01;
  const auto found = Find(model.lan, vlan);
  if (found == model.lan.vlans.end()) return QMI_ERR_INVALID_ARG_V01;
  if (FindMapping(model.lan, vlan.vlan_id) != model.lan.mappings.end())
    return QMI_ERR_INCOMPATIBLE_STATE_V01;
  model.lan.vlans.erase(found);
  return QMI_ERR_NONE_V01;
}

Error GetVLANConfig(Model& model, Session&, const Nothing&, VlanList& list) {
  for (const Vlan& vlan : model.lan.vlans) list.vlan_config[list.vlan_config_len++] = vlan;
  return QMI_ERR_NONE_V01;
}

// A VLAN is bound to one profile at a time.
Error AddPDNToVLANMapping(Model& model, Session&, const Mapping& mapping, Nothing&) {
  auto& [config, active, vlans, mappings, passthrough] = model.lan;
  if (model.modem.Find(mapping.profile_handle) == nullptr) return QMI_ERR_INVALID_HANDLE_V01;
  if (std::none_of(vlans.begin(), vlans.end(),
                   [&](const Vlan& vlan) { return vlan.vlan_id == mapping.vlan_id; }))
    return QMI_ERR_INVALID_ARG_V01;
  const auto bound = FindMapping(model.lan, mapping.vlan_id);
  if (bound != mappings.end())
    return bound->profile_handle == mapping.profile_handle ? QMI_ERR_NO_EFFECT_V01
                                                           : QMI_ERR_INCOMPATIBLE_STATE_V01;
  if (mappings.size() == QCMAP_MSGR_MAX_MAPPINGS_V01) return QMI_ERR_NO_MEMORY_IN_LIST_V01;
  mappings.push_back(mapping);
  return QMI_ERR_NONE_V01;
}

Error DeletePDNToVLANMapping(Model& model, Session&, const Mapping& mapping, Nothing&) {
  if (model.modem.Find(mapping.profile_handle) == nullptr) return QMI_ERR_INVALID_HANDLE_V01;
  const auto bound = FindMapping(model.lan, mapping.vlan_id);
  if (bound == model.lan.mappings.end() || bound->profile_handle != mapping.profile_handle)
    return QMI_ERR_INVALID_ARG_V01;
  model.lan.mappings.erase(bound);
  return QMI_ERR_NONE_V01;
}

Error GetPDNtoVLANMappings(Model& model, Session&, const Nothing&, MappingList& list) {
  for (const Mapping& mapping : model.lan.mappings) list.mappings[list.count++] = mapping;
  return QMI_ERR_NONE_V01;
}

Error SetIPPassthroughConfig(Model& model, Session&, const Passthrough& passthrough, Nothing&) {
  const bool enables = passthrough.mode == QCMAP_MSGR_IP_PASSTHROUGH_MODE_ENABLE_V01;
  const bool disables = passthrough.mode == QCMAP_MSGR_IP_PASSTHROUGH_MODE_DISABLE_V01;
  if ((!enables && !disables) || !IsTerminated(passthrough.config.device_name))
    return QMI_ERR_INVALID_ARG_V01;
  model.lan.passthrough = passthrough;
  return QMI_ERR_NONE_V01;
}

Error GetIPPassthroughConfig(Model& model, Session&, const Nothing&, Passthrough& passthrough) {
  passthrough = model.lan.passthrough;
  return QMI_ERR_NONE_V01;
}

// 0: off; 1: on, waiting for a call; 2: the host has the address of an IPv4 call.
Error GetIPPassthroughState(Model& model, Session&, const Nothing&, uint8_t& state) {
  const auto& profiles = model.modem.profiles();
  const bool has_address =
      std::any_of(profiles.begin(), profiles.end(),
                  [](const Profile& profile) { return profile.families[kIpv4].IsUp(); });
  const bool is_on = model.lan.passthrough.mode == QCMAP_MSGR_IP_PASSTHROUGH_MODE_ENABLE_V01;
  state = static_cast<uint8_t>(is_on ? 1 + has_address : 0);
  return QMI_ERR_NONE_V01;
}

}  // namespace answer
}  // namespace sim
