/// VLANs: limits of id and mode, and lists from the server.
#include <cstring>

#include "world.h"

namespace {

TEST(Vlan, JudgesTheIdBeforeTheMode) {
  // Mode, id, what is sent (none: refused), whether the mode is refused.
  const std::tuple<int, int, std::string, bool> rows[] = {
      {1, 2, "rndis0 2", false}, {3, 100, "eth0 100", false}, {2, 4094, "ecm0 4094", false},
      {3, 1, "", false},         {3, 4095, "", false},        {4, 4094, "", true},
      {3, -1, "", false},        {0, 65538, "", false},       {0, 2000, "", true}};
  for (const auto& [mode, id, sent, by_mode] : rows) {
    World world;
    MobileapManager::VlanConfig vlan = {mode, id, 5};
    EXPECT_EQ(world.wrapper.SetVlanConfig(vlan), !sent.empty());
    EXPECT_EQ(world.wrapper.DeleteVlanConfig(vlan), !sent.empty());
    const std::string bad_mode = "Cannot support tethering mode " + std::to_string(mode) + "\n";
    const std::string bad_id = "Invalid vlan id [" + std::to_string(id) + "]";
    const std::string rest = " remind vlan 0,1 and 4095 are reserved\n";
    const std::string parameter = "VlanConfig(mox::wwan::MobileapManager::VlanConfig&)";
    Lines requests = {"SetVLANConfig " + sent + " 0", "DeleteVLANConfig " + sent};
    Lines log = {
        Line(3, "bool @Set" + parameter, by_mode ? bad_mode : bad_id + rest),
        Line(3, "bool @Delete" + parameter, by_mode ? bad_mode : bad_id + ", please" + rest)};
    sent.empty() ? requests.clear() : log.clear();
    EXPECT_EQ(world.Sent(), requests) << "mode " << mode << " id " << id;
    EXPECT_EQ(TakeLog(), log);
  }
}

TEST(Vlan, ReadsNamesWithinTheirField) {
  const std::pair<const char*, int> names[] = {
      {"rndis0", 1}, {"ecm0", 2}, {"eth0", 3}, {"rndis01", 0},         {"eth01", 0},
      {"ETH0", 0},   {"", 0},     {"eth", 0},  {"0123456789abcdef", 0}};
  World world;
  auto& list = world.script.vlans;
  for (const auto& [name, mode] : names) {
    auto& entry = list.vlan_config[list.vlan_config_len++];
    std::memcpy(entry.iface_name, name, std::strlen(name));
    entry.vlan_id = static_cast<int16_t>(mode - 1);
  }
  list.vlan_config[2].iface_name[5] = 'x';  // behind the end of "eth0"
  std::vector<MobileapManager::VlanConfig> vlans(1);
  EXPECT_TRUE(world.wrapper.GetVlanConfigs(vlans));
  EXPECT_TRUE(world.wrapper.GetVlanConfigs(vlans));
  ASSERT_EQ(vlans.size(), 1 + 2 * std::size(names)) << "appended, twice";
  for (size_t i = 0; i < std::size(names); ++i) {
    const auto& [name, mode] = names[i];
    const auto& vlan = vlans[i + 1];
    EXPECT_EQ(Join(vlan.tethering_mode, vlan.vlan_id, vlan.profile_index), Join(mode, mode - 1, -1))
        << name;
  }
}

TEST(Vlan, ListHoldsAtMostItsCapacity) {
  for (const int count : {0, 1, 2000, 2001, 32768, 65535}) {
    World world;
    world.script.vlans.vlan_config_len = static_cast<uint16_t>(count);
    std::vector<MobileapManager::VlanConfig> vlans;
    EXPECT_TRUE(world.wrapper.GetVlanConfigs(vlans));
    EXPECT_EQ(vlans.size(), static_cast<size_t>(std::min(count, 2000)));
    world.script.Refuse("GetVLANConfig", 0);
    vlans.resize(1);
    EXPECT_TRUE(world.wrapper.GetVlanConfigs(vlans)) << "refused without an error";
    EXPECT_EQ(vlans.size(), 1u);
  }
}

}  // namespace
