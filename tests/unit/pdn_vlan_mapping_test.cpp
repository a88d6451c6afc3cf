/// Mapping of VLANs to profiles: both ways between index and handle, and hostile counts.
#include "session.h"

namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;

TEST(PdnVlanMapping, SendsTheHandleOfAProfileThatExists) {
  struct {
    int32_t id;
    int32_t index;
    uint32_t count;
    std::string sent;  // empty: refused
  } const rows[] = {{100, 0, 3, "100 11"},   {100, 2, 3, "100 33"},    {1, 0, 3, "1 11"},
                    {4095, 0, 3, "4095 11"}, {65538, 0, 3, "2 11"},    {40000, 0, 3, "-25536 11"},
                    {-1, 0, 3, "-1 11"},     {100, 3, 3, ""},          {100, 0, 0, ""},
                    {100, 50, 51, ""},       {100, 49, 51, "100 550"}, {100, 0, 1u << 31, ""},
                    {100, 0, ~0u, ""},       {100, 50, 0x7fffffff, ""}};
  for (const auto& row : rows) {
    SCOPED_TRACE("index " + std::to_string(row.index) + " of " + std::to_string(row.count));
    Session session;
    session.script.policy_list.policy_list_len = row.count;
    MobileapManager::VlanConfig vlan = {0, row.id, row.index};
    EXPECT_EQ(session.wrapper.SetPdnToVlanMapping(vlan), !row.sent.empty());
    EXPECT_EQ(session.wrapper.DeletePdnToVlanMapping(vlan), !row.sent.empty());
    Lines requests = {"GetWWANPolicyList", "GetWWANPolicyList"};
    if (!row.sent.empty()) {
      requests = {"GetWWANPolicyList", "AddPDNToVLANMapping " + row.sent, "GetWWANPolicyList",
                  "DeletePDNToVLANMapping " + row.sent};
    }
    EXPECT_THAT(session.script.TakeRequests(), ElementsAreArray(requests));
    EXPECT_THAT(TakeLog(), ElementsAre()) << "silent";
    EXPECT_TRUE(vlan.vlan_id == row.id && vlan.profile_index == row.index);
  }
  Session session;
  MobileapManager::VlanConfig vlan = {3, 100, -1};
  EXPECT_FALSE(session.wrapper.SetPdnToVlanMapping(vlan));
  EXPECT_THAT(session.script.TakeRequests(), ElementsAre());
}

TEST(PdnVlanMapping, DeletionLooksTheProfileUp) {
  struct {
    int32_t id;
    int count;
    std::vector<qcmap_msgr_pdn_to_vlan_mapping_v01> mappings;
    std::string deleted;  // empty: none
  } const rows[] = {
      {100, 3, {{33, 100}, {22, 100}, {11, 100}}, "100 33"},
      {100, 3, {{22, 7}, {99, 100}, {11, 100}}, "100 11"},
      {100, 2, {{22, 7}, {99, 100}, {11, 100}}, ""},
      {-5, 1, {{22, -5}}, "-5 22"},
      {65636, 1, {{22, 100}}, ""},  // 100 in 16 bits, yet another id
      {100, 0, {{22, 100}}, ""},
      {100, -1, {{22, 100}}, ""},
      {100, -2147483647 - 1, {{22, 100}}, ""},
      {100, 51, std::vector<qcmap_msgr_pdn_to_vlan_mapping_v01>(50, {22, 7}), ""},
      {100, 0x7fffffff, std::vector<qcmap_msgr_pdn_to_vlan_mapping_v01>(50, {22, 7}), ""},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE("VLAN " + std::to_string(row.id) + ", " + std::to_string(row.count) + " reported");
    Session session;
    session.script.mapping_count = row.count;
    session.script.mappings = row.mappings;
    MobileapManager::VlanConfig vlan = {3, row.id, -1};
    EXPECT_EQ(session.wrapper.DeletePdnToVlanMapping(vlan), !row.deleted.empty());
    Lines requests = {"GetPDNtoVLANMappings cleared 0", "GetWWANPolicyList"};
    if (!row.deleted.empty()) {
      requests.insert(requests.end(),
                      {"GetWWANPolicyList", "DeletePDNToVLANMapping " + row.deleted});
    }
    EXPECT_THAT(session.script.TakeRequests(), ElementsAreArray(requests));
    EXPECT_THAT(TakeLog(), ElementsAre());
  }
}

TEST(PdnVlanMapping, DeletionTrustsTheLatestList) {
  for (const uint32_t count : {2u, 3u}) {
    Session session;
    session.script.mapping_count = 1;
    session.script.mappings = {{33, 100}};
    int lists = 0;
    session.script.before["GetWWANPolicyList"] = [&] {
      if (++lists < 2) return;
      session.script.policy_list.policy_list_len = count;
      session.script.policy_list.policy_list[2].profile_handle = 44;
    };
    MobileapManager::VlanConfig vlan = {3, 100, -9};
    EXPECT_EQ(session.wrapper.DeletePdnToVlanMapping(vlan), count == 3);
    EXPECT_EQ(session.script.TakeRequests().back(),
              count == 3 ? "DeletePDNToVLANMapping 100 44" : "GetWWANPolicyList");
  }
}

TEST(PdnVlanMapping, ListsEachMappingWithItsIndex) {
  for (const auto& [count, read] : {std::pair<int, size_t>{0, 0},
                                    {-1, 0},
                                    {1, 1},
                                    {50, 50},
                                    {51, 50},
                                    {0x7fffffff, 50},
                                    {-2147483647 - 1, 0}}) {
    Session session;
    session.script.mapping_count = count;
    session.script.mappings.assign(50, {99, 7});
    session.script.mappings[0] = {33, -2};
    std::vector<MobileapManager::VlanMapping> mappings(1);
    EXPECT_TRUE(session.wrapper.GetPdnToVlanMapping(mappings));
    EXPECT_TRUE(session.wrapper.GetPdnToVlanMapping(mappings));
    ASSERT_EQ(mappings.size(), 1 + 2 * read) << count << " reported";
    if (read == 0) continue;
    EXPECT_EQ(mappings[1].vlan_id, -2);
    EXPECT_EQ(mappings[1].profile_index, 2);
    EXPECT_EQ(mappings.back().profile_index, read > 1 ? -1 : 2);
  }
}

}  // namespace
