/// Selection of a profile: limits of the index, what is remembered, what a failure leaves.
#include "world.h"

namespace {

TEST(ProfileSelection, TakesAnIndexBelowTheCountAndBelowFifty) {
  struct Row {
    uint8_t list_present;
    uint32_t count;
    uint32_t index;
    /// The count that the refusal names; empty: granted.
    std::string refused;
  };
  const Row rows[] = {
      {1, 3, 2, ""},   {1, 3, 3, "3"},    {1, 0, 1, "0"},  {1, ~0u, 50, "4294967295"},
      {0, 3, 1, "0"},  {2, 3, 1, ""},     {1, 50, 49, ""}, {1, 1u << 31, ~1u, "2147483648"},
      {1, 51, 49, ""}, {1, 51, 50, "51"}, {1, ~0u, 49, ""}};
  for (const Row& row : rows) {
    SCOPED_TRACE(Join("index", row.index, "of", row.count, "present:", +row.list_present));
    World world;
    world.script.policy_list.policy_list_valid = row.list_present;
    world.script.policy_list.policy_list_len = row.count;
    EXPECT_EQ(world.wrapper.ChangeWwanProfile(row.index), row.refused.empty());
    Lines requests = {"GetWWANPolicyList",
                      Join("SetWWANProfileHandlePreference", 11 * row.index + 11)};
    Lines log = {
        Line(3, kSelection,
             Join("Index should be less than", row.refused, "or 50 index", row.index) + "\n")};
    row.refused.empty() ? log.clear() : requests.pop_back();
    EXPECT_EQ(world.Sent(), requests);
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

TEST(ProfileSelection, FlagsAreCarriedAndARefusalLeavesTheCallersAsItWas) {
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
  world.Forget();
  EXPECT_TRUE(world.wrapper.SetAutoConnect(0, false) && world.wrapper.SetRoaming(0, true));
  EXPECT_EQ(world.Sent(), (Lines{"SetAutoconnect 0", "SetRoaming 1"}));
}

TEST(ProfileSelection, HandleComesFromAListReadAfterwards) {
  World world;
  profile_handle_type_v01 handle = 1;
  EXPECT_TRUE(world.wrapper.GetProfileHandle(2, handle));
  struct Row {
    bool present;
    uint32_t count;
  };
  for (const Row& shorter : {Row{true, 2}, Row{true, 0}, Row{false, 3}}) {
    world.script.policy_list.policy_list_valid = shorter.present;
    world.script.policy_list.policy_list_len = shorter.count;
    EXPECT_FALSE(world.wrapper.GetProfileHandle(2, handle));
    EXPECT_EQ(handle, 33u);
  }
  EXPECT_EQ(TakeLog(), Lines());
}

}  // namespace
