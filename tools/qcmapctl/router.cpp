/// The router as the commands see it: its state as the server reports it, or what went wrong.
#include "router.h"

#include <chrono>

#include "log_hook.h"

namespace qcmapctl {
namespace {

using mox::Result;

// A server that refuses does so within milliseconds. With one that hangs, each request fails after
// two seconds.
constexpr std::chrono::seconds kHungAfter{1};
constexpr std::chrono::milliseconds kGivenUpAfter{1900};

[[noreturn]] void FailToConnect(QcmapWrapper& wrapper, bool hung) {
  const std::string errors = Errors();
  if (!wrapper.IsQcmapAlive()) throw CommandFailed(Failure::SERVER_DOWN);
  if (errors.find("belongs to user") != std::string::npos) {
    // Without the name of the client in front.
    const std::string line = errors.substr(errors.find("the server at"));
    throw CommandFailed(Failure::OTHER_USER, "", {line.substr(0, line.find('\n')), "", {}});
  }
  if (hung) throw CommandFailed(Failure::NO_ANSWER);
  throw CommandFailed(Failure::NOT_CONNECTED, "", ReasonIn(LastError()));
}

}  // namespace

bool FamilyStates::IsHalfUp(const WwanPolicy& policy) const {
  const bool ipv4_up = ipv4 == ConnectStatus::CONNECTED;
  const bool ipv6_up = ipv6 == ConnectStatus::CONNECTED;
  if (ipv4_up == ipv6_up) return false;
  return policy.ip_family != (ipv4_up ? IPFamily::IPV4 : IPFamily::IPV6);
}

QcmapWrapper& Router::Wrapper() {
  ForgetErrors();
  const auto start = Clock::now();
  asked_at_ = start;
  if (wrapper_ != nullptr) return *wrapper_;

  QcmapWrapper* wrapper = QcmapWrapper::GetInstance();
  // GetInstance has made the first attempt. Another one would also wait for a server that hangs.
  const bool hung = Clock::now() - start >= kHungAfter;
  const bool is_connected = LastLine().find("Mobile AP is Connected") != std::string::npos ||
                            (!hung && wrapper->ConnectToQcmapIfNeeded());
  if (!is_connected) FailToConnect(*wrapper, hung);
  wrapper_ = wrapper;
  asked_at_ = Clock::now();
  ForgetErrors();
  return *wrapper_;
}

std::vector<WwanPolicy> Router::Policies() {
  std::vector<WwanPolicy> policies;
  Require(Wrapper().GetWwanPolicies(policies), Failure::REFUSED, "policy list");
  return policies;
}

WwanPolicy Router::Policy(uint32_t index) {
  const std::vector<WwanPolicy> policies = Policies();
  if (index >= policies.size()) throw CommandFailed(Failure::NO_PROFILE, ProfileName(index));
  return policies[index];
}

std::vector<Profile> Router::Profiles(const std::optional<uint32_t>& index) {
  if (index) return {{*index, Policy(*index)}};
  std::vector<Profile> profiles;
  for (const WwanPolicy& policy : Policies()) {
    profiles.push_back({static_cast<uint32_t>(profiles.size()), policy});
  }
  return profiles;
}

FamilyStates Router::CallState(uint32_t index) {
  FamilyStates states;
  Require(Wrapper().GetWwanConnectStatus(index, states.ipv4, states.ipv6), Failure::REFUSED,
          ProfileName(index));
  return states;
}

std::vector<std::string> Router::Addresses(uint32_t index, IPFamily family) {
  mox::wwan::DataManager::NetworkConfig config;
  const Result result = Wrapper().GetNetworkConfig(index, family, config);
  if (result == Result::NO_NETWORK) return {};
  Require(result == Result::SUCCESS, Failure::REFUSED, ProfileName(index) + ": " + WordOf(family));
  return {config.address_1, config.address_2, config.address_3};
}

QcmapWrapper::WWANStatics Router::Counters(uint32_t index, IPFamily family) {
  QcmapWrapper::WWANStatics counters{};
  Require(Wrapper().GetWWANStatistics(index, family, counters) == Result::SUCCESS, Failure::REFUSED,
          ProfileName(index));
  return counters;
}

LanConfig Router::Lan() {
  LanConfig lan;
  Require(Wrapper().GetLanConfig(lan.gateway, lan.netmask, lan.dhcp, lan.start, lan.end, lan.lease),
          Failure::REFUSED);
  return lan;
}

std::vector<VlanConfig> Router::Vlans() {
  std::vector<VlanConfig> vlans;
  Require(Wrapper().GetVlanConfigs(vlans), Failure::REFUSED, "VLAN list");
  return vlans;
}

std::vector<VlanMapping> Router::Mappings() {
  std::vector<VlanMapping> mappings;
  Require(Wrapper().GetPdnToVlanMapping(mappings), Failure::REFUSED, "mapping list");
  return mappings;
}

Passthrough Router::PassthroughConfig(bool& enabled) {
  Passthrough config;
  Require(Wrapper().GetIpPassthrough(enabled, config), Failure::REFUSED);
  return config;
}

void Router::Require(bool granted, Failure refusal, const std::string& subject) {
  if (!granted) throw CommandFailed(refusal, subject, ReasonOfRefusal());
}

void Router::Require(bool granted, const std::function<Failure()>& find_refusal,
                     const std::string& subject) {
  if (granted) return;
  Reason reason = ReasonOfRefusal();
  throw CommandFailed(find_refusal(), subject, reason);
}

Reason Router::ReasonOfRefusal() {
  Reason reason = ReasonIn(LastError());
  // The client reports this code, too, when it gives a request up.
  const bool is_given_up = reason.code == 3 && Clock::now() - asked_at_ >= kGivenUpAfter;
  QcmapWrapper& wrapper = Wrapper();
  if (!wrapper.IsQcmapAlive()) throw CommandFailed(Failure::SERVER_GONE);
  if (is_given_up) throw CommandFailed(Failure::NO_ANSWER);

  // Any granted request proves the connection. Two different ones are tried, since the server may
  // refuse one of them.
  const auto start = Clock::now();
  std::vector<WwanPolicy> policies;
  if (wrapper.GetWwanPolicies(policies)) return reason;
  if (Clock::now() - start >= kHungAfter) throw CommandFailed(Failure::NO_ANSWER);
  LanConfig lan;
  if (wrapper.GetLanConfig(lan.gateway, lan.netmask, lan.dhcp, lan.start, lan.end, lan.lease)) {
    return reason;
  }
  throw CommandFailed(Failure::SERVER_GONE);
}

std::string ProfileName(uint32_t index) {
  return "profile " + std::to_string(index);
}

}  // namespace qcmapctl
