/// Switches: flags both ways, and what a failure leaves.
#include "world.h"

namespace {

TEST(Switch, CarriesFlagsAndARefusalLeavesTheCallersAsItWas) {
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

}  // namespace
