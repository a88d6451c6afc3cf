/// The tool's connection to the server, and why a request failed on it.
#include "session.h"

#include <chrono>

namespace qcmapctl {
namespace {

using Clock = std::chrono::steady_clock;

// A server that refuses does so in milliseconds; one that hangs is given up after two seconds for
// each request.
constexpr std::chrono::seconds kHungAfter{1};

}  // namespace

QcmapWrapper& Session::Wrapper() {
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

std::vector<WwanPolicy> Session::Policies() {
  std::vector<WwanPolicy> policies;
  Require(Wrapper().GetWwanPolicies(policies), Failure::REFUSED, "policy list");
  return policies;
}

WwanPolicy Session::Policy(uint32_t index) {
  const std::vector<WwanPolicy> policies = Policies();
  if (index >= policies.size()) throw CommandFailed(Failure::NO_PROFILE, ProfileName(index));
  return policies[index];
}

void Session::Require(bool granted, Failure refusal, const std::string& subject) {
  if (granted) return;
  RequireServer();
  throw CommandFailed(refusal, subject);
}

void Session::RequireServer() {
  QcmapWrapper& wrapper = Wrapper();
  if (!wrapper.IsQcmapAlive()) throw CommandFailed(Failure::SERVER_GONE);

  // A connection that carries any request is sound. Two different ones are tried, since the server
  // may refuse one of them.
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
