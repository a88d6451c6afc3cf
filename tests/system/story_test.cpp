/// What device software does with the modem, through the real library and a real server.
#include <atomic>

#include "simulated_server.h"

namespace {

using mox::wwan::DataManager;
using mox::wwan::MobileapManager;
using Story = SimulatedServer;

constexpr auto kSuccess = Result::SUCCESS;
/// The tethering mode of that interface.
constexpr int32_t kEth0 = 3;

TEST_F(Story, CallComesUpAndGoesDownWithEventsAddressesAndCounters) {
  Start({"--call-time", "20", "--traffic", "0", "--console"});
  QcmapWrapper& wrapper = *QcmapWrapper::GetInstance();
  Events events(wrapper);
  static std::atomic<int> seen[2];
  const QCMAP_Client onlooker([](qmi_client_struct*, unsigned int id, void*, unsigned int, void*) {
    if (id <= QMI_QCMAP_MSGR_WWAN_STATUS_IND_V01) ++seen[id == QMI_QCMAP_MSGR_WWAN_STATUS_IND_V01];
  });
  DataManager::NetworkConfig config;
  EXPECT_EQ(wrapper.GetNetworkConfig(1, IPFamily::IPV4, config), Result::NO_NETWORK);
  EXPECT_EQ(wrapper.ConnectBackhaul(1, IPFamily::IPV4), kSuccess);
  EXPECT_EQ(events.WaitFor(2).size(), 2u);
  EXPECT_EQ(wrapper.ConnectBackhaul(1, IPFamily::IPV6), kSuccess);
  EXPECT_EQ(events.WaitFor(4).size(), 4u);

  EXPECT_EQ(wrapper.GetNetworkConfig(1, IPFamily::IPV4, config), kSuccess);
  EXPECT_EQ(config.address_1 + " " + config.address_2, "192.0.2.102 198.51.100.1");
  EXPECT_EQ(wrapper.GetNetworkConfig(1, IPFamily::IPV6, config), kSuccess);
  EXPECT_EQ(config.address_1 + " " + config.address_3, "2001:db8::66 2001:db8:53::2");
  Console("traffic 1 4 5000000000 1\ntraffic 1 6 2000 0");
  QcmapWrapper::WWANStatics counters;
  EXPECT_EQ(wrapper.GetWWANStatistics(1, IPFamily::IPV4V6, counters), kSuccess);
  EXPECT_EQ(counters.counter64_1, 5000002000u);
  EXPECT_EQ(counters.counter32_2, 1u);
  EXPECT_EQ(wrapper.ResetWWANStatistics(1, IPFamily::IPV4), kSuccess);
  EXPECT_EQ(wrapper.GetWWANStatistics(1, IPFamily::IPV4V6, counters), kSuccess);
  EXPECT_EQ(counters.counter64_1, 2000u);

  EXPECT_EQ(wrapper.DisconnectBackhaul(1, IPFamily::IPV4), kSuccess);
  EXPECT_EQ(events.WaitFor(6).size(), 6u);
  EXPECT_EQ(wrapper.DisconnectBackhaul(1, IPFamily::IPV4), Result::FAILURE);
  Console("drop 1 6");
  const std::vector<std::string> expected = {
      "BRING_UP_CONNECTED 102 ipv4",     "WWAN_CONNECTED 102 ipv4",
      "BRING_UP_CONNECTED 102 ipv6",     "WWAN_CONNECTED 102 ipv6",
      "TEAR_DOWN_DISCONNECTED 102 ipv4", "WWAN_DISCONNECTED 102 ipv4",
      "WWAN_DISCONNECTED 102 ipv6"};
  EXPECT_EQ(events.WaitFor(7), expected);
  EXPECT_TRUE(Eventually([&] { return seen[1] == 7; })) << "each step up and down";
  EXPECT_EQ(seen[0], 0) << "outcomes of another session's requests";
}

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

TEST_F(Story, VlansAreMappedToTheirProfilesAndPassthroughToItsHost) {
  Start({"--call-time", "1", "--console"});
  QcmapWrapper& wrapper = *QcmapWrapper::GetInstance();
  Events events(wrapper);
  EXPECT_EQ(wrapper.ConnectBackhaul(0, IPFamily::IPV4), kSuccess);
  EXPECT_EQ(wrapper.ConnectBackhaul(2, IPFamily::IPV4), kSuccess);
  EXPECT_EQ(events.WaitFor(4).size(), 4u);
  MobileapManager::VlanConfig vlans[] = {{kEth0, 100, 0}, {kEth0, 4094, 2}};
  for (auto& vlan : vlans) {
    EXPECT_FALSE(wrapper.SetPdnToVlanMapping(vlan)) << "no such VLAN yet";
    EXPECT_TRUE(wrapper.SetVlanConfig(vlan));
    EXPECT_FALSE(wrapper.SetVlanConfig(vlan)) << "there already";
    EXPECT_TRUE(wrapper.SetPdnToVlanMapping(vlan));
    EXPECT_FALSE(wrapper.DeleteVlanConfig(vlan)) << "mapped";
  }
  EXPECT_FALSE(wrapper.DeleteWwanPolicy(2)) << "mapped";
  std::vector<MobileapManager::VlanMapping> mappings;
  ASSERT_TRUE(wrapper.GetPdnToVlanMapping(mappings));
  ASSERT_EQ(mappings.size(), 2u);
  Console("drop 2 4");
  EXPECT_EQ(events.WaitFor(5).back(), "WWAN_DISCONNECTED 103 ipv4");
  EXPECT_EQ(mappings[1].vlan_id, 4094);
  EXPECT_EQ(mappings[1].profile_index, 2);
  vlans[1].profile_index = -1;
  for (auto& vlan : vlans) {
    EXPECT_TRUE(wrapper.DeletePdnToVlanMapping(vlan));
    EXPECT_TRUE(wrapper.DeleteVlanConfig(vlan));
  }
  EXPECT_TRUE(wrapper.DeleteWwanPolicy(2));

  MobileapManager::IpPassthroughConfig host, read;
  bool enabled = false;
  host.device_type = MobileapManager::DeviceType::USB_HOST;
  host.host_device_name = std::string(100, 'h');
  EXPECT_TRUE(wrapper.SetIpPassthrough(true, host));
  EXPECT_TRUE(wrapper.GetIpPassthrough(enabled, read));
  EXPECT_TRUE(enabled);
  EXPECT_EQ(read.host_device_name, host.host_device_name);
  EXPECT_EQ(read.pt_state, 2) << "active, since profile 0 has a call";
}

TEST_F(Story, ThreadsAndCallbacksWorkAtTheSameTime) {
  Start({"--call-time", "1"});
  QcmapWrapper& wrapper = *QcmapWrapper::GetInstance();
  std::atomic<int> failed{0};
  Events events(wrapper, [&] {
    DataManager::ConnectStatus v4, v6;
    if (!wrapper.GetWwanConnectStatus(0, v4, v6) || !wrapper.EnableIpv4(0)) ++failed;
  });
  std::vector<std::thread> threads;
  for (int i = 0; i < 8; ++i) {
    threads.emplace_back([&] {
      for (int round = 0; round < 25; ++round) {
        std::vector<DataManager::WwanPolicy> policies;
        DataManager::NetworkConfig config;
        if (!wrapper.GetWwanPolicies(policies) || policies.size() != 3) ++failed;
        if (wrapper.GetNetworkConfig(0, IPFamily::IPV6, config) != Result::NO_NETWORK) ++failed;
      }
    });
  }
  for (size_t round = 0; round < 10; ++round) {
    EXPECT_EQ(wrapper.ConnectBackhaul(0, IPFamily::IPV4), kSuccess);
    EXPECT_EQ(events.WaitFor(4 * round + 2).size(), 4 * round + 2);
    EXPECT_EQ(wrapper.DisconnectBackhaul(0, IPFamily::IPV4), kSuccess);
    EXPECT_EQ(events.WaitFor(4 * round + 4).size(), 4 * round + 4);
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(failed, 0);
}

}  // namespace
