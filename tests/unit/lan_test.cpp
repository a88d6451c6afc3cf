/// LAN: order of the checks, the derived range, what reaches the server.
#include "world.h"

namespace {

constexpr char kSet[] =
    "bool @SetLanConfig(std::string, std::string, bool, std::string, std::string, uint32_t)";

TEST(Lan, ChecksInOrderAndStopsAtTheFirstRefusal) {
  // DHCP, start, end, bad addresses, what is refused (none: silent), the last check.
  const std::tuple<bool, std::string, std::string, std::set<std::string>, std::string, std::string>
      rows[] = {{true, "s", "e", {"g", "m", "s", "e"}, "gateway ip [g]", "IsValidAddress g 0"},
                {true, "s", "e", {"m", "s", "e"}, "netmask [m]", "IsValidAddress m 0"},
                {true, "s", "e", {"s", "e"}, "dhcp start ip [s]", "IsValidAddress s 0"},
                {true, "", "e", {"e"}, "dhcp end ip [e]", "IsValidAddress e 0"},
                {true, "s", "", {"s"}, "dhcp start ip [s]", "IsValidAddress s 0"},
                {true, "s", "e", {}, "", "CheckIpv4DhcpRangeValidation g m s e"},
                {true, "", "e", {}, "", "GetIpv4DhcpRange g m"},
                {false, "s", "e", {"m", "s"}, "netmask [m]", "IsValidAddress m 0"}};
  for (const auto& [dhcp, start, end, bad, refused, last_check] : rows) {
    World world;
    world.script.bad_addresses = bad;
    world.script.range_fits = false;
    EXPECT_FALSE(world.wrapper.SetLanConfig("g", "m", dhcp, start, end, 0));
    EXPECT_EQ(world.Sent(), Lines());
    Lines log = {Line(7, kSet, "dhcp_start_ip " + start + " dhcp_end_ip " + end + "\n")};
    if (!refused.empty()) log.push_back(Line(3, kSet, "check " + refused + "\n"));
    EXPECT_EQ(TakeLog(), log);
    EXPECT_EQ(world.script.utility_calls.back(), last_check);
  }
}

TEST(Lan, SendsWhatWasGivenOrDerivedWhateverWasThere) {
  const std::tuple<bool, std::string, std::string, uint32_t, std::string> rows[] = {
      {true, "10.0.0.5", "10.0.0.9", 0, "1 a000005 a000009 0"},
      {true, "", "", 7, "1 a000002 a0000fe 7"},
      {true, "10.0.0.5", "", ~0u, "1 a000002 a0000fe 4294967295"},
      {false, "", "", 7, "0 ffffffff ffffffff 7"},
      {false, "no address", "10.0.0.9", 7, "0 ffffffff a000009 7"}};
  for (const auto& [dhcp, start, end, lease, sent] : rows) {
    World world;
    world.script.derived_range = {"10.0.0.2", "10.0.0.254"};
    world.script.Refuse("GetLANConfig");
    EXPECT_TRUE(world.wrapper.SetLanConfig("10.0.0.1", "255.0.0.0", dhcp, start, end, lease));
    EXPECT_EQ(world.Sent(),
              (Lines{"GetLANConfig", "SetLANConfig a000001 ff000000 " + sent + " (error 59)"}));
    EXPECT_EQ(TakeLog().at(1),
              Line(4, kSet, "QCMAP_Client::GetLanConfig error 59[0x3b] : Just warning\n"));
  }
}

TEST(Lan, ReadoutFillsAllOrNothing) {
  World world;
  std::string gateway = "g", netmask = "m", start = "s", end = "e";
  bool dhcp = false;
  int lease = 1;
  world.script.Refuse("GetLANConfig");
  EXPECT_FALSE(world.wrapper.GetLanConfig(gateway, netmask, dhcp, start, end, lease));
  EXPECT_EQ(Join(gateway, netmask, dhcp, start, end, lease), "g m 0 s e 1");
  world.script.Grant("GetLANConfig");
  world.script.lan = {0xc0a80001, 0xffff0000, 255, 0, ~0u, ~0u};
  EXPECT_TRUE(world.wrapper.GetLanConfig(gateway, netmask, dhcp, start, end, lease));
  EXPECT_EQ(Join(gateway, netmask, dhcp, start, end, lease),
            "192.168.0.1 255.255.0.0 1 0.0.0.0 255.255.255.255 -1");
}

}  // namespace
