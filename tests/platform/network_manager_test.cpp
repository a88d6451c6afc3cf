/// Which addresses, DHCP ranges and MAC addresses the utility library accepts.
#include <gtest/gtest.h>
#include <mox/util/network_manager.h>

#include <string>

namespace {

using mox::util::NetworkManager;

TEST(NetworkManager, AcceptsOnlyStrictDottedQuads) {
  for (const char* good : {"0.0.0.0", "192.168.10.1", "255.255.255.255"})
    EXPECT_TRUE(NetworkManager::IsValidAddress(good, false)) << good;
  for (const std::string bad : {"", "1", "1.2.3", "1.2.3.4.5", "1.2.3.256", "01.2.3.4", " 1.2.3.4",
                                "1.2.3.4 ", "0x1.2.3.4", "1.2.3.-4", "1..3.4", "::1"})
    EXPECT_FALSE(NetworkManager::IsValidAddress(bad, false)) << bad;
  EXPECT_FALSE(NetworkManager::IsValidAddress(std::string("1.2.3.4\0x", 9), false));
}

TEST(NetworkManager, KeepsTheDhcpRangeInsideTheSubnetAndOffTheGateway) {
  const struct {
    const char *gateway, *netmask, *start, *end;
  } derived[] = {{"10.0.0.1", "255.255.255.0", "10.0.0.2", "10.0.0.254"},
                 {"10.0.0.200", "255.255.255.0", "10.0.0.1", "10.0.0.199"},
                 {"10.0.0.1", "255.255.255.252", "10.0.0.2", "10.0.0.2"}};
  for (const auto& [gateway, netmask, first, last] : derived) {
    std::string start, end;
    EXPECT_TRUE(NetworkManager::GetIpv4DhcpRange(gateway, netmask, start, end)) << gateway;
    EXPECT_EQ(start + " to " + end, std::string(first) + " to " + last) << gateway;
    EXPECT_TRUE(NetworkManager::CheckIpv4DhcpRangeValidation(gateway, netmask, start, end));
  }
  const struct {
    const char *gateway, *netmask;
  } without_room[] = {{"10.0.0.1", "255.255.255.254"}, {"10.0.0.0", "255.255.255.0"},
                      {"10.0.0.1", "255.0.255.0"},     {"10.0.0.1", "255.255.255.256"},
                      {"10.0.0.256", "255.255.255.0"}, {"10.0.0.1", "0.0.0.0"}};
  for (const auto& [gateway, netmask] : without_room) {
    std::string start = "10.0.0.2", end = "10.0.0.2";
    EXPECT_FALSE(NetworkManager::GetIpv4DhcpRange(gateway, netmask, start, end)) << netmask;
    EXPECT_EQ(start + " to " + end, "10.0.0.2 to 10.0.0.2") << "unchanged: " << netmask;
    EXPECT_FALSE(NetworkManager::CheckIpv4DhcpRangeValidation(gateway, netmask, start, end));
  }
  const auto fits = [](const char* start, const char* end) {
    return NetworkManager::CheckIpv4DhcpRangeValidation("10.0.0.9", "255.255.255.0", start, end);
  };
  EXPECT_FALSE(fits("10.0.0.1", "10.0.0.9")) << "the gateway at the end";
  EXPECT_FALSE(fits("10.0.0.8", "10.0.0.1")) << "out of order";
  EXPECT_FALSE(fits("10.0.0.0", "10.0.0.8")) << "the network's address";
  EXPECT_FALSE(fits("10.0.0.10", "10.0.0.255")) << "the broadcast address";
  EXPECT_FALSE(fits("10.0.1.10", "10.0.1.20")) << "another subnet";
  EXPECT_FALSE(fits("", "10.0.0.8") || fits("10.0.0.1", "")) << "no address";
}

TEST(NetworkManager, AcceptsMacAddressesOfSixPairsWithOneSeparator) {
  for (const char* good : {"00:11:22:aa:BB:ff", "00-11-22-aa-BB-ff"})
    EXPECT_TRUE(NetworkManager::CheckIpv4MacValidation(good)) << good;
  for (const char* bad : {"", "host", "00:11:22:aa:bb", "00:11:22:aa:bb:cg", "00:11:22-aa:bb:cc",
                          "001122aabbcc", "00.11.22.aa.bb.cc", "00:11:22:aa:bb:cc "})
    EXPECT_FALSE(NetworkManager::CheckIpv4MacValidation(bad)) << bad;
}

}  // namespace
