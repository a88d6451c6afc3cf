/// The router as the commands see it: its state as the server reports it, or what went wrong.
#include "router.h"

#include <chrono>

namespace qcmapctl {
namespace {

using Clock = std::chrono::steady_clock;
using mox::Result;

// A server that refuses does so within milliseconds. With one that hangs, each request fails after
// two seconds.
constexpr std::chrono::seconds kHungAfter{1};

}  // namespace

bool FamilyStates::IsHalfUp(const WwanPolicy& policy) const {
  const bool ipv4_up = ipv4 == ConnectStatus::CONNECTED;
  const bool ipv6_up = ipv6 == ConnectStatus::CONNECTED;
  if (ipv4_up == ipv6_up) return false;
  return policy.ip_family != (ipv4_up ? IPFamily::IPV4 : IPFamily::IPV6);
}

QcmapWrapper& Router::Wrapper() {
  if (wrapper_ != nullptr) return *wrapper_;

  QcmapWrapper* wrapper = QcmapWrapper::GetInstance();
  const auto start = Clock::now();
  if (!wrapper->ConnectToQcmapIfNeeded()) {
    const bool hung = Clock::now() - start >= kHungAfter;
    if (!wrapper->IsQcmapAlive()) throw CommandFailed(Failure::SERVER_DOWN);
    throw CommandFailed(hung ? Failure::NO_ANSWER : Failure::NOT_CONNECTED);
  }
  wrapper_ = wrapper;
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

void Router::Require(bool granted, Failure refusal, const std::string& subject) {
  if (granted) return;
  RequireServer();
  throw CommandFailed(refusal, subject);
}

void Router::RequireServer() {
  QcmapWrapper& wrapper = Wrapper();
  if (!wrapper.IsQcmapAlive()) throw CommandFailed(Failure::SERVER_GONE);

  // Any granted request proves the connection. Two different ones are tried, since the server may
  // refuse one of them.
  const auto start = Clock::now();
  std::vector<WwanPolicy> policies;
  if (wrapper.GetWwanPolicies(policies)) return;
  if (Clock::now() - start >= kHungAfter) throw CommandFailed(Failure::NO_ANSWER);
  std::string gateway, netmask, range_start, range_end;
  bool dhcp = false;
  int lease = 0;
  if (wrapper.GetLanConfig(gateway, netmask, dhcp, range_start, range_end, lease)) return;
  throw CommandFailed(Failure::SERVER_GONE);
}

std::string ProfileName(uint32_t index) {
  return "profile " + std::to_string(index);
}

}  // namespace qcmapctl
