/// VLANs: limits of id and mode, and lists from the server.
#include <cstring>

#include "world.h"

namespace {

TEST(Vlan, JudgesTheIdBeforeTheMode) {
  enum class Verdict { SENT, BAD_ID, BAD_MODE };
  struct Row {
    int mode;
    int id;
    Verdict verdict;
    std::string sent = "";
  };
  const Row rows[] = {{1, 2, Verdict::SENT, "rndis0 2"},
                      {3, 100, Verdict::SENT, "eth0 100"},
                      {2, 4094, Verdict::SENT, "ecm0 4094"},
                      {3, 1, Verdict::BAD_ID},
                      {3, 4095, Verdict::BAD_ID},
                      {4, 4094, Verdict::BAD_MODE},
                      {3, -1, Verdict::BAD_ID},
                      {0, 65538, Verdict::BAD_ID},
                      {0, 2000, Verdict::BAD_MODE}};
  for (const Row& row : rows) {
    SCOPED_TRACE(Join("mode", row.mode, "id", row.id));
    World world;
    MobileapManager::VlanConfig vlan = {row.mode, row.id, 5};
    const bool is_sent = row.verdict == Verdict::SENT;
    EXPECT_EQ(world.wrapper.SetVlanConfig(vlan), is_sent);
    EXPECT_EQ(world.wrapper.DeleteVlanConfig(vlan), is_sent);
    const bool by_mode = row.verdict == Verdict::BAD_MODE;
    const std::string bad_mode = "Cannot support tethering mode " + std::to_string(row.mode) + "\n";
    const std::string bad_id = "Invalid vlan id [" + std::to_string(row.id) + "]";
    const std::string rest = " remind vlan 0,1 and 4095 are reserved\n";
    const std::string parameter = "VlanConfig(mox::wwan::MobileapManager::VlanConfig&)";
    Lines requests = {"SetVLANConfig " + row.sent + " 0", "DeleteVLANConfig " + row.sent};
    Lines log = {
        Line(3, "bool @Set" + parameter, by_mode ? bad_mode : bad_id + rest),
        Line(3, "bool @Delete" + parameter, by_mode ? bad_mode : bad_id + ", please" + rest)};
    is_sent ? log.clear() : requests.clear();
    EXPECT_EQ(world.Sent(), requests);
    EXPECT_EQ(TakeLog(), log);
  }
}

TEST(Vlan, ReadsNamesWithinTheirField) {
  struct Row {
    const char* name;
    int mode;
  };
  const Row rows[] = {{"rndis0", 1}, {"ecm0", 2}, {"eth0", 3}, {"rndis01", 0},         {"eth01", 0},
                      {"ETH0", 0},   {"", 0},     {"eth", 0},  {"0123456789abcdef", 0}};
  World world;
  auto& list = world.script.vlans;
  for (const Row& row : rows) {
    auto& entry = list.vlan_config[list.vlan_config_len++];
    std::memcpy(entry.iface_name, row.name, std::strlen(row.name));
    entry.vlan_id = static_cast<int16_t>(row.mode - 1);
  }
  list.vlan_config[2].iface_name[5] = 'x';  // behind the end of "eth0"
  std::vector<MobileapManager::VlanConfig> vlans(1);
  EXPECT_TRUE(world.wrapper.GetVlanConfigs(vlans));
  EXPECT_TRUE(world.wrapper.GetVlanConfigs(vlans));
  ASSERT_EQ(vlans.size(), 1 + 2 * std::size(rows)) << "appended, twice";
  for (size_t i = 0; i < std::size(rows); ++i) {
    const Row& row = rows[i];
    const auto& vlan = vlans[i + 1];
    EXPECT_EQ(Join("mode", vlan.tethering_mode, "id", vlan.vlan_id, "profile", vlan.profile_index),
              Join("mode", row.mode, "id", row.mode - 1, "profile", -1))
        << row.name;
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
