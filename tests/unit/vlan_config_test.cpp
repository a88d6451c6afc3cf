/// VLANs: limits of id and mode, and lists from the server.
#include <cstring>

#include "session.h"

namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;

TEST(VlanConfig, JudgesTheIdBeforeTheMode) {
  struct {
    int32_t mode;
    int32_t id;
    std::string sent;     // empty: refused
    std::string refusal;  // empty: the id's
  } const rows[] = {
      {1, 2, "rndis0 2", ""},
      {2, 4094, "ecm0 4094", ""},
      {3, 100, "eth0 100", ""},
      {3, 1, "", ""},
      {3, 0, "", ""},
      {3, 4095, "", ""},
      {3, 4096, "", ""},
      {3, -1, "", ""},
      {0, 65538, "", ""},
      {0, 2, "", "Cannot support tethering mode 0\n"},
      {4, 2, "", "Cannot support tethering mode 4\n"},
      {-1, 4094, "", "Cannot support tethering mode -1\n"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE("mode " + std::to_string(row.mode) + " id " + std::to_string(row.id));
    Session session;
    MobileapManager::VlanConfig vlan = {row.mode, row.id, 5};
    EXPECT_EQ(session.wrapper.SetVlanConfig(vlan), !row.sent.empty());
    EXPECT_EQ(session.wrapper.DeleteVlanConfig(vlan), !row.sent.empty());
    EXPECT_TRUE(vlan.tethering_mode == row.mode && vlan.vlan_id == row.id &&
                vlan.profile_index == 5);
    Lines requests, log;
    if (!row.sent.empty()) {
      requests = {"SetVLANConfig " + row.sent + " 0", "DeleteVLANConfig " + row.sent};
    } else {
      const std::string id = "Invalid vlan id [" + std::to_string(row.id) + "]";
      const std::string rest = " remind vlan 0,1 and 4095 are reserved\n";
      const bool by_mode = !row.refusal.empty();
      log = {Line(3, "bool @SetVlanConfig(mox::wwan::MobileapManager::VlanConfig&)",
                  by_mode ? row.refusal : id + rest),
             Line(3, "bool @DeleteVlanConfig(mox::wwan::MobileapManager::VlanConfig&)",
                  by_mode ? row.refusal : id + ", please" + rest)};
    }
    EXPECT_THAT(session.script.TakeRequests(), ElementsAreArray(requests));
    EXPECT_THAT(TakeLog(), ElementsAreArray(log));
  }
}

TEST(VlanConfig, ReadsNamesWithinTheirField) {
  const std::pair<const char*, int> names[] = {
      {"rndis0", 1}, {"ecm0", 2}, {"eth0", 3},  {"rndis1", 0},          {"rndis", 0},
      {"eth01", 0},  {"ETH0", 0}, {"", 0},      {"eth0\0wlan0", 3},     {"\0eth0", 0},
      {"wlan0", 0},  {"eth", 0},  {" eth0", 0}, {"0123456789abcdef", 0}};
  Session session;
  auto& list = session.script.vlans;
  for (const auto& [name, mode] : names) {
    auto& entry = list.vlan_config[list.vlan_config_len++];
    std::memcpy(entry.iface_name, name, std::min(std::strlen(name), sizeof entry.iface_name));
    entry.vlan_id = static_cast<int16_t>(mode - 1);
  }
  std::memcpy(list.vlan_config[8].iface_name, "eth0\0wlan0", 11);
  std::vector<MobileapManager::VlanConfig> vlans(1);
  EXPECT_TRUE(session.wrapper.GetVlanConfigs(vlans));
  EXPECT_TRUE(session.wrapper.GetVlanConfigs(vlans));
  ASSERT_EQ(vlans.size(), 1 + 2 * std::size(names)) << "appended, twice";
  for (size_t i = 0; i < std::size(names); ++i) {
    EXPECT_EQ(vlans[i + 1].tethering_mode, names[i].second) << names[i].first;
    EXPECT_EQ(vlans[i + 1].vlan_id, names[i].second - 1);
    EXPECT_EQ(vlans[i + 1].profile_index, -1);
  }
}

TEST(VlanConfig, ListHoldsAtMostItsCapacity) {
  for (const auto& [count, read] : {std::pair<uint16_t, size_t>{0, 0},
                                    {1, 1},
                                    {2000, 2000},
                                    {2001, 2000},
                                    {32768, 2000},
                                    {65535, 2000}}) {
    Session session;
    session.script.vlans.vlan_config_len = count;
    std::vector<MobileapManager::VlanConfig> vlans;
    EXPECT_TRUE(session.wrapper.GetVlanConfigs(vlans));
    EXPECT_EQ(vlans.size(), read) << count << " reported";
  }
}

TEST(VlanConfig, FailureWithoutAnErrorIsASuccessWithNothingInIt) {
  Session session;
  session.script.Refuse("GetVLANConfig", 0);
  std::vector<MobileapManager::VlanConfig> vlans(1);
  EXPECT_TRUE(session.wrapper.GetVlanConfigs(vlans));
  EXPECT_EQ(vlans.size(), 1u);
  EXPECT_THAT(TakeLog(),
              ElementsAre(Line(
                  3, "bool @GetVlanConfigs(std::vector<mox::wwan::MobileapManager::VlanConfig>&)",
                  "QCMAP_Client::GetVLANConfig error 0[0x0]\n")));
}

}  // namespace
