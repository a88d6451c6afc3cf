/// LAN: order of the checks, the derived range, what reaches the server.
#include "session.h"

namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;

constexpr char kSet[] =
    "bool @SetLanConfig(std::string, std::string, bool, std::string, std::string, uint32_t)";

TEST(LanConfig, ChecksInOrderAndStopsAtTheFirstRefusal) {
  struct {
    bool dhcp;
    std::string start;
    std::string end;
    std::set<std::string> bad;
    std::string refusal;  // empty: silent
    Lines asked;
  } const rows[] = {
      {true, "s", "e", {"g", "m", "s", "e"}, "check gateway ip [g]\n", {"IsValidAddress g 0"}},
      {true, "s", "e", {"m", "s", "e"}, "check netmask [m]\n", {"IsValidAddress m 0"}},
      {true, "s", "e", {"s", "e"}, "check dhcp start ip [s]\n", {"IsValidAddress s 0"}},
      {true, "s", "e", {"e"}, "check dhcp end ip [e]\n", {"IsValidAddress e 0"}},
      {true, "", "e", {"e"}, "check dhcp end ip [e]\n", {"IsValidAddress e 0"}},
      {true, "s", "", {"s"}, "check dhcp start ip [s]\n", {"IsValidAddress s 0"}},
      {true, "s", "e", {}, "", {"IsValidAddress e 0", "CheckIpv4DhcpRangeValidation g m s e"}},
      {true, "s", "", {}, "", {"IsValidAddress s 0", "GetIpv4DhcpRange g m"}},
      {true, "", "e", {}, "", {"IsValidAddress e 0", "GetIpv4DhcpRange g m"}},
      {true, "", "", {}, "", {"IsValidAddress m 0", "GetIpv4DhcpRange g m"}},
      {false, "s", "e", {"m", "s"}, "check netmask [m]\n", {"IsValidAddress m 0"}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.start + " to " + row.end + ", expected: " + row.refusal);
    Session session;
    session.script.bad_addresses = row.bad;
    session.script.range_fits = false;
    EXPECT_FALSE(session.wrapper.SetLanConfig("g", "m", row.dhcp, row.start, row.end, 0));
    EXPECT_THAT(session.script.TakeRequests(), ElementsAre());
    Lines log = {Line(7, kSet, "dhcp_start_ip " + row.start + " dhcp_end_ip " + row.end + "\n")};
    if (!row.refusal.empty()) log.push_back(Line(3, kSet, row.refusal));
    EXPECT_THAT(TakeLog(), ElementsAreArray(log));
    const Lines& asked = session.script.utility_calls;
    ASSERT_GE(asked.size(), row.asked.size());
    EXPECT_THAT(Lines(asked.end() - static_cast<long>(row.asked.size()), asked.end()),
                ElementsAreArray(row.asked));
  }
}

TEST(LanConfig, SendsWhatWasGivenOrDerived) {
  struct {
    bool dhcp;
    std::string start;
    std::string end;
    uint32_t lease;
    std::string sent;
  } const rows[] = {
      {true, "10.0.0.5", "10.0.0.9", 0, "1 a000005 a000009 0"},
      {true, "", "", 7, "1 a000002 a0000fe 7"},
      {true, "10.0.0.5", "", ~0u, "1 a000002 a0000fe 4294967295"},
      {true, "", "10.0.0.9", 7, "1 a000002 a0000fe 7"},
      {false, "", "", 7, "0 ffffffff ffffffff 7"},
      {false, "no address", "10.0.0.9", 7, "0 ffffffff a000009 7"},
  };
  for (const auto& row : rows) {
    Session session;
    session.script.derived_range = {"10.0.0.2", "10.0.0.254"};
    session.script.Refuse("GetLANConfig");
    EXPECT_TRUE(session.wrapper.SetLanConfig("10.0.0.1", "255.0.0.0", row.dhcp, row.start, row.end,
                                             row.lease));
    EXPECT_THAT(session.script.TakeRequests(),
                ElementsAre("GetLANConfig", "SetLANConfig a000001 ff000000 " + row.sent));
    const std::string warning = "QCMAP_Client::GetLanConfig error 59[0x3b] : Just warning\n";
    EXPECT_THAT(TakeLog(), testing::Contains(Line(4, kSet, warning)).Times(1));
  }
}

TEST(LanConfig, ReadoutFillsAllOrNothing) {
  Session session;
  std::string gateway = "g", netmask = "m", start = "s", end = "e";
  bool dhcp = false;
  int lease = 1;
  session.script.Refuse("GetLANConfig");
  EXPECT_FALSE(session.wrapper.GetLanConfig(gateway, netmask, dhcp, start, end, lease));
  EXPECT_EQ(gateway + netmask + start + end + std::to_string(dhcp) + std::to_string(lease),
            "gmse01");
  session.script.Grant("GetLANConfig");
  session.script.lan = {0xc0a80001, 0xffff0000, 255, 0, ~0u, ~0u};
  EXPECT_TRUE(session.wrapper.GetLanConfig(gateway, netmask, dhcp, start, end, lease));
  EXPECT_THAT((Lines{gateway, netmask, start, end}),
              ElementsAre("192.168.0.1", "255.255.0.0", "0.0.0.0", "255.255.255.255"));
  EXPECT_TRUE(dhcp);
  EXPECT_EQ(lease, -1);
  TakeLog();
}

}  // namespace
