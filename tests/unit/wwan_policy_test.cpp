/// Policies: what is sent for each change, and what lists and numbers from the server become.
#include "session.h"

namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;

// The server has 5 for IPv4 and 7 for IPv6.
TEST(WwanPolicy, SendsTheNumbersOfTheFamily) {
  struct {
    uint32_t index;
    int tech;
    int family;
    int profile_1;
    int profile_2;
    Lines requests;
  } const rows[] = {
      {0, 2, 3, 9, 8, {"SetWWANPolicy tech 1 family 10 v4 9 9 v6 8 8"}},
      {0, 7, 1, 24, 1, {"SetWWANPolicy tech 0 family 4 v4 24 24 v6 7 7"}},
      {0, 2, 3, 5, 7, {}},
      {1, 1, 1, 5, 7, {}},
      {1, 1, 2, 7, 7, {"2 tech 2 family 6 v4 5 5 v6 7 7"}},
      {1, 2, 2, 5, 8, {"4 tech 1 family 6 v4 5 5 v6 5 5"}},
      {1, 2, 1, 5, 99, {"4 tech 1 family 4 v4 5 5 v6 7 7"}},
      {1, 3, 3, 1, 24, {"6 tech 0 family 10 v4 1 1 v6 24 24"}},
      {1, 2, 0, 99, -1, {"6 tech 1 family 4 v4 5 5 v6 7 7"}},
      {1, 0, 4, 99, 7, {"2 tech 0 family 4 v4 5 5 v6 7 7"}},
  };
  for (const auto& row : rows) {
    Session session;
    ASSERT_TRUE(session.wrapper.ChangeWwanProfile(row.index));
    session.Forget();
    EXPECT_TRUE(session.wrapper.SetWwanPolicy(row.index, static_cast<Tech>(row.tech),
                                              static_cast<IPFamily>(row.family), row.profile_1,
                                              row.profile_2));
    Lines requests = {"GetWWANPolicy cleared"};
    for (const std::string& request : row.requests) {
      const bool first = row.index == 0;
      requests.push_back(first ? request : "UpdateWWANPolicy " + request);
      if (!first) requests.push_back("UpdateWWANPolicy 3" + request.substr(1));
    }
    EXPECT_THAT(session.script.TakeRequests(), ElementsAreArray(requests));
    const Lines log = TakeLog();
    EXPECT_EQ(log.size(), row.requests.empty() ? 3u : 2u);
    EXPECT_EQ(log.back().find("int, int): \n") != std::string::npos, row.requests.empty());
  }
}

TEST(WwanPolicy, RefusesNumbersThatNoProfileHas) {
  constexpr char kSet[] =
      "bool @SetWwanPolicy(uint32_t, mox::wwan::Tech, mox::util::IPFamily, int, int)";
  struct {
    IPFamily family;
    int profile_1;
    int profile_2;
    uint8_t server_v6;
    int refused;
  } const rows[] = {
      {IPFamily::IPV4, 25, 7, 7, 25},   {IPFamily::IPV4, 0, 7, 7, 0},
      {IPFamily::IPV4, 261, 7, 7, 261}, {IPFamily::IPV4, 9, 7, 0, 0},
      {IPFamily::IPV6, -1, 7, 7, -1},   {IPFamily::IPV4V6, 25, 26, 7, 25},
      {IPFamily::IPV4V6, 5, 26, 7, 26}, {IPFamily::IPV4, 5, 0, 0, 0},
  };
  for (const auto& row : rows) {
    Session session;
    session.script.policy.v6_profile_id[1] = row.server_v6;
    EXPECT_FALSE(
        session.wrapper.SetWwanPolicy(0, Tech::ANY, row.family, row.profile_1, row.profile_2));
    EXPECT_THAT(session.script.TakeRequests(), ElementsAre("GetWWANPolicy cleared"));
    EXPECT_EQ(TakeLog().back(),
              Line(3, kSet,
                   "profile [" + std::to_string(row.refused) + "] should be between 1 and 24\n"));
  }
}

TEST(WwanPolicy, SecondUpdateAndTheFirstProfilesRequestMayBeRefusedToo) {
  Session session;
  int updates = 0;
  session.script.before["UpdateWWANPolicy"] = [&] {
    if (++updates == 2) session.script.Refuse("UpdateWWANPolicy");
  };
  session.script.Refuse("SetWWANPolicy");
  for (const uint32_t index : {0u, 1u}) {
    EXPECT_FALSE(session.wrapper.SetWwanPolicy(index, Tech::ANY, IPFamily::IPV4, 9, 7));
    EXPECT_THAT(TakeLog().back(),
                testing::EndsWith("): QCMAP_Client::SetWWANPolicy error 59[0x3b]\n"));
  }
  EXPECT_EQ(updates, 2);
}

TEST(WwanPolicy, ListHoldsAtMostFiftyWhateverIsReported) {
  struct {
    uint8_t valid;
    uint32_t count;
    size_t read;
  } const rows[] = {{0, 3, 0},   {1, 0, 0},           {1, 1, 1},         {1, 50, 50},
                    {1, 51, 50}, {1, 0x7fffffff, 50}, {1, 1u << 31, 50}, {1, ~0u, 50}};
  for (const auto& row : rows) {
    Session session;
    session.script.policy_list.policy_list_valid = row.valid;
    session.script.policy_list.policy_list_len = row.count;
    std::vector<DataManager::WwanPolicy> policies(7);
    EXPECT_TRUE(session.wrapper.GetWwanPolicies(policies));
    ASSERT_EQ(policies.size(), row.read) << row.count << " reported";
    if (row.read == 0) continue;
    EXPECT_EQ(policies.back().profile_handle, 11 * row.read);
    EXPECT_EQ(policies.back().profile_v4, static_cast<int>(row.read) - 1);
    EXPECT_EQ(policies.back().profile_v6, 7);
    EXPECT_EQ(policies.back().tech, Tech::TECH_3GPP);
    EXPECT_EQ(policies.back().ip_family, IPFamily::IPV4V6);
  }
  Session absent(-1);
  std::vector<DataManager::WwanPolicy> policies(7);
  EXPECT_FALSE(absent.wrapper.GetWwanPolicies(policies));
  EXPECT_TRUE(policies.empty());
}

TEST(WwanPolicy, ReadoutLearnsNoHandle) {
  Session session;
  DataManager::WwanPolicy policy;
  session.script.policy = {2, QCMAP_MSGR_IP_FAMILY_V6_V01, {1, 255}, {2, 0}};
  EXPECT_TRUE(session.wrapper.GetWwanPolicy(0, policy));
  session.script.Refuse("GetWWANPolicy");
  EXPECT_FALSE(session.wrapper.GetWwanPolicy(0, policy));
  EXPECT_EQ(policy.profile_v4, 255);
  EXPECT_EQ(policy.profile_v6, 0);
  EXPECT_EQ(policy.tech, Tech::TECH_3GPP2);
  EXPECT_EQ(policy.ip_family, IPFamily::IPV6);
  EXPECT_EQ(policy.profile_handle, 0xffffffffu);
  TakeLog();
}

TEST(WwanPolicy, ConvertsMasksAndFamilies) {
  for (const auto& [mask, tech] : {std::pair<unsigned long long, int>{0, 7},
                                   {1, 2},
                                   {2, 1},
                                   {3, 2},
                                   {4, 7},
                                   {1ull << 32, 7},
                                   {~0ull, 2},
                                   {~1ull, 1}}) {
    EXPECT_EQ(static_cast<int>(QcmapWrapper::ConvertToTech(mask)), tech) << "mask " << mask;
  }
  for (const auto& [family, expected] : {std::pair<int, int>{4, 1},
                                         {6, 2},
                                         {10, 3},
                                         {0, 0},
                                         {5, 0},
                                         {11, 0},
                                         {-1, 0},
                                         {0x7fffffff, 0}}) {
    EXPECT_EQ(static_cast<int>(QcmapWrapper::ConvertToIPFamily(
                  static_cast<qcmap_msgr_ip_family_enum_v01>(family))),
              expected)
        << "family " << family;
  }
}

}  // namespace
