/// Selection of a profile: limits of the index, what is remembered, what a failure leaves.
#include "world.h"

namespace {

TEST(ProfileSelection, TakesAnIndexBelowTheCountAndBelowFifty) {
  // List present, count, index, and the count that is reported; none: granted.
  const std::tuple<int, uint32_t, uint32_t, std::string> rows[] = {
      {1, 3, 2, ""},   {1, 3, 3, "3"},    {1, 0, 1, "0"},  {1, ~0u, 50, "4294967295"},
      {0, 3, 1, "0"},  {2, 3, 1, ""},     {1, 50, 49, ""}, {1, 1u << 31, ~1u, "2147483648"},
      {1, 51, 49, ""}, {1, 51, 50, "51"}, {1, ~0u, 49, ""}};
  for (const auto& [valid, count, index, reported] : rows) {
    World world;
    world.script.policy_list.policy_list_valid = static_cast<uint8_t>(valid);
    world.script.policy_list.policy_list_len = count;
    EXPECT_EQ(world.wrapper.ChangeWwanProfile(index), reported.empty());
    Lines requests = {"GetWWANPolicyList",
                      "SetWWANProfileHandlePreference " + std::to_string(11 * index + 11)};
    Lines log = {Line(
        3, kSelection,
        "Index should be less than " + reported + " or 50 index " + std::to_string(index) + "\n")};
    reported.empty() ? log.clear() : requests.pop_back();
    EXPECT_EQ(world.Sent(), requests) << "index " << index << " of " << count;
    EXPECT_EQ(TakeLog(), log);
  }
}

TEST(ProfileSelection, RemembersOnlyWhatSucceeded) {
  World world;
  EXPECT_TRUE(world.wrapper.ChangeWwanProfile(0));
  EXPECT_EQ(world.Sent(), Lines());
  world.script.Refuse("SetWWANProfileHandlePreference");
  EXPECT_FALSE(world.wrapper.ChangeWwanProfile(1));
  EXPECT_TRUE(world.wrapper.ChangeWwanProfile(0)) << "still the selected one";
  world.script.Grant("SetWWANProfileHandlePreference");
  world.Forget();
  EXPECT_TRUE(world.wrapper.ChangeWwanProfile(1));
  EXPECT_TRUE(world.wrapper.DeleteWwanPolicy(1));
  EXPECT_TRUE(world.wrapper.ChangeWwanProfile(1)) << "also when it has been deleted";
  EXPECT_EQ(world.Sent(), (Lines{kSelectSecond[0], kSelectSecond[1], "DeleteWWANPolicy"}));
}

TEST(ProfileSelection, RefusedLeavesTheCallersFlagAsItWas) {
  World world;
  for (const auto get : {&QcmapWrapper::GetAutoConnect, &QcmapWrapper::GetRoaming,
                         &QcmapWrapper::GetIpv4State, &QcmapWrapper::GetIpv6State}) {
    for (const bool value : {true, false}) {
      world.script.flag = value;
      bool enabled = !value;
      EXPECT_FALSE((world.wrapper.*get)(9, enabled));
      EXPECT_EQ(enabled, !value);
      EXPECT_TRUE((world.wrapper.*get)(0, enabled));
      EXPECT_EQ(enabled, value);
    }
  }
}

TEST(ProfileSelection, HandleComesFromAListReadAfterwards) {
  World world;
  profile_handle_type_v01 handle = 1;
  EXPECT_TRUE(world.wrapper.GetProfileHandle(2, handle));
  // Shorter since, absent, and absent with a stale count.
  for (const auto& [valid, count] : {std::pair<uint8_t, uint32_t>{1, 2}, {1, 0}, {0, 3}}) {
    world.script.policy_list.policy_list_valid = valid;
    world.script.policy_list.policy_list_len = count;
    EXPECT_FALSE(world.wrapper.GetProfileHandle(2, handle));
    EXPECT_EQ(handle, 33u);
  }
  EXPECT_EQ(TakeLog(), Lines());
}

}  // namespace
