/// What several commands show of the router, as data.
#include "readings.h"

namespace qcmapctl {

Json OfProfiles(Router& router, const std::optional<uint32_t>& index,
                const std::function<Json(const Profile&)>& read) {
  Json list = Json::array();
  for (const Profile& profile : router.Profiles(index)) list.push_back(read(profile));
  return index ? list.at(0) : list;
}

Json DataOf(const Profile& profile) {
  return {{"index", profile.index},
          {"handle", profile.policy.profile_handle},
          {"tech", WordOf(profile.policy.tech)},
          {"family", WordOf(profile.policy.ip_family)},
          {"profile_v4", profile.policy.profile_v4},
          {"profile_v6", profile.policy.profile_v6}};
}

Json DataOf(const LanConfig& lan) {
  return {{"gateway", lan.gateway}, {"netmask", lan.netmask}, {"dhcp", lan.dhcp},
          {"start", lan.start},     {"end", lan.end},         {"lease", lan.lease}};
}

Json DataOf(const std::vector<std::string>& addresses) {
  return addresses.empty() ? Json() : Json(addresses);
}

Json ReadVlans(Router& router) {
  Json list = Json::array();
  const std::vector<VlanConfig> vlans = router.Vlans();
  const std::vector<VlanMapping> mappings = router.Mappings();
  for (const VlanConfig& vlan : vlans) {
    Json profiles = Json::array();
    for (const VlanMapping& mapping : mappings) {
      if (mapping.vlan_id != vlan.vlan_id || mapping.profile_index < 0) continue;
      profiles.push_back(mapping.profile_index);
    }
    list.push_back({{"interface", InterfaceOf(vlan.tethering_mode)},
                    {"vlan_id", vlan.vlan_id},
                    {"profiles", profiles}});
  }
  return list;
}

Json ReadPassthrough(Router& router) {
  bool enabled = false;
  const Passthrough config = router.PassthroughConfig(enabled);
  const bool has_host = config.device_type == mox::wwan::MobileapManager::DeviceType::USB_HOST;
  return {{"enabled", enabled},
          {"host", has_host ? Json(config.host_device_name) : Json()},
          {"state", config.pt_state}};
}

}  // namespace qcmapctl
