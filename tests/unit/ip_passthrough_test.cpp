/// IP passthrough: order of the checks, the name within its field, what a failure leaves.
#include <cstring>

#include "session.h"

namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;

TEST(IpPassthrough, ChecksTypeThenFormThenLength) {
  const std::string longest(100, 'n');
  struct {
    bool enable;
    int type;
    bool is_mac;
    std::string name;
    std::string sent;  // empty: refused
    Lines log;
  } const rows[] = {
      {true, 1, false, "laptop", "1 1 3 cleared laptop", {}},
      {true, 1, false, "", "1 1 3 cleared ", {}},
      {true, 1, false, longest, "1 1 3 cleared " + longest, {}},
      {true,
       1,
       false,
       longest + "n",
       "",
       {"host_device_name length should be equal or less than 100\n"}},
      {true,
       1,
       true,
       longest + "n",
       "",
       {"USB host needs host name information instead of mac address"}},
      {true, 2, true, longest + "n", "", {}},
      {true, 0, false, "laptop", "", {}},
      {false, 0, true, longest + "n", "0 1 0 cleared ", {}},
  };
  for (const auto& row : rows) {
    Session session;
    session.script.is_mac = row.is_mac;
    MobileapManager::IpPassthroughConfig config = {
        static_cast<MobileapManager::DeviceType>(row.type), row.name, 9};
    EXPECT_EQ(session.wrapper.SetIpPassthrough(row.enable, config), !row.sent.empty());
    Lines requests, log;
    if (!row.sent.empty()) requests = {"SetIPPassthroughConfig " + row.sent};
    for (const std::string& text : row.log) {
      log.push_back(
          Line(3, "bool @SetIpPassthrough(bool, mox::wwan::MobileapManager::IpPassthroughConfig&)",
               text));
    }
    EXPECT_THAT(session.script.TakeRequests(), ElementsAreArray(requests));
    EXPECT_THAT(TakeLog(), ElementsAreArray(log));
    EXPECT_EQ(session.script.utility_calls.size(), row.enable && row.type == 1 ? 1u : 0u);
    EXPECT_EQ(config.host_device_name, row.name);
  }
}

TEST(IpPassthrough, ReadoutWritesOnlyWhatItLearned) {
  struct {
    std::string refused;
    int mode;
    uint32_t device;
    bool success;
    bool enabled;        // true beforehand
    std::string config;  // "1 caller 9" beforehand
    std::string last_line;
  } const rows[] = {
      {"", 1, 3, true, true, "1 laptop 5", "enabled 1 pt_mode 0x1\n"},
      {"", 0, 3, true, false, "1 laptop 5", "enabled 0 pt_mode 0x0\n"},
      {"", 2, 3, true, false, "1 laptop 5", "enabled 0 pt_mode 0x2\n"},
      {"", 0, 4, true, false, "7 caller 5", "enabled 0 pt_mode 0x0\n"},
      {"", -1, 0, true, false, "7 caller 5", "enabled 0 pt_mode 0xffffffff\n"},
      {"", 1, 0xb, false, true, "7 caller 9",
       "device_type [0xb] is not supported : TODO supports other device types\n"},
      {"GetIPPassthroughConfig", 0, 3, false, true, "7 caller 9",
       "QCMAP_Client::GetIPPassthroughConfig error 59[0x3b]\n"},
      {"GetIPPassthroughState", 0, 3, false, false, "1 laptop 9",
       "QCMAP_Client::GetIPPassthroughState error 59[0x3b]\n"},
      {"GetIPPassthroughState", 0, 4, false, false, "7 caller 9",
       "QCMAP_Client::GetIPPassthroughState error 59[0x3b]\n"},
  };
  for (const auto& row : rows) {
    Session session;
    session.script.passthrough_mode = row.mode;
    session.script.passthrough.device_type = row.device;
    if (!row.refused.empty()) session.script.Refuse(row.refused);
    bool enabled = true;
    MobileapManager::IpPassthroughConfig config = {MobileapManager::DeviceType{7}, "caller", 9};
    EXPECT_EQ(session.wrapper.GetIpPassthrough(enabled, config), row.success);
    EXPECT_EQ(enabled, row.enabled) << row.last_line;
    EXPECT_EQ(std::to_string(static_cast<int>(config.device_type)) + " " + config.host_device_name +
                  " " + std::to_string(config.pt_state),
              row.config);
    EXPECT_EQ(
        TakeLog().back(),
        Line(row.refused.empty() ? 7 : 3,
             "bool @GetIpPassthrough(bool&, mox::wwan::MobileapManager::IpPassthroughConfig&)",
             row.last_line));
  }
}

TEST(IpPassthrough, ReadsANameWithinItsField) {
  Session session;
  auto& field = session.script.passthrough.device_name;
  bool enabled = false;
  MobileapManager::IpPassthroughConfig config;
  for (const size_t length : {0, 100, 101, 102}) {
    std::memset(field, 'x', sizeof field);
    if (length < sizeof field) field[length] = '\0';
    EXPECT_TRUE(session.wrapper.GetIpPassthrough(enabled, config));
    EXPECT_EQ(config.host_device_name, std::string(length, 'x'));
  }
  TakeLog();
}

}  // namespace
