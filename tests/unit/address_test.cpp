/// Addresses: their text, mapped errors, what a failure leaves.
#include <arpa/inet.h>

#include "world.h"

namespace {

std::string Text(const DataManager::NetworkConfig& config) {
  return Join(NameOf(config.ip_family), config.address_1, config.address_2, config.address_3);
}

TEST(Address, WritesAddressesAsText) {
  World world;
  DataManager::NetworkConfig config;
  world.script.addresses.v4[0] = 0x0a000001;
  world.script.addresses.v4[2] = 0xffffffff;
  EXPECT_EQ(world.wrapper.GetNetworkConfig(0, IPFamily::IPV4, config), Result::SUCCESS);
  EXPECT_EQ(Text(config), "IPV4 10.0.0.1 0.0.0.0 255.255.255.255");
  world.script.addresses = {};
  inet_pton(AF_INET6, "2001:db8:1111:2222:3333:4444:5555:6666", world.script.addresses.v6[0]);
  inet_pton(AF_INET6, "::ffff:255.255.255.255", world.script.addresses.v6[2]);
  EXPECT_EQ(world.wrapper.GetNetworkConfig(0, IPFamily::IPV6, config), Result::SUCCESS);
  EXPECT_EQ(Text(config), "IPV6 2001:db8:1111:2222:3333:4444:5555:6666 :: ::ffff:255.255.255.255");
}

TEST(Address, FailureLeavesTheTextsAndNoFamily) {
  struct Row {
    IPFamily family;
    qmi_error_type_v01 error;
    Result result;
    /// Sent once the profile is selected, if anything.
    std::string request = "";
  };
  const std::string v4 = "GetNetworkConfiguration 4", v6 = "GetNetworkConfiguration 6";
  const Row rows[] = {{IPFamily::IPV4, QMI_ERR_NO_NETWORK_FOUND_V01, Result::NO_NETWORK, v4},
                      {IPFamily::IPV6, QMI_ERR_CALL_FAILED_V01, Result::FAILURE, v6},
                      {IPFamily::IPV4, QMI_ERR_NONE_V01, Result::FAILURE, v4},
                      {IPFamily::IPV4V6, QMI_ERR_NO_NETWORK_FOUND_V01, Result::FAILURE},
                      {IPFamily::NONE, QMI_ERR_NO_NETWORK_FOUND_V01, Result::FAILURE}};
  for (const Row& row : rows) {
    SCOPED_TRACE(Join("family", NameOf(row.family), "error", NameOf(row.error)));
    World world;
    world.script.Refuse("GetNetworkConfiguration", row.error);
    DataManager::NetworkConfig config = {IPFamily::IPV6, "a", "b", "c"};
    EXPECT_EQ(world.wrapper.GetNetworkConfig(1, row.family, config), row.result);
    EXPECT_EQ(Text(config), "NONE a b c");
    Lines requests = kSelectSecond;
    if (!row.request.empty()) requests.push_back(row.request);
    EXPECT_EQ(world.Sent(), requests);
  }
  DataManager::NetworkConfig config = {IPFamily::IPV6, "a", "b", "c"};
  EXPECT_EQ(World(-1).wrapper.GetNetworkConfig(1, IPFamily::IPV6, config), Result::FAILURE);
  EXPECT_EQ(Text(config), "NONE a b c") << "without a server";
}

}  // namespace
