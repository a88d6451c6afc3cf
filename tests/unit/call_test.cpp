/// The data call: states that need no request, states that cannot be read, errors with a meaning.
#include "world.h"

namespace {

using ConnectStatus = DataManager::ConnectStatus;

TEST(Call, MapsEachCodeInEitherPlace) {
  const int expected[] = {0, 0, 1, 0, 2, 3, 0, 4, 1, 0, 2, 3, 0, 4, 0, 0};  // from code -1 on
  World world;
  auto v4 = ConnectStatus::UNKNOWN, v6 = ConnectStatus::UNKNOWN;
  for (int code = -1; code <= 14; ++code) {
    world.script.wwan_status[0] = code;
    world.script.wwan_status[1] = 13 - code;
    ASSERT_TRUE(world.wrapper.GetWwanConnectStatus(0, v4, v6));
    EXPECT_EQ(v4, ConnectStatus{expected[code + 1]}) << "code " << code;
    EXPECT_EQ(v6, ConnectStatus{expected[14 - code]}) << "code " << 13 - code;
  }
  v4 = v6 = ConnectStatus::CONNECTED;
  world.script.Refuse("GetWWANStatus");
  EXPECT_FALSE(world.wrapper.GetWwanConnectStatus(0, v4, v6));
  EXPECT_TRUE(v4 == ConnectStatus::CONNECTED && v6 == ConnectStatus::CONNECTED) << "after failure";
}

struct Row {
  int v4_code, v6_code;  // 0: the status request is refused
  int family;
  bool granted;
  int error, result;
  bool asks;
  std::string log;  // r: refused status, u: unsupported family, t: trace, e: error
};

void Check(const Row& row, const std::string& name,
           Result (QcmapWrapper::*operation)(uint32_t, IPFamily)) {
  SCOPED_TRACE(Join(name, "family", row.family, "codes", row.v4_code, row.v6_code));
  World world;
  world.script.wwan_status[0] = row.v4_code;
  world.script.wwan_status[1] = row.v6_code;
  if (row.v4_code == 0) world.script.Refuse("GetWWANStatus");
  row.granted ? world.script.Grant(name, row.error) : world.script.Refuse(name, row.error);
  EXPECT_EQ((world.wrapper.*operation)(1, IPFamily{row.family}), Result{row.result});
  Lines requests = {kSelectSecond[0], kSelectSecond[1], "GetWWANStatus"};
  if (row.asks) requests.push_back(Join(name, row.family));
  EXPECT_EQ(world.Sent(), requests);
  const std::string unsupported = ": unsupporetd IPFamily [" + std::to_string(row.family) + "]\n";
  std::string kinds;
  for (const std::string& line : TakeLog()) {
    const auto tells = [&](const std::string& text) {
      return line.find(text) != std::string::npos;
    };
    kinds += tells(unsupported) ? 'u' : line[0] == '7' ? 't' : tells("GetWWANStatus") ? 'r' : 'e';
  }
  EXPECT_EQ(kinds, row.log);
}

TEST(Call, ConnectsUnlessConnected) {
  const Row rows[] = {{3, 12, 1, true, 0, 0, false, ""},  {3, 12, 2, true, 0, 0, true, "t"},
                      {6, 9, 2, true, 0, 0, false, ""},   {1, 12, 1, true, 0, 0, true, "t"},
                      {4, 12, 1, true, 90, 0, true, "t"}, {2, 12, 1, false, 90, 1, true, "te"},
                      {0, 12, 1, true, 0, 0, true, "rt"}, {0, 12, 2, true, 0, 0, true, "rt"},
                      {3, 9, 3, true, 0, 1, false, "u"},  {6, 12, -1, true, 0, 1, false, "u"}};
  for (const Row& row : rows) Check(row, "ConnectBackHaul", &QcmapWrapper::ConnectBackhaul);
}

TEST(Call, DisconnectsUnlessDisconnected) {
  const Row rows[] = {{6, 9, 1, true, 0, 1, false, ""},     {3, 12, 2, true, 0, 1, false, ""},
                      {6, 9, 2, true, 0, 0, true, "t"},     {1, 9, 1, true, 0, 0, true, "t"},
                      {3, 9, 1, false, 90, 23, true, "te"}, {5, 9, 1, true, 90, 23, true, "t"},
                      {3, 9, 1, false, 0, 1, true, "te"},   {3, 9, 1, true, 91, 0, true, "t"},
                      {0, 9, 1, true, 0, 1, false, "r"},    {6, 12, 3, true, 0, 1, false, "u"}};
  for (const Row& row : rows) Check(row, "DisconnectBackHaul", &QcmapWrapper::DisconnectBackhaul);
}

}  // namespace
