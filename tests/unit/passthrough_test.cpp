/// IP passthrough: order of the checks, the name within its field, what a failure leaves.
#include <cstring>

#include "world.h"

namespace {

using DeviceType = MobileapManager::DeviceType;

const std::string kParameter = "mox::wwan::MobileapManager::IpPassthroughConfig&)";

TEST(Passthrough, ChecksTypeThenFormThenLength) {
  constexpr bool kEnable = true, kDisable = false;
  struct Row {
    bool enable;
    DeviceType type;
    bool is_mac;
    std::string name;
    std::string sent;
    std::string logged;
  };
  constexpr auto kUsb = DeviceType::USB_HOST, kOther = DeviceType{2};
  const std::string longest(100, 'n'), too_long = std::string("n\0", 2) + std::string(99, 'n');
  const std::string length = "host_device_name length should be equal or less than 100\n";
  const std::string form = "USB host needs host name information instead of mac address";
  const Row rows[] = {{kEnable, kUsb, false, "", "1 1 3 cleared ", ""},
                      {kEnable, kUsb, false, too_long.substr(0, 9), "1 1 3 cleared n", ""},
                      {kEnable, kUsb, false, longest, "1 1 3 cleared " + longest, ""},
                      {kEnable, kUsb, false, too_long, "", length},
                      {kEnable, kUsb, true, too_long, "", form},
                      {kEnable, kOther, true, too_long, "", ""},
                      {kDisable, kOther, true, too_long, "0 1 0 cleared ", ""}};
  for (const Row& row : rows) {
    SCOPED_TRACE(Join("enable", row.enable, "type", NameOf(row.type), "name", row.name));
    World world;
    world.script.is_mac = row.is_mac;
    MobileapManager::IpPassthroughConfig config = {row.type, row.name, 9};
    EXPECT_EQ(world.wrapper.SetIpPassthrough(row.enable, config), !row.sent.empty());
    Lines requests = {"SetIPPassthroughConfig " + row.sent};
    Lines log = {Line(3, "bool @SetIpPassthrough(bool, " + kParameter, row.logged)};
    if (row.sent.empty()) requests.clear();
    if (row.logged.empty()) log.clear();
    EXPECT_EQ(world.Sent(), requests);
    EXPECT_EQ(TakeLog(), log);
    EXPECT_EQ(world.script.utility_calls.size(), row.enable && row.type == kUsb ? 1u : 0u);
  }
}

TEST(Passthrough, ReadoutWritesOnlyWhatItLearned) {
  constexpr uint32_t kUsb = QCMAP_MSGR_PASSTHROUGH_DEVICE_TYPE_USB_V01, kOther = 0xb;
  struct Row {
    std::string refused;
    int mode;
    uint32_t device;
    bool success;
    /// Enabled, type, name and state; beforehand "1 7 caller 9".
    std::string values;
    std::string last_line;
  };
  const std::string unsupported =
      "7 device_type [0xb] is not supported : TODO supports other device types\n";
  const auto error = [](const std::string& request) {
    return "3 QCMAP_Client::" + request + " error 59[0x3b]\n";
  };
  const std::string config_request = "GetIPPassthroughConfig",
                    state_request = "GetIPPassthroughState";
  const Row rows[] = {{"", 2, kUsb, true, "0 USB_HOST laptop 5", "7 enabled 0 pt_mode 0x2\n"},
                      {"", 0, kOther, true, "0 7 caller 5", "7 enabled 0 pt_mode 0x0\n"},
                      {"", 1, kOther, false, "1 7 caller 9", unsupported},
                      {config_request, 0, kUsb, false, "1 7 caller 9", error(config_request)},
                      {state_request, 1, kUsb, false, "1 USB_HOST laptop 9", error(state_request)},
                      {state_request, 0, kOther, false, "0 7 caller 9", error(state_request)}};
  for (const Row& row : rows) {
    SCOPED_TRACE(Join("mode", row.mode, "device type", row.device, "refused:", row.refused));
    World world;
    world.script.passthrough_mode = row.mode;
    world.script.passthrough.device_type = row.device;
    world.script.Refuse(row.refused);
    bool enabled = true;
    MobileapManager::IpPassthroughConfig config = {DeviceType{7}, "caller", 9};
    EXPECT_EQ(world.wrapper.GetIpPassthrough(enabled, config), row.success);
    EXPECT_EQ(Join(enabled, NameOf(config.device_type), config.host_device_name, +config.pt_state),
              row.values);
    EXPECT_EQ(TakeLog().back(),
              Line(row.last_line[0] - '0', "bool @GetIpPassthrough(bool&, " + kParameter,
                   row.last_line.substr(2)));
  }
}

TEST(Passthrough, ReadsANameWithinItsField) {
  World world;
  auto& field = world.script.passthrough.device_name;
  bool enabled = false;
  MobileapManager::IpPassthroughConfig config;
  for (const size_t length : {0u, 100u, 101u, 102u}) {
    std::memset(field, 'x', sizeof field);
    if (length < sizeof field) field[length] = '\0';
    EXPECT_TRUE(world.wrapper.GetIpPassthrough(enabled, config));
    EXPECT_EQ(config.host_device_name, std::string(length, 'x'));
  }
}

}  // namespace
