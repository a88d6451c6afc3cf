/// Runs every operation along four paths: no server, profile refused, request refused, granted.
#include <unistd.h>

#include <algorithm>
#include <functional>

#include "anything.h"
#include "world.h"

namespace {

struct Refusal {
  std::string request;
  /// Priority and text of each line.
  Lines log = {"3 QCMAP_Client::" + request + " error 59[0x3b]\n"};
};

struct Operation {
  std::string signature;
  /// Acts on profile 1, if on any.
  std::function<Result(QcmapWrapper&)> call;
  /// How often it selects its profile.
  int selections;
  Lines requests;
  Lines log;
  std::vector<Refusal> refusals;
  /// What a success may allocate: the lists and texts that it returns.
  int allocations;
};

void PrintTo(const Operation& operation, std::ostream* out) {
  *out << operation.signature;
}

Result ToResult(bool success) {
  return success ? Result::SUCCESS : Result::FAILURE;
}
Result ToResult(Result result) {
  return result;
}

template <typename Call>
Operation Row(const std::string& signature, int selections, const Lines& requests, const Lines& log,
              const std::vector<Refusal>& refusals, Call call, int allocations = 0) {
  const auto result = [call](QcmapWrapper& wrapper) { return ToResult(call(wrapper)); };
  return {signature, result, selections, requests, log, refusals, allocations};
}

/// An operation with one request, no debug line, and one line for a refusal.
template <typename Call>
Operation Plain(const std::string& signature, int selections, const std::string& request,
                const std::string& refusal, Call call, int allocations = 0) {
  const std::string name = request.substr(0, request.find(' '));
  return Row(signature, selections, {request}, {}, {{name, {"3 " + refusal}}}, call, allocations);
}

/// The same with a refusal in the form that most operations log: `name` is what it calls the
/// request.
template <typename Call>
Operation Common(const std::string& signature, int selections, const std::string& request,
                 const std::string& name, Call call, int allocations = 0) {
  const std::string refusal = "QCMAP_Client::" + name + " error 59[0x3b]\n";
  return Plain(signature, selections, request, refusal, call, allocations);
}

Lines Prefixed(const Operation& operation, const Lines& log) {
  Lines lines;
  for (const std::string& line : log) {
    lines.push_back(Line(line[0] - '0', operation.signature, line.substr(2)));
  }
  return lines;
}

#define CALL(...) [](QcmapWrapper& wrapper) { return wrapper.__VA_ARGS__; }

std::vector<Operation> Operations() {
  static std::string texts[4];
  static MobileapManager::VlanConfig vlan = {3, 100, 1};
  static MobileapManager::IpPassthroughConfig host = {MobileapManager::DeviceType::USB_HOST,
                                                      "laptop", 0};
  const std::string policy_numbers = "7 profile_v4 5 profile_v6 7 profile_1 9 profile_2 7\n";
  const std::string policy_update = "7 index 1 ip_family 1 update_req 2\n";
  const std::string set_error = "3 QCMAP_Client::SetWWANPolicy error 59[0x3b]\n";
  const std::string record = "tech 1 family 4 v4 9 9 v6 7 7";
  const std::string lan_range = "7 dhcp_start_ip 192.168.1.20 dhcp_end_ip 192.168.1.60\n";
  const std::string lan_record =
      "7 gw_ip c0a80101 netmask ffffff00 enable_dhcp 1 dhcp_start_ip c0a80114 dhcp_end_ip "
      "c0a8013c\n";
  const std::string taking_down =
      "7 DisconnectBackhaul call_type [2] pid [" + std::to_string(getpid()) + "]\n";
  const std::string passthrough = "7 enabled 1 pt_mode 0x1\n";
  return {
      Row(kSelection, 0, kSelectSecond, {},
          {{"GetWWANPolicyList"}, {"SetWWANProfileHandlePreference"}}, CALL(ChangeWwanProfile(1))),
      Common("bool @GetProfileHandle(uint32_t, profile_handle_type_v01&)", 1, "GetWWANPolicyList",
             "GetWWANPolicyList", CALL(GetProfileHandle(1, kAnything))),
      Row("bool @SetWwanPolicy(uint32_t, mox::wwan::Tech, mox::util::IPFamily, int, int)", 1,
          {"GetWWANPolicy", "UpdateWWANPolicy 2 " + record, "UpdateWWANPolicy 3 " + record},
          {policy_numbers, policy_update},
          {{"GetWWANPolicy"}, {"UpdateWWANPolicy", {policy_numbers, policy_update, set_error}}},
          CALL(SetWwanPolicy(1, Tech::TECH_3GPP, IPFamily::IPV4, 9, 7))),
      Common("bool @CreateWwanPolicy(mox::wwan::Tech, mox::util::IPFamily, uint8_t, uint8_t)", 0,
             "CreateWWANPolicy tech 2 family 6 v4 0 0 v6 30 30", "CreateWWANPolicy",
             CALL(CreateWwanPolicy(Tech::TECH_3GPP2, IPFamily::IPV6, 0, 30))),
      Common("bool @DeleteWwanPolicy(uint8_t)", 1, "DeleteWWANPolicy", "DeleteWWANPolicy",
             CALL(DeleteWwanPolicy(1))),
      Plain("bool @GetWwanPolicy(uint32_t, mox::wwan::DataManager::WwanPolicy&)", 1,
            "GetWWANPolicy", "QCMAP_Client::GetWWANPolicy error 59[3b]\n",
            CALL(GetWwanPolicy(1, kAnything))),
      Common("bool @GetWwanPolicies(std::vector<mox::wwan::DataManager::WwanPolicy>&)", 0,
             "GetWWANPolicyList", "GetWWANPolicyList", CALL(GetWwanPolicies(kAnything)), 1),
      Common("bool @SetAutoConnect(uint32_t, bool)", 1, "SetAutoconnect 1", "SetAutoConnect",
             CALL(SetAutoConnect(1, true))),
      Common("bool @GetAutoConnect(uint32_t, bool&)", 1, "GetAutoconnect", "GetAutoConnect",
             CALL(GetAutoConnect(1, kAnything))),
      Common("bool @SetRoaming(uint32_t, bool)", 1, "SetRoaming 0", "SetRoaming",
             CALL(SetRoaming(1, false))),
      Plain("bool @GetRoaming(uint32_t, bool&)", 1, "GetRoaming",
            "QCMAP_ClientGetRoaming error 59[0x3b]\n", CALL(GetRoaming(1, kAnything))),
      Common("bool @EnableIpv4(uint32_t)", 1, "EnableIPV4", "EnableIPV4", CALL(EnableIpv4(1))),
      Common("bool @DisableIpv4(uint32_t)", 1, "DisableIPV4", "DisableIPV4", CALL(DisableIpv4(1))),
      Common("bool @EnableIpv6(uint32_t)", 1, "EnableIPV6", "EnableIPV6", CALL(EnableIpv6(1))),
      Common("bool @DisableIpv6(uint32_t)", 1, "DisableIPV6", "DisableIPV6", CALL(DisableIpv6(1))),
      Common("bool @GetIpv4State(uint32_t, bool&)", 1, "GetIPv4State", "GetIPv4State ",
             CALL(GetIpv4State(1, kAnything))),
      Common("bool @GetIpv6State(uint32_t, bool&)", 1, "GetIPv6State", "GetIPv6State ",
             CALL(GetIpv6State(1, kAnything))),
      Plain("bool @GetWwanConnectStatus(uint32_t, mox::wwan::DataManager::ConnectStatus&, "
            "mox::wwan::DataManager::ConnectStatus&)",
            1, "GetWWANStatus", "QCMAP_Client::GetWWANStatus error 59[0x3b]",
            CALL(GetWwanConnectStatus(1, kAnything, kAnything))),
      Row("mox::Result @ConnectBackhaul(uint32_t, mox::util::IPFamily)", 2,
          {"GetWWANStatus", "ConnectBackHaul 1"}, {"7 ip_family [1] call_type [0x1]\n"},
          {{"ConnectBackHaul",
            {"7 ip_family [1] call_type [0x1]\n",
             "3 QCMAP_Client::ConnectBackhaul error 59[0x3b]\n"}}},
          CALL(ConnectBackhaul(1, IPFamily::IPV4))),
      Row("mox::Result @DisconnectBackhaul(uint32_t, mox::util::IPFamily)", 1,
          {"GetWWANStatus", "DisconnectBackHaul 2"}, {taking_down},
          {{"DisconnectBackHaul",
            {taking_down, "3 QCMAP_Client::DisconnectBackhaul error 59[0x3b]\n"}}},
          CALL(DisconnectBackhaul(1, IPFamily::IPV6))),
      Plain("mox::Result @GetWWANStatistics(uint32_t, mox::util::IPFamily, WWANStatics&)", 1,
            "GetWWANStatistics 10", "QCMAP_Client::GetWWANStatistics error 59",
            CALL(GetWWANStatistics(1, IPFamily::IPV4V6, kAnything))),
      Plain("mox::Result @ResetWWANStatistics(uint32_t, mox::util::IPFamily)", 1,
            "ResetWWANStatistics 6", "QCMAP_Client::ResetWWANStatistics error 59",
            CALL(ResetWWANStatistics(1, IPFamily::IPV6))),
      Plain("mox::Result @GetNetworkConfig(uint32_t, mox::util::IPFamily, "
            "mox::wwan::DataManager::NetworkConfig&)",
            1, "GetNetworkConfiguration 6",
            "QCMAP_Client::GetNetworkConfiguration error 59[0x3b]\n",
            CALL(GetNetworkConfig(1, IPFamily::IPV6, kAnything)), 3),
      Row("bool @GetLanConfig(std::string&, std::string&, bool&, std::string&, std::string&, int&)",
          0, {"GetLANConfig"},
          {"7 gw [192.168.1.1] nm [255.255.255.0] denable [1] dstart [192.168.1.20] dend "
           "[192.168.1.60] lease_time [3600]\n"},
          {{"GetLANConfig", {"3 QCMAP_Client::GetLANConfig error 59[3b]\n"}}},
          CALL(GetLanConfig(texts[0], texts[1], kAnything, texts[2], texts[3], kAnything))),
      Row("bool @SetLanConfig(std::string, std::string, bool, std::string, std::string, uint32_t)",
          0, {"GetLANConfig", "SetLANConfig c0a80101 ffffff00 1 c0a80114 c0a8013c 3600"},
          {lan_range, lan_record},
          {{"SetLANConfig", {lan_range, lan_record, "3 SetLANConfig errno [59]\n"}}},
          CALL(SetLanConfig("192.168.1.1", "255.255.255.0", true, "192.168.1.20", "192.168.1.60",
                            3600))),
      Common("bool @ActivateLan()", 0, "ActivateLAN", "ActivateLan ", CALL(ActivateLan())),
      Common("bool @SetVlanConfig(mox::wwan::MobileapManager::VlanConfig&)", 0,
             "SetVLANConfig eth0 100 0", "SetVLANConfig", CALL(SetVlanConfig(vlan))),
      Common("bool @DeleteVlanConfig(mox::wwan::MobileapManager::VlanConfig&)", 0,
             "DeleteVLANConfig eth0 100", "DeleteVLANConfig", CALL(DeleteVlanConfig(vlan))),
      Common("bool @GetVlanConfigs(std::vector<mox::wwan::MobileapManager::VlanConfig>&)", 0,
             "GetVLANConfig", "GetVLANConfig", CALL(GetVlanConfigs(kAnything)), 1),
      Row("bool @SetPdnToVlanMapping(mox::wwan::MobileapManager::VlanConfig&)", 0,
          {"GetWWANPolicyList", "AddPDNToVLANMapping 100 22"}, {},
          {{"GetWWANPolicyList"},
           {"AddPDNToVLANMapping", {"3 QCMAP_Client::SetPDNtoVLANMapping error 59[0x3b]\n"}}},
          CALL(SetPdnToVlanMapping(vlan))),
      Row("bool @DeletePdnToVlanMapping(mox::wwan::MobileapManager::VlanConfig&)", 0,
          {"GetPDNtoVLANMappings cleared 0", "GetWWANPolicyList", "GetWWANPolicyList",
           "DeletePDNToVLANMapping 100 22"},
          {}, {{"GetPDNtoVLANMappings"}, {"GetWWANPolicyList"}, {"DeletePDNToVLANMapping"}},
          [](QcmapWrapper& wrapper) {
            MobileapManager::VlanConfig unknown = {3, 100, -1};
            return wrapper.DeletePdnToVlanMapping(unknown);
          }),
      Row("bool @GetPdnToVlanMapping(std::vector<mox::wwan::MobileapManager::VlanMapping>&)", 0,
          {"GetPDNtoVLANMappings cleared 0", "GetWWANPolicyList"}, {},
          {{"GetPDNtoVLANMappings"}, {"GetWWANPolicyList"}}, CALL(GetPdnToVlanMapping(kAnything)),
          1),
      Common("bool @SetIpPassthrough(bool, mox::wwan::MobileapManager::IpPassthroughConfig&)", 0,
             "SetIPPassthroughConfig 1 1 3 cleared laptop", "SetIPPassthroughConfig",
             CALL(SetIpPassthrough(true, host))),
      Row("bool @GetIpPassthrough(bool&, mox::wwan::MobileapManager::IpPassthroughConfig&)", 0,
          {"GetIPPassthroughConfig", "GetIPPassthroughState"}, {passthrough},
          {{"GetIPPassthroughConfig"},
           {"GetIPPassthroughState",
            {passthrough, "3 QCMAP_Client::GetIPPassthroughState error 59[0x3b]\n"}}},
          CALL(GetIpPassthrough(kAnything, kAnything))),
  };
}

/// Answers that let every operation of the table succeed.
void Grant(Script& script) {
  script.addresses.v6[0][0] = script.addresses.v6[1][0] = script.addresses.v6[2][0] = 0x20;
  for (auto& address : script.addresses.v6) std::fill_n(address + 1, 15, uint8_t{0x11});
  script.vlans.vlan_config_len = 3;
  script.mapping_count = 3;
  script.mappings = {{22, 7}, {22, 100}, {11, 100}};
}

class Walk : public testing::TestWithParam<Operation> {};

TEST_P(Walk, WithoutServerSendsNothing) {
  World world(-1);
  EXPECT_EQ(GetParam().call(world.wrapper), Result::FAILURE);
  EXPECT_EQ(world.script.clients_made, 0);
  const std::string step = "bool @ConnectToQcmapIfNeeded()";
  EXPECT_EQ(TakeLog(), (Lines{Line(7, "bool @IsQcmapAlive()", "QCMAP_ConnectionManager pid -1\n"),
                              Line(4, step, "QCMAP server is not alive")}));
}

TEST_P(Walk, RefusedLogsWhy) {
  for (const Refusal& refusal : GetParam().refusals) {
    SCOPED_TRACE("refused: " + refusal.request);
    World world;
    Grant(world.script);
    ASSERT_TRUE(GetParam().selections == 0 || world.wrapper.ChangeWwanProfile(1));
    world.Forget();
    world.script.Refuse(refusal.request);
    EXPECT_EQ(GetParam().call(world.wrapper), Result::FAILURE);
    Lines requests = GetParam().requests;
    const auto is_refused = [&](const std::string& request) {
      return request.substr(0, request.find(' ')) == refusal.request;
    };
    requests.erase(std::find_if(requests.begin(), requests.end(), is_refused) + 1, requests.end());
    EXPECT_EQ(world.Sent(), requests);
    EXPECT_EQ(TakeLog(), Prefixed(GetParam(), refusal.log));
  }
}

TEST_P(Walk, GrantedSendsItsRequestsInOrder) {
  World world;
  Grant(world.script);
  int allocated = 0;
  {
    const Allocations allocations;
    EXPECT_EQ(GetParam().call(world.wrapper), Result::SUCCESS);
    allocated = allocations.count();
  }
  EXPECT_LE(allocated, GetParam().allocations);
  Lines requests = GetParam().selections > 0 ? kSelectSecond : Lines();
  requests.insert(requests.end(), GetParam().requests.begin(), GetParam().requests.end());
  EXPECT_EQ(world.Sent(), requests);
  EXPECT_EQ(TakeLog(), Prefixed(GetParam(), GetParam().log));
}

class WalkOnAProfile : public Walk {};

TEST_P(WalkOnAProfile, RefusedSelectionSendsNoRequestOfItsOwn) {
  World world;
  world.script.Refuse("GetWWANPolicyList");
  EXPECT_EQ(GetParam().call(world.wrapper), Result::FAILURE);
  const auto selections = static_cast<size_t>(GetParam().selections);
  EXPECT_EQ(world.Sent(), Lines(selections, "GetWWANPolicyList"));
  const std::string text = "QCMAP_Client::GetWWANPolicyList error 59[0x3b]\n";
  EXPECT_EQ(TakeLog(), Lines(selections, Line(3, kSelection, text)));
}

std::vector<Operation> OperationsOnAProfile() {
  std::vector<Operation> operations = Operations();
  const auto acts_on_none = [](const Operation& operation) { return operation.selections == 0; };
  operations.erase(std::remove_if(operations.begin(), operations.end(), acts_on_none),
                   operations.end());
  return operations;
}

std::string Name(const testing::TestParamInfo<Operation>& row) {
  const std::string& signature = row.param.signature;
  const size_t at = signature.find('@') + 1;
  return signature.substr(at, signature.find('(') - at);
}

INSTANTIATE_TEST_SUITE_P(All, Walk, testing::ValuesIn(Operations()), Name);
INSTANTIATE_TEST_SUITE_P(All, WalkOnAProfile, testing::ValuesIn(OperationsOnAProfile()), Name);

}  // namespace
