/// Addresses: their text, mapped errors, what a failure leaves.
#include <arpa/inet.h>

#include "session.h"

namespace {

using testing::ElementsAre;

TEST(NetworkConfig, WritesAddressesAsText) {
  Session session;
  DataManager::NetworkConfig config;
  session.script.addresses.v4[0] = 0x0a000001;
  session.script.addresses.v4[2] = 0xffffffff;
  EXPECT_EQ(session.wrapper.GetNetworkConfig(0, IPFamily::IPV4, config), Result::SUCCESS);
  EXPECT_EQ(config.ip_family, IPFamily::IPV4);
  EXPECT_THAT((Lines{config.address_1, config.address_2, config.address_3}),
              ElementsAre("10.0.0.1", "0.0.0.0", "255.255.255.255"));
  session.script.addresses = {};
  const char* const longest = "2001:db8:1111:2222:3333:4444:5555:6666";
  ASSERT_EQ(inet_pton(AF_INET6, longest, session.script.addresses.v6[0]), 1);
  ASSERT_EQ(inet_pton(AF_INET6, "::ffff:255.255.255.255", session.script.addresses.v6[2]), 1);
  EXPECT_EQ(session.wrapper.GetNetworkConfig(0, IPFamily::IPV6, config), Result::SUCCESS);
  EXPECT_EQ(config.ip_family, IPFamily::IPV6);
  EXPECT_THAT((Lines{config.address_1, config.address_2, config.address_3}),
              ElementsAre(longest, "::", "::ffff:255.255.255.255"));
}

TEST(NetworkConfig, FailureLeavesTheTextsAndNoFamily) {
  struct {
    int family;
    int error;
    Result result;
    size_t lines;
  } const rows[] = {{1, 13, Result::NO_NETWORK, 1}, {2, 13, Result::NO_NETWORK, 1},
                    {2, 12, Result::FAILURE, 1},    {1, 0, Result::FAILURE, 1},
                    {3, 13, Result::FAILURE, 0},    {0, 13, Result::FAILURE, 0}};
  for (const auto& row : rows) {
    Session session;
    session.script.Refuse("GetNetworkConfiguration", row.error);
    DataManager::NetworkConfig config = {IPFamily::IPV6, "a", "b", "c"};
    EXPECT_EQ(session.wrapper.GetNetworkConfig(1, static_cast<IPFamily>(row.family), config),
              row.result)
        << "family " << row.family << " error " << row.error;
    EXPECT_EQ(config.ip_family, IPFamily::NONE);
    EXPECT_EQ(config.address_1 + config.address_2 + config.address_3, "abc");
    EXPECT_EQ(session.script.TakeRequests().size(), 2 + row.lines) << "selected in any case";
    EXPECT_EQ(TakeLog().size(), row.lines);
  }
}

}  // namespace
