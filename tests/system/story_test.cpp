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

TEST_F(Story, CountersAndIndicationsReachTheRightClients) {
  Start({"--call-time", "1", "--traffic", "0", "--console"});
  QcmapWrapper& wrapper = *QcmapWrapper::GetInstance();
  Events events(wrapper);
  static std::atomic<int> seen[2];
  const QCMAP_Client onlooker([](qmi_client_struct*, unsigned int id, void*, unsigned int, void*) {
    if (id <= QMI_QCMAP_MSGR_WWAN_STATUS_IND_V01) ++seen[id == QMI_QCMAP_MSGR_WWAN_STATUS_IND_V01];
  });
  for (const IPFamily family : {IPFamily::IPV4, IPFamily::IPV6})
    EXPECT_EQ(wrapper.ConnectBackhaul(1, family), kSuccess);
  EXPECT_EQ(events.WaitFor(4).size(), 4u);
  EXPECT_TRUE(Eventually([&] { return seen[1] == 4; })) << "each step up";
  EXPECT_EQ(seen[0], 0) << "outcomes of another session's requests";

  Console("traffic 1 4 5000000000 1\ntraffic 1 6 2000 0");
  QcmapWrapper::WWANStatics counters;
  EXPECT_EQ(wrapper.GetWWANStatistics(1, IPFamily::IPV4V6, counters), kSuccess);
  EXPECT_EQ(counters.counter64_1, 5000002000u);
  EXPECT_EQ(counters.counter32_2, 1u);
  EXPECT_EQ(wrapper.ResetWWANStatistics(1, IPFamily::IPV4), kSuccess);
  EXPECT_EQ(wrapper.GetWWANStatistics(1, IPFamily::IPV4V6, counters), kSuccess);
  EXPECT_EQ(counters.counter64_1, 2000u);
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
