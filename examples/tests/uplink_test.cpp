/// How an Uplink behaves when the network does not. Each test runs against a server of its own.
#include "uplink.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <string>

void Control(const std::string& command) {
  ASSERT_EQ(system(("mvq-qcmap-sim ctl " + command).c_str()), 0) << command;
}

TEST(Uplink, ComesUp) {
  Uplink uplink(1);
  EXPECT_TRUE(uplink.Start());
  EXPECT_TRUE(uplink.WaitFor(1));
}

/// The scenario no_network has switched the network off.
TEST(Uplink, IsRefusedWithoutANetwork) {
  EXPECT_FALSE(Uplink(1).Start());
}

TEST(Uplink, ReconnectsWhenItIsDropped) {
  Uplink uplink(1);
  EXPECT_TRUE(uplink.Start());
  EXPECT_TRUE(uplink.WaitFor(1));
  Control("drop 1 4");
  EXPECT_TRUE(uplink.WaitFor(2));
}

TEST(Uplink, IsDownWhenItsServerIsLost) {
  Uplink uplink(1);
  EXPECT_TRUE(uplink.Start());
  EXPECT_TRUE(uplink.WaitFor(1));
  Control("die GetWWANStatus before");
  EXPECT_FALSE(uplink.IsUp());
  EXPECT_FALSE(uplink.Start());
}
