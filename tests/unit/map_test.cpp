/// Mapping of VLANs to profiles: both ways between index and handle, and counts out of range.
#include <climits>

#include "world.h"

namespace {

using Mappings = std::vector<qcmap_msgr_pdn_to_vlan_mapping_v01>;

TEST(Map, SendsTheHandleOfAProfileThatExists) {
  struct Row {
    int vlan_id;
    int index;
    uint32_t policies;
    /// VLAN and handle; empty: refused without a line.
    std::string sent;
  };
  const Row rows[] = {{1, 0, 3, "1 11"},   {4095, 2, 3, "4095 33"},  {65538, 0, 3, "2 11"},
                      {-1, 0, 3, "-1 11"}, {100, 49, 51, "100 550"}, {100, 50, INT_MAX, ""},
                      {100, 3, 3, ""},     {100, 0, 0, ""},          {100, 0, 1u << 31, ""},
                      {100, 0, ~0u, ""}};
  for (const Row& row : rows) {
    SCOPED_TRACE(Join("VLAN", row.vlan_id, "index", row.index, "of", row.policies));
    World world;
    world.script.policy_list.policy_list_len = row.policies;
    world.script.policy_list.policy_list_valid = 0;  // not looked at here
    MobileapManager::VlanConfig vlan = {0, row.vlan_id, row.index};
    EXPECT_EQ(world.wrapper.SetPdnToVlanMapping(vlan), !row.sent.empty());
    EXPECT_EQ(world.wrapper.DeletePdnToVlanMapping(vlan), !row.sent.empty());
    Lines requests = {"GetWWANPolicyList", "AddPDNToVLANMapping " + row.sent, "GetWWANPolicyList",
                      "DeletePDNToVLANMapping " + row.sent};
    if (row.sent.empty()) requests = Lines(2, "GetWWANPolicyList");
    EXPECT_EQ(world.Sent(), requests);
    EXPECT_EQ(TakeLog(), Lines());
  }
  World world;
  MobileapManager::VlanConfig vlan = {3, 100, -1};
  EXPECT_FALSE(world.wrapper.SetPdnToVlanMapping(vlan));
  EXPECT_EQ(world.Sent(), Lines());
  vlan.profile_index = 1;
  world.script.Refuse("GetWWANPolicyList");
  EXPECT_FALSE(world.wrapper.DeletePdnToVlanMapping(vlan));
  EXPECT_EQ(TakeLog(),
            Lines{Line(3, "bool @DeletePdnToVlanMapping(mox::wwan::MobileapManager::VlanConfig&)",
                       "QCMAP_Client::GetWWANPolicyList error 59[0x3b]\n")});
}

TEST(Map, DeletionLooksTheProfileUp) {
  struct Row {
    int vlan_id;
    int count;
    /// Handle and VLAN of each.
    Mappings mappings;
    /// VLAN and handle; empty: refused without a line.
    std::string deleted;
  };
  const Row rows[] = {{100, 3, {{33, 100}, {22, 100}, {11, 100}}, "100 33"},
                      {100, 3, {{22, 7}, {99, 100}, {11, 100}}, "100 11"},
                      {100, 2, {{22, 7}, {99, 100}, {11, 100}}, ""},
                      {-5, 1, {{22, -5}}, "-5 22"},
                      {65636, 1, {{22, 100}}, ""},  // 100 in 16 bits, yet another id
                      {100, 0, {{22, 100}}, ""},
                      {100, INT_MIN, {{22, 100}}, ""},
                      {100, 51, Mappings(50, {22, 7}), ""},
                      {100, INT_MAX, Mappings(50, {22, 7}), ""}};
  for (const Row& row : rows) {
    SCOPED_TRACE(Join("VLAN", row.vlan_id, "mappings reported", row.count));
    World world;
    world.script.mapping_count = row.count;
    world.script.mappings = row.mappings;
    MobileapManager::VlanConfig vlan = {3, row.vlan_id, -1};
    EXPECT_EQ(world.wrapper.DeletePdnToVlanMapping(vlan), !row.deleted.empty());
    Lines requests = {"GetPDNtoVLANMappings cleared 0", "GetWWANPolicyList", "GetWWANPolicyList",
                      "DeletePDNToVLANMapping " + row.deleted};
    if (row.deleted.empty()) requests.resize(2);
    EXPECT_EQ(world.Sent(), requests);
    EXPECT_EQ(TakeLog(), Lines());
  }
}

TEST(Map, ListsEachMappingWithItsIndex) {
  for (const int count : {0, 1, 50, 51, INT_MAX, -1, INT_MIN}) {
    SCOPED_TRACE(Join("mappings reported", count));
    const auto read = static_cast<size_t>(std::clamp(count, 0, 50));
    World world;
    world.script.mapping_count = count;
    world.script.mappings.assign(50, {44, 7});  // of the fourth policy, where there are three
    world.script.mappings[0] = {33, -2};
    world.script.policy_list.policy_list[1].profile_handle = 33;  // the first one counts
    std::vector<MobileapManager::VlanMapping> mappings(1);
    EXPECT_TRUE(world.wrapper.GetPdnToVlanMapping(mappings));
    EXPECT_TRUE(world.wrapper.GetPdnToVlanMapping(mappings));
    ASSERT_EQ(mappings.size(), 1 + 2 * read) << "appended, twice";
    for (size_t i = 1; i <= read; ++i) {
      EXPECT_EQ(Join(mappings[i].vlan_id, mappings[i].profile_index), i == 1 ? "-2 1" : "7 -1");
    }
  }
}

}  // namespace
