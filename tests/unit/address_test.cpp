/// Addresses: their text, mapped errors, what a failure leaves.
#include <arpa/inet.h>

#include "world.h"

namespace {

std::string Text(const DataManager::NetworkConfig& config) {
  return Join(static_cast<int>(config.ip_family), config.address_1, config.address_2,
              config.address_3);
}

TEST(Address, WritesAddressesAsText) {
  World world;
  DataManager::NetworkConfig config;
  world.script.addresses.v4[0] = 0x0a000001;
  world.script.addresses.v4[2] = 0xffffffff;
  EXPECT_EQ(world.wrapper.GetNetworkConfig(0, IPFamily::IPV4, config), Result::SUCCESS);
  EXPECT_EQ(Text(config), "1 10.0.0.1 0.0.0.0 255.255.255.255");
  world.script.addresses = {};
  inet_pton(AF_INET6, "2001:db8:1111:2222:3333:4444:5555:6666", world.script.addresses.v6[0]);
  inet_pton(AF_INET6, "::ffff:255.255.255.255", world.script.addresses.v6[2]);
  EXPECT_EQ(world.wrapper.GetNetworkConfig(0, IPFamily::IPV6, config), Result::SUCCESS);
  EXPECT_EQ(Text(config), "2 2001:db8:1111:2222:3333:4444:5555:6666 :: ::ffff:255.255.255.255");
}

TEST(Address, FailureLeavesTheTextsAndNoFamily) {
  // Family, error, result, lines logged.
  const std::tuple<int, int, int, size_t> rows[] = {{1, 13, 21, 1}, {2, 13, 21, 1}, {2, 12, 1, 1},
                                                    {1, 0, 1, 1},   {3, 13, 1, 0},  {0, 13, 1, 0}};
  for (const auto& [family, error, result, lines] : rows) {
    World world;
    world.script.Refuse("GetNetworkConfiguration", error);
    DataManager::NetworkConfig config = {IPFamily::IPV6, "a", "b", "c"};
    EXPECT_EQ(world.wrapper.GetNetworkConfig(1, IPFamily{family}, config), Result{result})
        << "family " << family << " error " << error;
    EXPECT_EQ(Text(config), "0 a b c");
    EXPECT_EQ(world.Sent().size(), 2 + lines) << "selected in any case";
    EXPECT_EQ(TakeLog().size(), lines);
  }
  World world(-1);
  DataManager::NetworkConfig config = {IPFamily::IPV6, "a", "b", "c"};
  EXPECT_EQ(world.wrapper.GetNetworkConfig(1, IPFamily::IPV6, config), Result::FAILURE);
  EXPECT_EQ(Text(config), "0 a b c");
}

}  // namespace
