/// LAN: order of the checks, the derived range, what reaches the server.
#include "world.h"

namespace {

constexpr char kSet[] =
    "bool @SetLanConfig(std::string, std::string, bool, std::string, std::string, uint32_t)";
constexpr bool kDhcp = true, kNoDhcp = false;

TEST(Lan, ChecksInOrderAndStopsAtTheFirstRefusal) {
  struct Row {
    bool dhcp;
    std::string start, end;
    std::set<std::string> bad_addresses;
    std::string last_check;
    /// What the log names; empty: no line.
    std::string refused;
  };
  const Row rows[] = {
      {kDhcp, "s", "e", {"g", "m", "s", "e"}, "IsValidAddress g 0", "gateway ip [g]"},
      {kDhcp, "s", "e", {"m", "s", "e"}, "IsValidAddress m 0", "netmask [m]"},
      {kDhcp, "s", "e", {"s", "e"}, "IsValidAddress s 0", "dhcp start ip [s]"},
      {kDhcp, "", "e", {"e"}, "IsValidAddress e 0", "dhcp end ip [e]"},
      {kDhcp, "s", "", {"s"}, "IsValidAddress s 0", "dhcp start ip [s]"},
      {kDhcp, "s", "e", {}, "CheckIpv4DhcpRangeValidation g m s e", ""},
      {kDhcp, "", "e", {}, "GetIpv4DhcpRange g m", ""},
      {kNoDhcp, "s", "e", {"m", "s"}, "IsValidAddress m 0", "netmask [m]"}};
  for (const Row& row : rows) {
    SCOPED_TRACE("last check: " + row.last_check);
    World world;
    world.script.bad_addresses = row.bad_addresses;
    world.script.range_fits = false;
    EXPECT_FALSE(world.wrapper.SetLanConfig("g", "m", row.dhcp, row.start, row.end, 0));
    EXPECT_EQ(world.Sent(), Lines());
    Lines log = {Line(7, kSet, "dhcp_start_ip " + row.start + " dhcp_end_ip " + row.end + "\n")};
    if (!row.refused.empty()) log.push_back(Line(3, kSet, "check " + row.refused + "\n"));
    EXPECT_EQ(TakeLog(), log);
    EXPECT_EQ(world.script.utility_calls.back(), row.last_check);
  }
}

TEST(Lan, SendsWhatWasGivenOrDerivedWhateverWasThere) {
  struct Row {
    bool dhcp;
    std::string start, end;
    uint32_t lease;
    std::string sent;
  };
  const Row rows[] = {{kDhcp, "10.0.0.5", "10.0.0.9", 0, "1 a000005 a000009 0"},
                      {kDhcp, "", "", 7, "1 a000002 a0000fe 7"},
                      {kDhcp, "10.0.0.5", "", ~0u, "1 a000002 a0000fe 4294967295"},
                      {kNoDhcp, "", "", 7, "0 ffffffff ffffffff 7"},
                      {kNoDhcp, "no address", "10.0.0.9", 7, "0 ffffffff a000009 7"}};
  for (const Row& row : rows) {
    World world;
    world.script.derived_range = {"10.0.0.2", "10.0.0.254"};
    world.script.Refuse("GetLANConfig");
    EXPECT_TRUE(world.wrapper.SetLanConfig("10.0.0.1", "255.0.0.0", row.dhcp, row.start, row.end,
                                           row.lease));
    EXPECT_EQ(world.Sent(),
              (Lines{"GetLANConfig", "SetLANConfig a000001 ff000000 " + row.sent + " (error 59)"}));
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
