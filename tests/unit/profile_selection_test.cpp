/// Selection of a profile: limits of the index, what is remembered, what a failure leaves.
#include "session.h"

namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;

TEST(ProfileSelection, TakesAnIndexBelowTheCountAndBelowFifty) {
  struct {
    uint8_t valid;
    uint32_t count;
    uint32_t index;
    uint32_t reported;
    bool granted;
  } const rows[] = {
      {1, 3, 2, 3, true},
      {1, 3, 3, 3, false},
      {1, 1, 1, 1, false},
      {1, 0, 1, 0, false},
      {0, 3, 1, 0, false},
      {2, 3, 1, 3, true},
      {1, 50, 49, 50, true},
      {1, 51, 49, 51, true},
      {1, 51, 50, 51, false},
      {1, 0x7fffffff, 50, 0x7fffffff, false},
      {1, ~0u, 49, ~0u, true},
      {1, ~0u, 50, ~0u, false},
      {1, ~0u, 0xfffffffe, ~0u, false},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE("index " + std::to_string(row.index) + " of " + std::to_string(row.count));
    Session session;
    session.script.policy_list.policy_list_valid = row.valid;
    session.script.policy_list.policy_list_len = row.count;
    EXPECT_EQ(session.wrapper.ChangeWwanProfile(row.index), row.granted);
    Lines requests = {"GetWWANPolicyList"};
    Lines log;
    if (row.granted) {
      requests.push_back("SetWWANProfileHandlePreference " + std::to_string(11 * (row.index + 1)));
    } else {
      log.push_back(Line(3, kSelection,
                         "Index should be less than " + std::to_string(row.reported) +
                             " or 50 index " + std::to_string(row.index) + "\n"));
    }
    EXPECT_THAT(session.script.TakeRequests(), ElementsAreArray(requests));
    EXPECT_THAT(TakeLog(), ElementsAreArray(log));
  }
}

TEST(ProfileSelection, RemembersOnlyWhatSucceeded) {
  Session session;
  EXPECT_TRUE(session.wrapper.ChangeWwanProfile(0));
  EXPECT_THAT(session.script.TakeRequests(), ElementsAre());
  session.script.Refuse("SetWWANProfileHandlePreference");
  EXPECT_FALSE(session.wrapper.ChangeWwanProfile(1));
  EXPECT_TRUE(session.wrapper.ChangeWwanProfile(0)) << "still the selected one";
  session.script.Grant("SetWWANProfileHandlePreference");
  session.Forget();
  EXPECT_TRUE(session.wrapper.ChangeWwanProfile(1));
  EXPECT_TRUE(session.wrapper.DeleteWwanPolicy(1));
  EXPECT_TRUE(session.wrapper.ChangeWwanProfile(1)) << "also when it has been deleted";
  EXPECT_THAT(session.script.TakeRequests(),
              ElementsAre(kSelectSecond[0], kSelectSecond[1], "DeleteWWANPolicy"));
}

TEST(ProfileSelection, HandleComesFromAListReadAfterwards) {
  Session session;
  profile_handle_type_v01 handle = 1;
  EXPECT_TRUE(session.wrapper.GetProfileHandle(2, handle));
  EXPECT_EQ(handle, 33u);
  // Shorter since, absent, and absent with a stale count.
  for (const auto& [valid, count] : {std::pair<uint8_t, uint32_t>{1, 2}, {1, 0}, {0, 3}}) {
    session.script.policy_list.policy_list_valid = valid;
    session.script.policy_list.policy_list_len = count;
    EXPECT_FALSE(session.wrapper.GetProfileHandle(2, handle));
    EXPECT_EQ(handle, 33u);
  }
  EXPECT_THAT(TakeLog(), ElementsAre());
}

}  // namespace
