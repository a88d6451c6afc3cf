/// vlan: VLANs on the tethering interfaces.
#include <algorithm>
#include <set>

#include "arguments.h"
#include "objects.h"
#include "readings.h"

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
  return InterfaceOf(vlan.tethering_mode) + " VLAN " + std::to_string(vlan.vlan_id);
}

Report DescribeChange(const VlanConfig& vlan, const char* result) {
  return {{{"result", result},
           {"interface", InterfaceOf(vlan.tethering_mode)},
           {"vlan_id", vlan.vlan_id}},
          AsSentence("{interface} VLAN {vlan_id} {result}")};
}

Report CreateVlan(Router& router, const VlanArguments& arguments) {
  VlanConfig vlan = arguments.ToConfig();
  const bool granted = router.Wrapper().SetVlanConfig(vlan);
  router.Require(
      granted,
      [&] { return Contains(router.Vlans(), vlan) ? Failure::VLAN_EXISTS : Failure::REFUSED; },
      NameOf(vlan));
  return DescribeChange(vlan, "added");
}

Report DeleteVlan(Router& router, const VlanArguments& arguments) {
  VlanConfig vlan = arguments.ToConfig();
  const bool granted = router.Wrapper().DeleteVlanConfig(vlan);
  router.Require(
      granted,
      [&] {
        if (!Contains(router.Vlans(), vlan)) return Failure::NO_VLAN;
        const std::vector<VlanMapping> mappings = router.Mappings();
        const bool mapped = std::any_of(mappings.begin(), mappings.end(), [&](const auto& mapping) {
          return mapping.vlan_id == vlan.vlan_id;
        });
        return mapped ? Failure::VLAN_MAPPED : Failure::REFUSED;
      },
      NameOf(vlan));
  return DescribeChange(vlan, "deleted");
}

std::vector<std::string> InterfacesInUse(Router& router) {
  std::set<std::string> names;
  for (const VlanConfig& vlan : router.Vlans()) names.insert(InterfaceOf(vlan.tethering_mode));
  return {names.begin(), names.end()};
}

}  // namespace

void AddVlan(CommandLine& line) {
  const auto arguments = std::make_shared<VlanArguments>();
  CLI::App* vlan = line.AddObject("vlan", "VLANs on the tethering interfaces");
  line.AddVerb(vlan, "list", "List VLANs with the profiles that they are mapped to",
               [](Context& context) {
                 return Report{ReadVlans(context.router), AsTable("no VLANs")};
               });
  CLI::App* add = line.AddVerb(
      vlan, "add", "Add a VLAN to an interface",
      [arguments](Context& context) { return CreateVlan(context.router, *arguments); });
  CLI::App* remove = line.AddVerb(
      vlan, "delete", "Delete a VLAN from an interface",
      [arguments](Context& context) { return DeleteVlan(context.router, *arguments); });
  for (CLI::App* verb : {add, remove}) {
    CLI::Option* interface = AddWord(verb, "INTERFACE", arguments->interface, InterfaceWords(),
                                     "rndis0 or 1, ecm0 or 2, eth0 or 3");
    interface->required()->option_text(" ");
    if (verb == remove) SetCandidates(interface, InterfacesInUse);
    AddVlanId(verb, arguments->vlan_id);
  }
}

}  // namespace qcmapctl
