/// Policies: what is sent for each change, and what lists and numbers from the server become.
#include "world.h"

namespace {

constexpr char kSet[] =
    "bool @SetWwanPolicy(uint32_t, mox::wwan::Tech, mox::util::IPFamily, int, int)";

std::string Text(const DataManager::WwanPolicy& policy) {
  return Join("v4", policy.profile_v4, "v6", policy.profile_v6, NameOf(policy.tech),
              NameOf(policy.ip_family), "handle", policy.profile_handle);
}

// The server has 5 for IPv4 and 7 for IPv6.
TEST(Policy, SendsTheNumbersOfTheFamily) {
  struct Row {
    uint32_t index;
    Tech tech;
    IPFamily family;
    int profile_1, profile_2;
    qcmap_msgr_update_profile_enum_v01 update;
    /// The record; empty: no request.
    std::string sent;
  };
  constexpr auto kNone = QCMAP_MSGR_UPDATE_PROFILE_NONE_V01;
  constexpr auto kV4 = QCMAP_MSGR_UPDATE_PROFILE_V4_V01;
  constexpr auto kV6 = QCMAP_MSGR_UPDATE_PROFILE_V6_V01;
  constexpr auto kBoth = QCMAP_MSGR_UPDATE_PROFILE_V4V6_V01;
  constexpr IPFamily kUnknown = IPFamily{4};
  const Row rows[] = {
      {0, Tech::TECH_3GPP, IPFamily::IPV4V6, 9, 8, kBoth, "tech 1 family 10 v4 9 9 v6 8 8"},
      {0, Tech::ANY, IPFamily::IPV4, 24, 1, kBoth, "tech 0 family 4 v4 24 24 v6 7 7"},
      {0, Tech::TECH_3GPP, IPFamily::IPV4V6, 5, 7, kNone, ""},
      {1, Tech::TECH_3GPP2, IPFamily::IPV4, 5, 7, kNone, ""},
      {1, Tech::TECH_3GPP2, IPFamily::IPV6, 7, 7, kV4, "tech 2 family 6 v4 5 5 v6 7 7"},
      {1, Tech::TECH_3GPP, IPFamily::IPV6, 5, 8, kV6, "tech 1 family 6 v4 5 5 v6 5 5"},
      {1, Tech::TECH_3GPP, IPFamily::IPV4, 5, 99, kV6, "tech 1 family 4 v4 5 5 v6 7 7"},
      {1, Tech{3}, IPFamily::IPV4V6, 1, 24, kBoth, "tech 0 family 10 v4 1 1 v6 24 24"},
      {1, Tech::TECH_3GPP, IPFamily::NONE, 99, -1, kBoth, "tech 1 family 4 v4 5 5 v6 7 7"},
      {1, Tech{0}, kUnknown, 99, 7, kV4, "tech 0 family 4 v4 5 5 v6 7 7"}};
  for (const Row& row : rows) {
    SCOPED_TRACE(Join("profile", row.index, NameOf(row.tech), NameOf(row.family), "numbers",
                      row.profile_1, row.profile_2));
    World world;
    ASSERT_TRUE(world.wrapper.ChangeWwanProfile(row.index));
    world.Forget();
    EXPECT_TRUE(
        world.wrapper.SetWwanPolicy(row.index, row.tech, row.family, row.profile_1, row.profile_2));
    Lines requests = {"GetWWANPolicy"};
    if (row.index == 0 && !row.sent.empty()) requests.push_back("SetWWANPolicy " + row.sent);
    if (row.index != 0 && !row.sent.empty()) {
      requests.push_back(Join("UpdateWWANPolicy", row.update, row.sent));
      requests.push_back("UpdateWWANPolicy 3 " + row.sent);
    }
    EXPECT_EQ(world.Sent(), requests);
    const Lines log = TakeLog();
    EXPECT_EQ(log.at(1), Line(7, kSet,
                              Join("index", row.index, "ip_family", static_cast<int>(row.family),
                                   "update_req", row.update) +
                                  "\n"));
    EXPECT_EQ(log.back() == Line(7, kSet, "\n"), row.sent.empty());
  }
}

TEST(Policy, RefusesNumbersThatNoProfileHas) {
  struct Row {
    IPFamily family;
    int profile_1, profile_2;
    int refused;
    uint8_t server_v6 = 7;
  };
  constexpr uint8_t kServerHasNone = 0;
  const Row rows[] = {{IPFamily::IPV4, 25, 7, 25},   {IPFamily::IPV4, 261, 7, 261},
                      {IPFamily::IPV6, -1, 7, -1},   {IPFamily::IPV4V6, 25, 26, 25},
                      {IPFamily::IPV4V6, 5, 26, 26}, {IPFamily::IPV4, 5, 0, 0, kServerHasNone}};
  for (const Row& row : rows) {
    SCOPED_TRACE(Join(NameOf(row.family), "numbers", row.profile_1, row.profile_2));
    World world;
    world.script.policy.v6_profile_id[1] = row.server_v6;
    EXPECT_FALSE(
        world.wrapper.SetWwanPolicy(0, Tech::ANY, row.family, row.profile_1, row.profile_2));
    EXPECT_EQ(world.Sent(), Lines{"GetWWANPolicy"});
    const std::string number = "profile [" + std::to_string(row.refused) + "]";
    EXPECT_EQ(TakeLog().back(), Line(3, kSet, number + " should be between 1 and 24\n"));
  }
}

TEST(Policy, SecondUpdateAndTheFirstProfilesRequestMayBeRefusedToo) {
  World world;
  world.script.before["UpdateWWANPolicy"] = [&, updates = 0]() mutable {
    if (++updates == 2) world.script.Refuse("UpdateWWANPolicy");
  };
  world.script.Refuse("SetWWANPolicy");
  for (const uint32_t index : {0u, 1u}) {
    EXPECT_FALSE(world.wrapper.SetWwanPolicy(index, Tech::ANY, IPFamily::IPV4, 9, 7));
    EXPECT_EQ(TakeLog().back(), Line(3, kSet, "QCMAP_Client::SetWWANPolicy error 59[0x3b]\n"));
  }
}

TEST(Policy, ListHoldsAtMostFiftyWhateverIsReported) {
  constexpr bool kPresent = true, kAbsent = false;
  struct Row {
    bool list_present;
    uint32_t reported;
    size_t read;
  };
  const Row rows[] = {{kAbsent, 3, 0}, {kPresent, 1, 1}, {kPresent, 51, 50}, {kPresent, ~0u, 50}};
  std::vector<DataManager::WwanPolicy> policies(7);
  for (const Row& row : rows) {
    World world;
    world.script.policy_list.policy_list_valid = row.list_present;
    world.script.policy_list.policy_list_len = row.reported;
    EXPECT_TRUE(world.wrapper.GetWwanPolicies(policies));
    ASSERT_EQ(policies.size(), row.read) << row.reported << " reported";
    if (row.read == 0) continue;
    EXPECT_EQ(Text(policies.back()),
              Join("v4", row.read - 1, "v6 7 TECH_3GPP IPV4V6 handle", 11 * row.read));
  }
  EXPECT_FALSE(World(-1).wrapper.GetWwanPolicies(policies));
  EXPECT_TRUE(policies.empty());
}

TEST(Policy, ReadoutConvertsMaskAndFamilyAndLearnsNoHandle) {
  struct Row {
    uint64_t mask;
    int family;
    std::string converted;
  };
  const Row rows[] = {{0, QCMAP_MSGR_IP_FAMILY_V4_V01, "ANY IPV4"},
                      {1, QCMAP_MSGR_IP_FAMILY_V6_V01, "TECH_3GPP IPV6"},
                      {2, QCMAP_MSGR_IP_FAMILY_V4V6_V01, "TECH_3GPP2 IPV4V6"},
                      {3, 0, "TECH_3GPP NONE"},
                      {1ull << 32, 5, "ANY NONE"},
                      {4, 11, "ANY NONE"},
                      {~1ull, -1, "TECH_3GPP2 NONE"}};
  World world;
  DataManager::WwanPolicy policy;
  for (const Row& row : rows) {
    SCOPED_TRACE(row.converted);
    world.script.policy = {row.mask, qcmap_msgr_ip_family_enum_v01{row.family}, {1, 255}, {2, 0}};
    EXPECT_TRUE(world.wrapper.GetWwanPolicy(0, policy));
    EXPECT_EQ(Text(policy), "v4 255 v6 0 " + row.converted + " handle 4294967295");
  }
  world.script.Refuse("GetWWANPolicy");
  EXPECT_FALSE(world.wrapper.GetWwanPolicy(0, policy));
  EXPECT_EQ(Text(policy), "v4 255 v6 0 TECH_3GPP2 NONE handle 4294967295") << "after failure";
}

}  // namespace
