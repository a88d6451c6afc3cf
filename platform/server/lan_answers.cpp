/// Answers to the requests about the LAN side: LAN, VLANs, PDN-to-VLAN mappings, IP passthrough.
#include <algorithm>

#include "numbers/ipv4_subnet.h"
#include "server/requests.h"

namespace sim {
namespace {

using LanConfig = qcmap_msgr_lan_config_v01;
using Mapping = qcmap_msgr_pdn_to_vlan_mapping_v01;
using Vlan = qcmap_msgr_vlan_config_v01;

/// Any lease time is valid. Without DHCP any range is valid too.
bool IsValid(const LanConfig& lan) {
  const auto subnet = Ipv4Subnet::Of(lan.gw_ip, lan.netmask);
  if (!subnet || lan.enable_dhcp > 1) return false;
  return lan.enable_dhcp == 0 || subnet->AllowsDhcpRange({lan.dhcp_start_ip, lan.dhcp_end_ip});
}

template <size_t kSize>
bool IsTerminated(const char (&field)[kSize]) {
  return std::memchr(field, '\0', kSize) != nullptr;
}

bool IsValid(const Vlan& vlan) {
  return vlan.vlan_id >= 2 && vlan.vlan_id <= 4094 && IsTerminated(vlan.iface_name) &&
         vlan.iface_name[0] != '\0';
}

class LanAnswers {
 public:
  LanAnswers(Model& model, Caller&)
      : lan_(model.lan), vlans_(lan_.vlans), mappings_(lan_.mappings), modem_(model.modem) {}
  explicit operator bool() const { return true; }

  Error GetLANConfig(const Nothing&, LanConfig& config) {
    config = lan_.config;
    return kGranted;
  }
  Error SetLANConfig(const LanConfig& config, Nothing&) {
    if (!IsValid(config)) return QMI_ERR_INVALID_ARG_V01;
    lan_.config = config;
    lan_.active = false;
    return kGranted;
  }
  Error ActivateLAN(const Nothing&, Nothing&) {
    lan_.active = true;
    return kGranted;
  }

  Error SetVLANConfig(const Vlan& vlan, uint8_t&) {
    if (!IsValid(vlan)) return QMI_ERR_INVALID_ARG_V01;
    if (Find(vlan) != vlans_.end()) return QMI_ERR_NO_EFFECT_V01;
    if (vlans_.size() == QCMAP_MSGR_MAX_VLAN_ENTRIES_V01) return QMI_ERR_NO_MEMORY_IN_LIST_V01;
    vlans_.push_back(vlan);
    return kGranted;
  }
  Error DeleteVLANConfig(const Vlan& vlan, Nothing&) {
    if (!IsValid(vlan) || Find(vlan) == vlans_.end()) return QMI_ERR_INVALID_ARG_V01;
    if (FindMapping(vlan.vlan_id) != mappings_.end()) return QMI_ERR_INCOMPATIBLE_STATE_V01;
    vlans_.erase(Find(vlan));
    return kGranted;
  }
  Error GetVLANConfig(const Nothing&, VlanList& list) {
    for (const Vlan& vlan : vlans_) list.vlan_config[list.vlan_config_len++] = vlan;
    return kGranted;
  }

  // A VLAN is mapped to one profile at a time.
  Error AddPDNToVLANMapping(const Mapping& mapping, Nothing&) {
    const auto has_id = [&](const Vlan& vlan) { return vlan.vlan_id == mapping.vlan_id; };
    if (modem_.Find(mapping.profile_handle) == nullptr) return QMI_ERR_INVALID_HANDLE_V01;
    if (std::none_of(vlans_.begin(), vlans_.end(), has_id)) return QMI_ERR_INVALID_ARG_V01;
    const auto bound = FindMapping(mapping.vlan_id);
    if (bound != mappings_.end())
      return bound->profile_handle == mapping.profile_handle ? QMI_ERR_NO_EFFECT_V01
                                                             : QMI_ERR_INCOMPATIBLE_STATE_V01;
    if (mappings_.size() == QCMAP_MSGR_MAX_MAPPINGS_V01) return QMI_ERR_NO_MEMORY_IN_LIST_V01;
    mappings_.push_back(mapping);
    return kGranted;
  }
  Error DeletePDNToVLANMapping(const Mapping& mapping, Nothing&) {
    if (modem_.Find(mapping.profile_handle) == nullptr) return QMI_ERR_INVALID_HANDLE_V01;
    const auto bound = FindMapping(mapping.vlan_id);
    if (bound == mappings_.end() || bound->profile_handle != mapping.profile_handle)
      return QMI_ERR_INVALID_ARG_V01;
    mappings_.erase(bound);
    return kGranted;
  }
  Error GetPDNtoVLANMappings(const Nothing&, MappingList& list) {
    for (const Mapping& mapping : mappings_) list.mappings[list.count++] = mapping;
    return kGranted;
  }

  Error SetIPPassthroughConfig(const Passthrough& passthrough, Nothing&) {
    const bool disables = passthrough.mode == QCMAP_MSGR_IP_PASSTHROUGH_MODE_DISABLE_V01;
    if ((!disables && passthrough.mode != QCMAP_MSGR_IP_PASSTHROUGH_MODE_ENABLE_V01) ||
        !IsTerminated(passthrough.config.device_name))
      return QMI_ERR_INVALID_ARG_V01;
    lan_.passthrough = passthrough;
    return kGranted;
  }
  Error GetIPPassthroughConfig(const Nothing&, Passthrough& passthrough) {
    passthrough = lan_.passthrough;
    return kGranted;
  }
  // 0: off; 1: on, waiting for a call; 2: the host has the address of an IPv4 call.
  Error GetIPPassthroughState(const Nothing&, uint8_t& state) {
    if (lan_.passthrough.mode == QCMAP_MSGR_IP_PASSTHROUGH_MODE_DISABLE_V01) return kGranted;
    state = 1;
    for (const Profile& profile : modem_.profiles())
      if (profile.families[kIpv4].IsUp()) state = 2;
    return kGranted;
  }

 private:
  std::vector<Vlan>::iterator Find(const Vlan& vlan) {
    return std::find_if(vlans_.begin(), vlans_.end(), [&](const Vlan& other) {
      return other.vlan_id == vlan.vlan_id && std::strcmp(other.iface_name, vlan.iface_name) == 0;
    });
  }
  std::vector<Mapping>::iterator FindMapping(int16_t vlan_id) {
    return std::find_if(mappings_.begin(), mappings_.end(),
                        [&](const Mapping& mapping) { return mapping.vlan_id == vlan_id; });
  }

  Lan& lan_;
  std::vector<Vlan>& vlans_;
  std::vector<Mapping>& mappings_;
  Modem& modem_;
};

}  // namespace

AnswerFunction FindLanAnswer(uint32_t id) {
  switch (id) {
#define SIM_CASE(name, request, reply) \
  case message::name::kId:             \
    return AnswerWith<message::name, LanAnswers, &LanAnswers::name>;
    SIM_LAN_MESSAGES(SIM_CASE)
#undef SIM_CASE
    default:
      return nullptr;
  }
}

}  // namespace sim
