/// Selection of a profile: limits of the index, what is remembered, what a failure leaves.
#include "world.h"

namespace {

TEST(ProfileSelection, TakesAnIndexBelowTheCountAndBelowFifty) {
  constexpr uint8_t kAbsent = 0, kPresent = 1, kAlsoPresent = 2;
  struct Row {
    uint8_t list_present;
    uint32_t count;
    uint32_t index;
    /// The count that the refusal names; empty: granted.
    std::string refused;
  };
  const Row rows[] = {{kPresent, 3, 2, ""},     {kPresent, 3, 3, "3"},
                      {kPresent, 0, 1, "0"},    {kAbsent, 3, 1, "0"},
                      {kAlsoPresent, 3, 1, ""}, {kPresent, 51, 50, "51"},
                      {kPresent, ~0u, 49, ""},  {kPresent, 1u << 31, ~1u, "2147483648"}};
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

TEST(ProfileSelection, HandleComesFromAListReadAfterwards) {
  World world;
  profile_handle_type_v01 handle = 1;
  EXPECT_TRUE(world.wrapper.GetProfileHandle(2, handle));
  constexpr bool kPresent = true, kAbsent = false;
  struct Row {
    bool list_present;
    uint32_t count;
  };
  for (const Row& shorter : {Row{kPresent, 2}, Row{kAbsent, 3}}) {
    world.script.policy_list.policy_list_valid = shorter.list_present;
    world.script.policy_list.policy_list_len = shorter.count;
    EXPECT_FALSE(world.wrapper.GetProfileHandle(2, handle));
    EXPECT_EQ(handle, 33u);
  }
  EXPECT_EQ(TakeLog(), Lines());
}

}  // namespace
