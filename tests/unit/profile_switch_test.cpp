/// Switches: values in both directions, and the caller's flag after a failure.
#include "session.h"

namespace {

TEST(ProfileSwitch, GoesInAndOutAsZeroOrOne) {
  Session session;
  EXPECT_TRUE(session.wrapper.SetAutoConnect(0, false) && session.wrapper.SetRoaming(0, true));
  EXPECT_EQ(session.Sent(), (Lines{"SetAutoconnect 0", "SetRoaming 1"}));
  for (const auto get : {&QcmapWrapper::GetAutoConnect, &QcmapWrapper::GetRoaming,
                         &QcmapWrapper::GetIpv4State, &QcmapWrapper::GetIpv6State}) {
    for (const bool value : {true, false}) {
      session.script.flag = value;
      bool enabled = !value;
      EXPECT_FALSE((session.wrapper.*get)(9, enabled));
      EXPECT_EQ(enabled, !value) << "after failure";
      EXPECT_TRUE((session.wrapper.*get)(0, enabled));
      EXPECT_EQ(enabled, value);
    }
  }
}

}  // namespace
