/// The router as the commands see it: its state as the server reports it, or what went wrong.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "deadline.h"
#include "failure.h"
#include "mox/vendor/qcom/qcmap/qcmap_wrapper.h"
#include "vocabulary.h"

namespace qcmapctl {

using mox::vendor::qcom::qcmap::QcmapWrapper;
using Passthrough = mox::wwan::MobileapManager::IpPassthroughConfig;
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

struct LanConfig {
  std::string gateway;
  std::string netmask;
  bool dhcp = false;
  std::string start;
  std::string end;
  int lease = 0;
};

/// Connects when a command first needs the server, so that help and usage errors work without one.
/// The library reports only success or failure, so this class finds out what failed, also from the
/// log. All members may throw CommandFailed.
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
  QcmapWrapper::WWANStatics Counters(uint32_t index, IPFamily family);

  LanConfig Lan();
  std::vector<VlanConfig> Vlans();
  std::vector<VlanMapping> Mappings();
  Passthrough PassthroughConfig(bool& enabled);

  /// Ends the command if the request before it was not granted. If the server itself is in trouble,
  /// the failure says so; otherwise it is `refusal` of `subject`.
  void Require(bool granted, Failure refusal, const std::string& subject = {});
  /// The same if more requests are needed to find out why it was refused.
  void Require(bool granted, const std::function<Failure()>& find_refusal,
               const std::string& subject);

  /// Why the last request was not granted. Ends the command if the server was lost or does not
  /// answer; returns if it only refused.
  Reason ReasonOfRefusal();

 private:
  QcmapWrapper* wrapper_ = nullptr;
  /// When the library was last asked for something.
  Clock::time_point asked_at_;
};

/// The name of a profile in messages.
std::string ProfileName(uint32_t index);

}  // namespace qcmapctl
