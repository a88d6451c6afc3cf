/// Mapping of VLANs to profiles: both ways between index and handle, and hostile counts.
#include <climits>

#include "world.h"

namespace {

using Mappings = std::vector<qcmap_msgr_pdn_to_vlan_mapping_v01>;

TEST(Map, SendsTheHandleOfAProfileThatExists) {
  // VLAN, index, number of policies, and what is sent; none: refused, and silent.
  const std::tuple<int, int, uint32_t, std::string> rows[] = {
      {1, 0, 3, "1 11"},        {4095, 2, 3, "4095 33"}, {65538, 0, 3, "2 11"}, {-1, 0, 3, "-1 11"},
      {100, 49, 51, "100 550"}, {100, 50, INT_MAX, ""},  {100, 3, 3, ""},       {100, 0, 0, ""},
      {100, 0, 1u << 31, ""},   {100, 0, ~0u, ""}};
  for (const auto& [id, index, count, sent] : rows) {
    World world;
    world.script.policy_list.policy_list_len = count;
    world.script.policy_list.policy_list_valid = 0;  // not looked at here
    MobileapManager::VlanConfig vlan = {0, id, index};
    EXPECT_EQ(world.wrapper.SetPdnToVlanMapping(vlan), !sent.empty());
    EXPECT_EQ(world.wrapper.DeletePdnToVlanMapping(vlan), !sent.empty());
    Lines requests = {"GetWWANPolicyList", "AddPDNToVLANMapping " + sent, "GetWWANPolicyList",
                      "DeletePDNToVLANMapping " + sent};
    if (sent.empty()) requests = Lines(2, "GetWWANPolicyList");
    EXPECT_EQ(world.Sent(), requests) << index << " of " << count;
    EXPECT_EQ(TakeLog(), Lines());
  }
  World world;
  MobileapManager::VlanConfig vlan = {3, 100, -1};
  EXPECT_FALSE(world.wrapper.SetPdnToVlanMapping(vlan));
  EXPECT_EQ(world.Sent(), Lines());
}

TEST(Map, DeletionLooksTheProfileUp) {
  // VLAN, number of mappings, the mappings, and what is deleted; nothing: silent.
  const std::tuple<int, int, Mappings, std::string> rows[] = {
      {100, 3, {{33, 100}, {22, 100}, {11, 100}}, "100 33"},
      {100, 3, {{22, 7}, {99, 100}, {11, 100}}, "100 11"},
      {100, 2, {{22, 7}, {99, 100}, {11, 100}}, ""},
      {-5, 1, {{22, -5}}, "-5 22"},
      {65636, 1, {{22, 100}}, ""},  // 100 in 16 bits, yet another id
      {100, 0, {{22, 100}}, ""},
      {100, INT_MIN, {{22, 100}}, ""},
      {100, 51, Mappings(50, {22, 7}), ""},
      {100, INT_MAX, Mappings(50, {22, 7}), ""}};
  for (const auto& [id, count, mappings, deleted] : rows) {
    World world;
    world.script.mapping_count = count;
    world.script.mappings = mappings;
    MobileapManager::VlanConfig vlan = {3, id, -1};
    EXPECT_EQ(world.wrapper.DeletePdnToVlanMapping(vlan), !deleted.empty());
    Lines requests = {"GetPDNtoVLANMappings cleared 0", "GetWWANPolicyList", "GetWWANPolicyList",
                      "DeletePDNToVLANMapping " + deleted};
    if (deleted.empty()) requests.resize(2);
    EXPECT_EQ(world.Sent(), requests) << id << ", " << count << " reported";
    EXPECT_EQ(TakeLog(), Lines());
  }
}

TEST(Map, ListsEachMappingWithItsIndex) {
  for (const int count : {0, 1, 50, 51, INT_MAX, -1, INT_MIN}) {
    const auto read = static_cast<size_t>(std::clamp(count, 0, 50));
    World world;
    world.script.mapping_count = count;
    world.script.mappings.assign(50, {99, 7});
    world.script.mappings[0] = {33, -2};
    world.script.policy_list.policy_list[1].profile_handle = 33;  // the first one counts
    std::vector<MobileapManager::VlanMapping> mappings(1);
    EXPECT_TRUE(world.wrapper.GetPdnToVlanMapping(mappings));
    EXPECT_TRUE(world.wrapper.GetPdnToVlanMapping(mappings));
    ASSERT_EQ(mappings.size(), 1 + 2 * read) << count << " reported";
    for (size_t i = 1; i <= read; ++i) {
      EXPECT_EQ(Join(mappings[i].vlan_id, mappings[i].profile_index), i == 1 ? "-2 1" : "7 -1");
    }
  }
}

}  // namespace
