/// The router as the commands see it: its state as the server reports it, or what went wrong.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "failure.h"
#include "mox/vendor/qcom/qcmap/qcmap_wrapper.h"
#include "vocabulary.h"

namespace qcmapctl {

using mox::vendor::qcom::qcmap::QcmapWrapper;
using VlanConfig = mox::wwan::MobileapManager::VlanConfig;
using VlanMapping = mox::wwan::MobileapManager::VlanMapping;
using WwanPolicy = mox::wwan::DataManager::WwanPolicy;

/// A profile and its policy.
struct Profile {
  uint32_t index;
  WwanPolicy policy;
};

/// The state of both families of a profile's call.
struct FamilyStates {
  ConnectStatus ipv4 = ConnectStatus::UNKNOWN;
  ConnectStatus ipv6 = ConnectStatus::UNKNOWN;

  ConnectStatus Of(IPFamily family) const { return family == IPFamily::IPV6 ? ipv6 : ipv4; }
  /// Whether one family is up while the other is not, although `policy` asks for it too.
  bool IsHalfUp(const WwanPolicy& policy) const;
};

/// Connects when a command first needs the server, so that help and usage errors work without one.
/// The library reports no error codes, so this class finds out what failed. All members may throw
/// CommandFailed.
class Router {
 public:
  /// The library's object, connected.
  QcmapWrapper& Wrapper();

  /// All policies; a profile's index is its position.
  std::vector<WwanPolicy> Policies();
  /// The policy of a profile that must exist.
  WwanPolicy Policy(uint32_t index);
  /// The profile with that index, which must exist; all profiles without one.
  std::vector<Profile> Profiles(const std::optional<uint32_t>& index = std::nullopt);

  FamilyStates CallState(uint32_t index);
  /// The addresses of one family in the server's order; empty while the call has none.
  std::vector<std::string> Addresses(uint32_t index, IPFamily family);

  std::vector<VlanConfig> Vlans();
  std::vector<VlanMapping> Mappings();

  /// Ends the command if the server did not grant the request. If the server itself is in trouble,
  /// the failure says so; otherwise it is `refusal` of `subject`.
  void Require(bool granted, Failure refusal, const std::string& subject = {});

  /// Ends the command if the server was lost or does not answer; returns if it only refused.
  void RequireServer();

 private:
  QcmapWrapper* wrapper_ = nullptr;
};

/// The name of a profile in messages.
std::string ProfileName(uint32_t index);

}  // namespace qcmapctl
