/// Policies: what is sent for each change, and what lists and numbers from the server become.
#include "world.h"

namespace {

constexpr char kSet[] =
    "bool @SetWwanPolicy(uint32_t, mox::wwan::Tech, mox::util::IPFamily, int, int)";

std::string Text(const DataManager::WwanPolicy& policy) {
  return Join(policy.profile_v4, policy.profile_v6, static_cast<int>(policy.tech),
              static_cast<int>(policy.ip_family), policy.profile_handle);
}

// The server has 5 for IPv4 and 7 for IPv6.
TEST(Policy, SendsTheNumbersOfTheFamily) {
  // Index, technology, family, both numbers, and what is sent; nothing to update: none.
  const std::tuple<uint32_t, Tech, int, int, int, std::string> rows[] = {
      {0, Tech{2}, 3, 9, 8, "SetWWANPolicy tech 1 family 10 v4 9 9 v6 8 8"},
      {0, Tech{7}, 1, 24, 1, "SetWWANPolicy tech 0 family 4 v4 24 24 v6 7 7"},
      {0, Tech{2}, 3, 5, 7, ""},
      {1, Tech{1}, 1, 5, 7, ""},
      {1, Tech{1}, 2, 7, 7, "2 tech 2 family 6 v4 5 5 v6 7 7"},
      {1, Tech{2}, 2, 5, 8, "4 tech 1 family 6 v4 5 5 v6 5 5"},
      {1, Tech{2}, 1, 5, 99, "4 tech 1 family 4 v4 5 5 v6 7 7"},
      {1, Tech{3}, 3, 1, 24, "6 tech 0 family 10 v4 1 1 v6 24 24"},
      {1, Tech{2}, 0, 99, -1, "6 tech 1 family 4 v4 5 5 v6 7 7"},
      {1, Tech{0}, 4, 99, 7, "2 tech 0 family 4 v4 5 5 v6 7 7"}};
  for (const auto& [index, tech, family, profile_1, profile_2, sent] : rows) {
    World world;
    ASSERT_TRUE(world.wrapper.ChangeWwanProfile(index));
    world.Forget();
    EXPECT_TRUE(world.wrapper.SetWwanPolicy(index, tech, IPFamily{family}, profile_1, profile_2));
    Lines requests = {"GetWWANPolicy"};
    if (index == 0 && !sent.empty()) requests.push_back(sent);
    if (index != 0 && !sent.empty()) {
      requests.push_back("UpdateWWANPolicy " + sent);
      requests.push_back("UpdateWWANPolicy 3" + sent.substr(1));
    }
    EXPECT_EQ(world.Sent(), requests);
    const int update = (profile_1 != 5 ? 2 : 0) + (profile_2 != 7 ? 4 : 0);
    const Lines log = TakeLog();
    EXPECT_EQ(log.at(1), Line(7, kSet,
                              Join("index", index, "ip_family", family, "update_req",
                                   update == 0 ? -2147483647 : update) +
                                  "\n"));
    EXPECT_EQ(log.back() == Line(7, kSet, "\n"), sent.empty()) << sent;
  }
}

TEST(Policy, RefusesNumbersThatNoProfileHas) {
  // Family, both numbers, the server's for IPv6, and the one that is refused.
  const std::tuple<int, int, int, uint8_t, std::string> rows[] = {
      {1, 25, 7, 7, "25"}, {1, 0, 7, 7, "0"},    {1, 261, 7, 7, "261"}, {1, 9, 7, 0, "0"},
      {2, -1, 7, 7, "-1"}, {3, 25, 26, 7, "25"}, {3, 5, 26, 7, "26"},   {1, 5, 0, 0, "0"}};
  for (const auto& [family, profile_1, profile_2, server_v6, refused] : rows) {
    World world;
    world.script.policy.v6_profile_id[1] = server_v6;
    EXPECT_FALSE(world.wrapper.SetWwanPolicy(0, Tech::ANY, IPFamily{family}, profile_1, profile_2));
    EXPECT_EQ(world.Sent(), Lines{"GetWWANPolicy"});
    EXPECT_EQ(TakeLog().back(),
              Line(3, kSet, "profile [" + refused + "] should be between 1 and 24\n"));
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
  std::vector<DataManager::WwanPolicy> policies(7);
  const std::tuple<uint8_t, uint32_t, size_t> rows[] = {
      {0, 3, 0},   {1, 1, 1},           {1, 0, 0},         {1, 50, 50},
      {1, 51, 50}, {1, 0x7fffffff, 50}, {1, 1u << 31, 50}, {1, ~0u, 50}};
  for (const auto& [valid, count, read] : rows) {
    World world;
    world.script.policy_list.policy_list_valid = valid;
    world.script.policy_list.policy_list_len = count;
    EXPECT_TRUE(world.wrapper.GetWwanPolicies(policies));
    ASSERT_EQ(policies.size(), read) << count << " reported";
    if (read == 0) continue;
    EXPECT_EQ(Text(policies.back()), Join(read - 1, 7, 2, 3, 11 * read));
  }
  EXPECT_FALSE(World(-1).wrapper.GetWwanPolicies(policies));
  EXPECT_TRUE(policies.empty());
}

TEST(Policy, ReadoutConvertsMaskAndFamilyAndLearnsNoHandle) {
  const std::tuple<uint64_t, int, std::string> rows[] = {
      {0, 4, "7 1"},          {1, 6, "2 2"},  {2, 10, "1 3"},    {3, 0, "2 0"},
      {1ull << 32, 5, "7 0"}, {4, 11, "7 0"}, {~1ull, -1, "1 0"}};
  World world;
  DataManager::WwanPolicy policy;
  for (const auto& [mask, family, converted] : rows) {
    world.script.policy = {mask, qcmap_msgr_ip_family_enum_v01{family}, {1, 255}, {2, 0}};
    EXPECT_TRUE(world.wrapper.GetWwanPolicy(0, policy));
    EXPECT_EQ(Text(policy), "255 0 " + converted + " 4294967295");
  }
  world.script.Refuse("GetWWANPolicy");
  EXPECT_FALSE(world.wrapper.GetWwanPolicy(0, policy));
  EXPECT_EQ(Text(policy), "255 0 1 0 4294967295") << "after failure";
}

}  // namespace
