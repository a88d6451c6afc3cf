/// IP passthrough: order of the checks, the name within its field, what a failure leaves.
#include <cstring>

#include "world.h"

namespace {

using DeviceType = MobileapManager::DeviceType;

const std::string kParameter = "mox::wwan::MobileapManager::IpPassthroughConfig&)";

TEST(Passthrough, ChecksTypeThenFormThenLength) {
  const std::string longest(100, 'n'), too_long = std::string("n\0", 2) + std::string(99, 'n');
  const std::string length = "host_device_name length should be equal or less than 100\n";
  const std::string form = "USB host needs host name information instead of mac address";
  // Enable, type, whether the name is a MAC, the name, what is sent, what is logged.
  const std::tuple<bool, int, bool, std::string, std::string, std::string> rows[] = {
      {true, 1, false, "", "1 1 3 cleared ", ""},
      {true, 1, false, too_long.substr(0, 9), "1 1 3 cleared n", ""},
      {true, 1, false, longest, "1 1 3 cleared " + longest, ""},
      {true, 1, false, too_long, "", length},
      {true, 1, true, too_long, "", form},
      {true, 2, true, too_long, "", ""},
      {false, 0, true, too_long, "0 1 0 cleared ", ""}};
  for (const auto& [enable, type, is_mac, name, sent, logged] : rows) {
    World world;
    world.script.is_mac = is_mac;
    MobileapManager::IpPassthroughConfig config = {DeviceType{type}, name, 9};
    EXPECT_EQ(world.wrapper.SetIpPassthrough(enable, config), !sent.empty());
    Lines requests = {"SetIPPassthroughConfig " + sent};
    Lines log = {Line(3, "bool @SetIpPassthrough(bool, " + kParameter, logged)};
    if (sent.empty()) requests.clear();
    if (logged.empty()) log.clear();
    EXPECT_EQ(world.Sent(), requests);
    EXPECT_EQ(TakeLog(), log);
    EXPECT_EQ(world.script.utility_calls.size(), enable && type == 1 ? 1u : 0u);
  }
}

TEST(Passthrough, ReadoutWritesOnlyWhatItLearned) {
  const std::string unsupported =
      "device_type [0xb] is not supported : TODO supports other device types\n";
  const std::string error = " error 59[0x3b]\n";
  // Refused request, mode, device, success, out-values ("1 7 caller 9" beforehand), last line.
  const std::tuple<std::string, int, uint32_t, bool, std::string, std::string> rows[] = {
      {"", 2, 3, true, "0 1 laptop 5", "enabled 0 pt_mode 0x2\n"},
      {"", 0, 4, true, "0 7 caller 5", "enabled 0 pt_mode 0x0\n"},
      {"", 1, 0xb, false, "1 7 caller 9", unsupported},
      {"GetIPPassthroughConfig", 0, 3, false, "1 7 caller 9", error},
      {"GetIPPassthroughState", 1, 3, false, "1 1 laptop 9", error},
      {"GetIPPassthroughState", 0, 4, false, "0 7 caller 9", error}};
  for (const auto& [refused, mode, device, success, values, line] : rows) {
    World world;
    world.script.passthrough_mode = mode;
    world.script.passthrough.device_type = device;
    if (!refused.empty()) world.script.Refuse(refused);
    bool enabled = true;
    MobileapManager::IpPassthroughConfig config = {DeviceType{7}, "caller", 9};
    EXPECT_EQ(world.wrapper.GetIpPassthrough(enabled, config), success);
    EXPECT_EQ(Join(enabled, static_cast<int>(config.device_type), config.host_device_name,
                   +config.pt_state),
              values)
        << line;
    EXPECT_EQ(TakeLog().back(),
              Line(refused.empty() ? 7 : 3, "bool @GetIpPassthrough(bool&, " + kParameter,
                   refused.empty() ? line : "QCMAP_Client::" + refused + line));
  }
}

TEST(Passthrough, ReadsANameWithinItsField) {
  World world;
  auto& field = world.script.passthrough.device_name;
  bool enabled = false;
  MobileapManager::IpPassthroughConfig config;
  for (const size_t length : {0, 100, 101, 102}) {
    std::memset(field, 'x', sizeof field);
    if (length < sizeof field) field[length] = '\0';
    EXPECT_TRUE(world.wrapper.GetIpPassthrough(enabled, config));
    EXPECT_EQ(config.host_device_name, std::string(length, 'x'));
  }
}

}  // namespace
