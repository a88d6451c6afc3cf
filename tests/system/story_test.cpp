/// What device software does with the modem, through the real library and a real server.
#include <atomic>

#include "simulated_server.h"

namespace {

using mox::wwan::DataManager;
using Story = SimulatedServer;

constexpr auto kSuccess = Result::SUCCESS;

TEST_F(Story, NetworkThatComesAndGoesIsFollowedByTheCalls) {
  Start({"--call-time", "300", "--network", "off", "--console"});
  QcmapWrapper& wrapper = *QcmapWrapper::GetInstance();
  Events events(wrapper);
  EXPECT_TRUE(wrapper.SetAutoConnect(2, true));
  EXPECT_TRUE(wrapper.DisableIpv6(2));
  EXPECT_EQ(wrapper.ConnectBackhaul(2, IPFamily::IPV4), Result::FAILURE);
  Console("network on");
  EXPECT_EQ(events.WaitFor(1).size(), 1u);
  EXPECT_TRUE(wrapper.EnableIpv6(2));
  EXPECT_EQ(events.WaitFor(2).size(), 2u);
  EXPECT_EQ(wrapper.ConnectBackhaul(0, IPFamily::IPV6), kSuccess);
  Console("network off");
  const std::vector<std::string> expected = {
      "WWAN_CONNECTED 103 ipv4", "WWAN_CONNECTED 103 ipv6", "BRING_UP_CONNECTION_FAILED 101 ipv6",
      "WWAN_DISCONNECTED 103 ipv4", "WWAN_DISCONNECTED 103 ipv6"};
  EXPECT_EQ(events.WaitFor(5), expected);
}

TEST_F(Story, CallbacksUseTheLibraryWhileOtherThreadsDo) {
  Start({"--call-time", "1"});
  QcmapWrapper& wrapper = *QcmapWrapper::GetInstance();
  std::atomic<int> failed{0};
  Events events(wrapper, [&] {
    DataManager::ConnectStatus v4, v6;
    if (!wrapper.GetWwanConnectStatus(0, v4, v6) || !wrapper.EnableIpv4(0)) ++failed;
  });
  std::thread other([&] {
    for (int round = 0; round < 200; ++round) failed += !wrapper.ActivateLan();
  });
  for (size_t round = 1; round <= 10; ++round) {
    EXPECT_EQ(wrapper.ConnectBackhaul(0, IPFamily::IPV4), kSuccess);
    EXPECT_EQ(events.WaitFor(4 * round - 2).size(), 4 * round - 2);
    EXPECT_EQ(wrapper.DisconnectBackhaul(0, IPFamily::IPV4), kSuccess);
    EXPECT_EQ(events.WaitFor(4 * round).size(), 4 * round);
  }
  other.join();
  EXPECT_EQ(failed, 0);
}

}  // namespace
