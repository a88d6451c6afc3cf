/// map: which profile's call carries the traffic of a VLAN (PDN-to-VLAN mapping).
#include "map.h"

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include "arguments.h"

namespace qcmapctl {
namespace {

struct MapArguments {
  int32_t vlan_id = 0;
  std::optional<uint32_t> index;
};

bool Contains(const std::vector<VlanMapping>& mappings, const VlanConfig& wanted) {
  return std::any_of(mappings.begin(), mappings.end(), [&wanted](const VlanMapping& mapping) {
    return mapping.vlan_id == wanted.vlan_id &&
           (wanted.profile_index < 0 ? mapping.profile_index >= 0
                                     : mapping.profile_index == wanted.profile_index);
  });
}

Report List(Router& router) {
  Report report{"", Json::array()};
  Table table({"VLAN", "PROFILE"});
  const std::vector<VlanMapping> mappings = router.Mappings();
  for (const VlanMapping& mapping : mappings) {
    const bool known = mapping.profile_index >= 0;
    Json json;
    json["vlan_id"] = mapping.vlan_id;
    json["profile"] = known ? Json(mapping.profile_index) : Json(nullptr);
    report.json.push_back(json);
    table.AddRow({std::to_string(mapping.vlan_id),
                  known ? std::to_string(mapping.profile_index) : "deleted"});
  }
  report.text = mappings.empty() ? "no mappings\n" : table.Render();
  return report;
}

std::string NameOf(const VlanConfig& vlan) {
  const std::string name = "VLAN " + std::to_string(vlan.vlan_id);
  return vlan.profile_index < 0
             ? name
             : name + " to " + ProfileName(static_cast<uint32_t>(vlan.profile_index));
}

Report DescribeChange(const VlanConfig& vlan, const char* result) {
  Report report;
  report.text = "mapping of " + NameOf(vlan) + " " + result + "\n";
  report.json["result"] = result;
  report.json["vlan_id"] = vlan.vlan_id;
  report.json["profile"] = vlan.profile_index < 0 ? Json(nullptr) : Json(vlan.profile_index);
  return report;
}

Report Add(Router& router, const MapArguments& arguments) {
  router.Policy(*arguments.index);
  VlanConfig vlan{0, arguments.vlan_id, static_cast<int32_t>(*arguments.index)};
  if (!router.Wrapper().SetPdnToVlanMapping(vlan)) {
    router.RequireServer();
    const std::vector<VlanConfig> vlans = router.Vlans();
    const bool vlan_exists = std::any_of(vlans.begin(), vlans.end(), [&vlan](const VlanConfig& v) {
      return v.vlan_id == vlan.vlan_id;
    });
    if (!vlan_exists) throw CommandFailed(Failure::NO_VLAN, "VLAN " + std::to_string(vlan.vlan_id));
    const std::vector<VlanMapping> mappings = router.Mappings();
    if (Contains(mappings, vlan)) throw CommandFailed(Failure::MAPPING_EXISTS, NameOf(vlan));
    const bool mapped_elsewhere =
        std::any_of(mappings.begin(), mappings.end(),
                    [&vlan](const VlanMapping& m) { return m.vlan_id == vlan.vlan_id; });
    throw CommandFailed(mapped_elsewhere ? Failure::VLAN_MAPPED : Failure::REFUSED, NameOf(vlan));
  }
  return DescribeChange(vlan, "added");
}

Report Delete(Router& router, const MapArguments& arguments) {
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
  if (!router.Wrapper().DeletePdnToVlanMapping(vlan)) {
    router.RequireServer();
    throw CommandFailed(Contains(router.Mappings(), vlan) ? Failure::REFUSED : Failure::NO_MAPPING,
                        NameOf(vlan));
  }
  return DescribeChange(vlan, "deleted");
}

}  // namespace

void AddMap(CommandLine& line) {
  const auto arguments = std::make_shared<MapArguments>();
  CLI::App* map =
      line.AddObject("map", "Which profile's call carries a VLAN (PDN-to-VLAN mapping)");
  line.AddVerb(map, "list", "List mappings", [](Context& context) { return List(context.router); });
  CLI::App* add =
      line.AddVerb(map, "add", "Map a VLAN to a profile",
                   [arguments](Context& context) { return Add(context.router, *arguments); });
  AddVlanId(add, arguments->vlan_id);
  AddIndex(add, arguments->index, "profile index", "PROFILE")->required();
  CLI::App* remove = line.AddVerb(map, "delete", "Delete a mapping", [arguments](Context& context) {
    return Delete(context.router, *arguments);
  });
  AddVlanId(remove, arguments->vlan_id);
  AddIndex(remove, arguments->index, "profile index; if missing, the VLAN's first mapping",
           "PROFILE");
}

}  // namespace qcmapctl
