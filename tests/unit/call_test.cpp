/// The data call: states that need no request, states that cannot be read, errors with a meaning.
#include "world.h"

namespace {

using ConnectStatus = DataManager::ConnectStatus;
using Code = qcmap_msgr_wwan_status_enum_v01;

constexpr Code kV4Connecting = QCMAP_MSGR_WWAN_STATUS_CONNECTING_V01;
constexpr Code kV4Up = QCMAP_MSGR_WWAN_STATUS_CONNECTED_V01;
constexpr Code kV4Down = QCMAP_MSGR_WWAN_STATUS_DISCONNECTED_V01;
constexpr Code kV6Up = QCMAP_MSGR_WWAN_STATUS_IPV6_CONNECTED_V01;
constexpr Code kV6Down = QCMAP_MSGR_WWAN_STATUS_IPV6_DISCONNECTED_V01;
/// The server refuses to report the states.
constexpr Code kUnreadable = {};

TEST(Call, MapsEachCodeInEitherPlace) {
  // The server numbers the states of IPv4 from 1 on in this order, then those of IPv6.
  const ConnectStatus states[] = {ConnectStatus::CONNECTING, ConnectStatus::UNKNOWN,
                                  ConnectStatus::CONNECTED,  ConnectStatus::DISCONNECTING,
                                  ConnectStatus::UNKNOWN,    ConnectStatus::DISCONNECTED};
  const auto expected = [&](int code) {
    return code >= 1 && code <= 12 ? states[(code - 1) % 6] : ConnectStatus::UNKNOWN;
  };
  World world;
  auto v4 = ConnectStatus::UNKNOWN, v6 = ConnectStatus::UNKNOWN;
  for (int code = -1; code <= 14; ++code) {
    SCOPED_TRACE(Join(NameOf(Code{code}), NameOf(Code{13 - code})));
    world.script.wwan_status[0] = code;
    world.script.wwan_status[1] = 13 - code;
    ASSERT_TRUE(world.wrapper.GetWwanConnectStatus(0, v4, v6));
    EXPECT_EQ(v4, expected(code));
    EXPECT_EQ(v6, expected(13 - code));
  }
  v4 = v6 = ConnectStatus::CONNECTED;
  world.script.Refuse("GetWWANStatus");
  EXPECT_FALSE(world.wrapper.GetWwanConnectStatus(0, v4, v6));
  EXPECT_TRUE(v4 == ConnectStatus::CONNECTED && v6 == ConnectStatus::CONNECTED) << "after failure";
}

enum class Request { NOT_SENT, GRANTED, GRANTED_WITH_ERROR, REFUSED };

struct Row {
  IPFamily family;
  Code v4;
  Code v6;
  Request request;
  Result result = Result::SUCCESS;
  qmi_error_type_v01 error = QMI_ERR_INCOMPATIBLE_STATE_V01;
};

void Check(const std::string& name, Result (QcmapWrapper::*operation)(uint32_t, IPFamily),
           const std::vector<Row>& rows) {
  for (const Row& row : rows) {
    SCOPED_TRACE(Join(name, NameOf(row.family), "in", NameOf(row.v4), NameOf(row.v6), "request",
                      NameOf(row.request), NameOf(row.error)));
    World world;
    world.script.wwan_status[0] = row.v4;
    world.script.wwan_status[1] = row.v6;
    if (row.v4 == kUnreadable) world.script.Refuse("GetWWANStatus");
    if (row.request == Request::GRANTED_WITH_ERROR) world.script.Grant(name, row.error);
    if (row.request == Request::REFUSED) world.script.Refuse(name, row.error);
    EXPECT_EQ((world.wrapper.*operation)(1, row.family), row.result);
    Lines requests = {kSelectSecond[0], kSelectSecond[1], "GetWWANStatus"};
    if (row.request != Request::NOT_SENT) {
      requests.push_back(Join(name, static_cast<int>(row.family)));
    }
    EXPECT_EQ(world.Sent(), requests);
  }
}

TEST(Call, ConnectsUnlessConnected) {
  Check("ConnectBackHaul", &QcmapWrapper::ConnectBackhaul,
        {{IPFamily::IPV4, kV4Up, kV6Down, Request::NOT_SENT},
         {IPFamily::IPV6, kV4Up, kV6Down, Request::GRANTED},
         {IPFamily::IPV6, kV4Down, kV6Up, Request::NOT_SENT},
         {IPFamily::IPV4, kV4Connecting, kV6Down, Request::GRANTED_WITH_ERROR},
         {IPFamily::IPV4, kV4Down, kV6Down, Request::REFUSED, Result::FAILURE},
         {IPFamily::IPV4, kUnreadable, kV6Down, Request::GRANTED},
         {IPFamily::IPV6, kUnreadable, kV6Down, Request::GRANTED}});
}

TEST(Call, DisconnectsUnlessDisconnected) {
  Check("DisconnectBackHaul", &QcmapWrapper::DisconnectBackhaul,
        {{IPFamily::IPV4, kV4Down, kV6Up, Request::NOT_SENT, Result::FAILURE},
         {IPFamily::IPV6, kV4Up, kV6Down, Request::NOT_SENT, Result::FAILURE},
         {IPFamily::IPV4, kV4Connecting, kV6Up, Request::GRANTED},
         {IPFamily::IPV4, kV4Up, kV6Up, Request::REFUSED, Result::INCOMPATIBLE_STATE},
         {IPFamily::IPV4, kV4Up, kV6Up, Request::GRANTED_WITH_ERROR, Result::INCOMPATIBLE_STATE},
         {IPFamily::IPV4, kV4Up, kV6Up, Request::REFUSED, Result::FAILURE, QMI_ERR_NONE_V01},
         {IPFamily::IPV4, kV4Up, kV6Up, Request::GRANTED_WITH_ERROR, Result::SUCCESS,
          QMI_ERR_INTERNAL_V01},
         {IPFamily::IPV4, kUnreadable, kV6Up, Request::NOT_SENT, Result::FAILURE}});
}

TEST(Call, IsForOneFamilyAtATime) {
  World world;
  for (const IPFamily family : {IPFamily::NONE, IPFamily::IPV4V6}) {
    const std::string parameters = "Backhaul(uint32_t, mox::util::IPFamily)";
    const std::string text = "unsupporetd IPFamily [" + Join(static_cast<int>(family)) + "]\n";
    EXPECT_EQ(world.wrapper.ConnectBackhaul(0, family), Result::FAILURE);
    EXPECT_EQ(world.wrapper.DisconnectBackhaul(0, family), Result::FAILURE);
    EXPECT_EQ(TakeLog(), (Lines{Line(3, "mox::Result @Connect" + parameters, text),
                                Line(3, "mox::Result @Disconnect" + parameters, text)}));
    EXPECT_EQ(world.Sent(), Lines(2, "GetWWANStatus"));
  }
}

}  // namespace
