/// map: which profile's call carries the traffic of a VLAN (PDN-to-VLAN mapping).
#include <algorithm>

#include "arguments.h"
#include "objects.h"
#include "readings.h"

namespace qcmapctl {
namespace {

struct MapArguments {
  int32_t vlan_id = 0;
  std::optional<uint32_t> index;
};

bool IsMapped(const std::vector<VlanMapping>& mappings, const VlanConfig& wanted) {
  return std::any_of(mappings.begin(), mappings.end(), [&wanted](const VlanMapping& mapping) {
    return mapping.vlan_id == wanted.vlan_id &&
           (wanted.profile_index < 0 ? mapping.profile_index >= 0
                                     : mapping.profile_index == wanted.profile_index);
  });
}

/// Null for a profile that has been deleted.
Json ProfileOf(int32_t index) {
  return index < 0 ? Json() : Json(index);
}

Report ListMappings(Router& router) {
  Json list = Json::array();
  for (const VlanMapping& mapping : router.Mappings()) {
    list.push_back({{"vlan_id", mapping.vlan_id}, {"profile", ProfileOf(mapping.profile_index)}});
  }
  return {list, AsTable("no mappings")};
}

std::string NameOfMapping(const VlanConfig& vlan) {
  const std::string name = "VLAN " + std::to_string(vlan.vlan_id);
  return vlan.profile_index < 0
             ? name
             : name + " to " + ProfileName(static_cast<uint32_t>(vlan.profile_index));
}

Report DescribeMapping(const VlanConfig& vlan, const char* result) {
  return {
      {{"result", result}, {"vlan_id", vlan.vlan_id}, {"profile", ProfileOf(vlan.profile_index)}},
      AsSentence("mapping of VLAN {vlan_id}[ to profile {profile}] {result}")};
}

Report CreateMapping(Router& router, const MapArguments& arguments) {
  router.Policy(*arguments.index);
  VlanConfig vlan{0, arguments.vlan_id, static_cast<int32_t>(*arguments.index)};
  const bool granted = router.Wrapper().SetPdnToVlanMapping(vlan);
  const auto is_same_vlan = [&vlan](const auto& other) { return other.vlan_id == vlan.vlan_id; };
  router.Require(
      granted,
      [&] {
        const std::vector<VlanConfig> vlans = router.Vlans();
        if (std::none_of(vlans.begin(), vlans.end(), is_same_vlan)) return Failure::NO_VLAN;
        const std::vector<VlanMapping> mappings = router.Mappings();
        if (IsMapped(mappings, vlan)) return Failure::MAPPING_EXISTS;
        const bool mapped = std::any_of(mappings.begin(), mappings.end(), is_same_vlan);
        return mapped ? Failure::VLAN_MAPPED : Failure::REFUSED;
      },
      NameOfMapping(vlan));
  return DescribeMapping(vlan, "added");
}

Report DeleteMapping(Router& router, const MapArguments& arguments) {
  if (arguments.index) router.Policy(*arguments.index);
  VlanConfig vlan{0, arguments.vlan_id,
                  arguments.index ? static_cast<int32_t>(*arguments.index) : -1};
  if (!arguments.index) {
    // The library would look the mapping up by itself. It is looked up here so that the result can
    // name its profile.
    for (const VlanMapping& mapping : router.Mappings()) {
      if (mapping.vlan_id != vlan.vlan_id || mapping.profile_index < 0) continue;
      vlan.profile_index = mapping.profile_index;
      break;
    }
  }
  const bool granted = router.Wrapper().DeletePdnToVlanMapping(vlan);
  router.Require(
      granted,
      [&] { return IsMapped(router.Mappings(), vlan) ? Failure::REFUSED : Failure::NO_MAPPING; },
      NameOfMapping(vlan));
  return DescribeMapping(vlan, "deleted");
}

}  // namespace

void AddMap(CommandLine& line) {
  const auto arguments = std::make_shared<MapArguments>();
  CLI::App* map =
      line.AddObject("map", "Which profile's call carries a VLAN (PDN-to-VLAN mapping)");
  line.AddVerb(map, "list", "List mappings",
               [](Context& context) { return ListMappings(context.router); });
  CLI::App* add = line.AddVerb(
      map, "add", "Map a VLAN to a profile",
      [arguments](Context& context) { return CreateMapping(context.router, *arguments); });
  AddVlanId(add, arguments->vlan_id);
  AddIndex(add, arguments->index, "profile index", "PROFILE")->required();
  CLI::App* remove = line.AddVerb(map, "delete", "Delete a mapping", [arguments](Context& context) {
    return DeleteMapping(context.router, *arguments);
  });
  AddVlanId(remove, arguments->vlan_id);
  AddIndex(remove, arguments->index, "profile index; if missing, the VLAN's first mapping",
           "PROFILE");
}

}  // namespace qcmapctl
