/// The data call: states that need no request, states that cannot be read, errors with a meaning.
#include "session.h"

namespace {

using testing::ElementsAreArray;
using ConnectStatus = DataManager::ConnectStatus;

TEST(Backhaul, MapsEachCodeInEitherPlace) {
  const int expected[] = {0, 1, 0, 2, 3, 0, 4, 1, 0, 2, 3, 0, 4, 0};
  Session session;
  auto v4 = ConnectStatus::UNKNOWN;
  auto v6 = ConnectStatus::UNKNOWN;
  for (int code = 0; code <= 13; ++code) {
    session.script.wwan_status[0] = code;
    session.script.wwan_status[1] = 13 - code;
    ASSERT_TRUE(session.wrapper.GetWwanConnectStatus(0, v4, v6));
    EXPECT_EQ(static_cast<int>(v4), expected[code]) << "code " << code;
    EXPECT_EQ(static_cast<int>(v6), expected[13 - code]) << "code " << 13 - code;
  }
  session.script.wwan_status[0] = 0x7fffffff;
  session.script.wwan_status[1] = -1;
  v4 = v6 = ConnectStatus::CONNECTED;
  session.script.Refuse("GetWWANStatus");
  EXPECT_FALSE(session.wrapper.GetWwanConnectStatus(0, v4, v6));
  EXPECT_TRUE(v4 == ConnectStatus::CONNECTED && v6 == ConnectStatus::CONNECTED) << "after failure";
  session.script.Grant("GetWWANStatus");
  EXPECT_TRUE(session.wrapper.GetWwanConnectStatus(0, v4, v6));
  EXPECT_TRUE(v4 == ConnectStatus::UNKNOWN && v6 == ConnectStatus::UNKNOWN);
  TakeLog();
}

struct Row {
  int v4_code;  // 0: the status request is refused
  int v6_code;
  int family;
  bool granted;
  int error;
  Result result;
  Lines own_requests;
  bool silent;
};

void Check(const Row& row, const char* request,
           Result (QcmapWrapper::*operation)(uint32_t, IPFamily)) {
  SCOPED_TRACE(std::string(request) + " family " + std::to_string(row.family) + " codes " +
               std::to_string(row.v4_code) + ", " + std::to_string(row.v6_code));
  Session session;
  session.script.wwan_status[0] = row.v4_code;
  session.script.wwan_status[1] = row.v6_code;
  if (row.v4_code == 0) session.script.Refuse("GetWWANStatus");
  row.granted ? session.script.Grant(request, row.error)
              : session.script.Refuse(request, row.error);
  EXPECT_EQ((session.wrapper.*operation)(1, static_cast<IPFamily>(row.family)), row.result);
  Lines requests = kSelectSecond;
  requests.push_back("GetWWANStatus");
  requests.insert(requests.end(), row.own_requests.begin(), row.own_requests.end());
  EXPECT_THAT(session.script.TakeRequests(), ElementsAreArray(requests));
  const Lines log = TakeLog();
  EXPECT_EQ(log.empty(), row.silent);
  if (row.own_requests.empty() && !row.silent && row.v4_code != 0) {
    EXPECT_THAT(log, testing::ElementsAre(testing::EndsWith(
                         "Backhaul(uint32_t, mox::util::IPFamily): unsupporetd IPFamily [" +
                         std::to_string(row.family) + "]\n")));
  }
}

TEST(Backhaul, ConnectsUnlessConnected) {
  const Lines v4 = {"ConnectBackHaul 1"};
  const Lines v6 = {"ConnectBackHaul 2"};
  const Row rows[] = {
      {3, 12, 1, true, 0, Result::SUCCESS, {}, true},
      {3, 12, 2, true, 0, Result::SUCCESS, v6, false},
      {6, 9, 2, true, 0, Result::SUCCESS, {}, true},
      {1, 12, 1, true, 0, Result::SUCCESS, v4, false},
      {4, 12, 1, true, 90, Result::SUCCESS, v4, false},
      {2, 12, 1, false, 90, Result::FAILURE, v4, false},
      {0, 12, 1, true, 0, Result::SUCCESS, v4, false},
      {0, 12, 2, true, 0, Result::SUCCESS, v6, false},
      {3, 9, 3, true, 0, Result::FAILURE, {}, false},
      {3, 9, 0, true, 0, Result::FAILURE, {}, false},
      {6, 12, -1, true, 0, Result::FAILURE, {}, false},
  };
  for (const Row& row : rows) Check(row, "ConnectBackHaul", &QcmapWrapper::ConnectBackhaul);
}

TEST(Backhaul, DisconnectsUnlessDisconnected) {
  const Lines v4 = {"DisconnectBackHaul 1"};
  const Lines v6 = {"DisconnectBackHaul 2"};
  const Row rows[] = {
      {6, 9, 1, true, 0, Result::FAILURE, {}, true},
      {3, 12, 2, true, 0, Result::FAILURE, {}, true},
      {6, 9, 2, true, 0, Result::SUCCESS, v6, false},
      {1, 9, 1, true, 0, Result::SUCCESS, v4, false},
      {3, 9, 1, false, 90, Result::INCOMPATIBLE_STATE, v4, false},
      {5, 9, 1, true, 90, Result::INCOMPATIBLE_STATE, v4, false},
      {3, 9, 1, false, 0, Result::FAILURE, v4, false},
      {3, 9, 1, true, 91, Result::SUCCESS, v4, false},
      {0, 9, 1, true, 0, Result::FAILURE, {}, false},
      {6, 12, 3, true, 0, Result::FAILURE, {}, false},
      {6, 12, 4, true, 0, Result::FAILURE, {}, false},
  };
  for (const Row& row : rows) Check(row, "DisconnectBackHaul", &QcmapWrapper::DisconnectBackhaul);
}

}  // namespace
