/// vlan: VLANs on the tethering interfaces.
#include "vlan.h"

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include "arguments.h"

namespace qcmapctl {
namespace {

struct VlanArguments {
  std::optional<int32_t> interface;
  int32_t vlan_id = 0;

  VlanConfig ToConfig() const { return {*interface, vlan_id, -1}; }
};

bool Contains(const std::vector<VlanConfig>& vlans, const VlanConfig& wanted) {
  return std::any_of(vlans.begin(), vlans.end(), [&wanted](const VlanConfig& vlan) {
    return vlan.tethering_mode == wanted.tethering_mode && vlan.vlan_id == wanted.vlan_id;
  });
}

std::string NameOf(const VlanConfig& vlan) {
  return std::string(InterfaceOf(vlan.tethering_mode)) + " VLAN " + std::to_string(vlan.vlan_id);
}

Report DescribeChange(const VlanConfig& vlan, const char* result) {
  Report report;
  report.text = NameOf(vlan) + " " + result + "\n";
  report.json["result"] = result;
  report.json["interface"] = InterfaceOf(vlan.tethering_mode);
  report.json["vlan_id"] = vlan.vlan_id;
  return report;
}

Report Add(Router& router, const VlanArguments& arguments) {
  VlanConfig vlan = arguments.ToConfig();
  if (!router.Wrapper().SetVlanConfig(vlan)) {
    router.RequireServer();
    throw CommandFailed(Contains(router.Vlans(), vlan) ? Failure::VLAN_EXISTS : Failure::REFUSED,
                        NameOf(vlan));
  }
  return DescribeChange(vlan, "added");
}

Report Delete(Router& router, const VlanArguments& arguments) {
  VlanConfig vlan = arguments.ToConfig();
  if (!router.Wrapper().DeleteVlanConfig(vlan)) {
    router.RequireServer();
    if (!Contains(router.Vlans(), vlan)) throw CommandFailed(Failure::NO_VLAN, NameOf(vlan));
    const std::vector<VlanMapping> mappings = router.Mappings();
    const bool mapped =
        std::any_of(mappings.begin(), mappings.end(),
                    [&vlan](const VlanMapping& m) { return m.vlan_id == vlan.vlan_id; });
    throw CommandFailed(mapped ? Failure::VLAN_MAPPED : Failure::REFUSED, NameOf(vlan));
  }
  return DescribeChange(vlan, "deleted");
}

}  // namespace

Report ListVlans(Router& router) {
  Report report{"", Json::array()};
  const std::vector<VlanConfig> vlans = router.Vlans();
  const std::vector<VlanMapping> mappings = router.Mappings();
  Table table({"INTERFACE", "VLAN", "PROFILE"});
  for (const VlanConfig& vlan : vlans) {
    const char* interface = InterfaceOf(vlan.tethering_mode);
    Json profiles = Json::array();
    std::string words;
    for (const VlanMapping& mapping : mappings) {
      if (mapping.vlan_id != vlan.vlan_id || mapping.profile_index < 0) continue;
      profiles.push_back(mapping.profile_index);
      words += (words.empty() ? "" : " ") + std::to_string(mapping.profile_index);
    }
    Json json;
    json["interface"] = interface == nullptr ? Json(nullptr) : Json(interface);
    json["vlan_id"] = vlan.vlan_id;
    json["profiles"] = profiles;
    report.json.push_back(json);
    table.AddRow({interface == nullptr ? "other" : interface, std::to_string(vlan.vlan_id),
                  words.empty() ? "none" : words});
  }
  report.text = vlans.empty() ? "no VLANs\n" : table.Render();
  return report;
}

void AddVlan(CommandLine& line) {
  const auto arguments = std::make_shared<VlanArguments>();
  CLI::App* vlan = line.AddObject("vlan", "VLANs on the tethering interfaces");
  line.AddVerb(vlan, "list", "List VLANs with the profiles that they are mapped to",
               [](Context& context) { return ListVlans(context.router); });
  CLI::App* add =
      line.AddVerb(vlan, "add", "Add a VLAN to an interface",
                   [arguments](Context& context) { return Add(context.router, *arguments); });
  CLI::App* remove =
      line.AddVerb(vlan, "delete", "Delete a VLAN from an interface",
                   [arguments](Context& context) { return Delete(context.router, *arguments); });
  for (CLI::App* verb : {add, remove}) {
    AddWord(verb, "INTERFACE", arguments->interface, InterfaceWords(),
            "rndis0 or 1, ecm0 or 2, eth0 or 3")
        ->required()
        ->option_text(" ");
    AddVlanId(verb, arguments->vlan_id);
  }
}

}  // namespace qcmapctl
