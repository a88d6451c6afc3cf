/// The simulated modem: its profiles and their calls. Only the server's one thread uses it.
#pragma once

#include <array>
#include <asio/io_context.hpp>
#include <chrono>
#include <functional>
#include <initializer_list>
#include <random>
#include <vector>

#include "protocol/indication.h"
#include "protocol/messages.h"
#include "server/timeline.h"

namespace sim {

using Error = qmi_error_type_v01;
using Milliseconds = std::chrono::milliseconds;

/// One family of a profile's call.
struct Family {
  bool enabled = true;
  /// The status code for IPv4, whatever the family. Profile::Status() gives the family's own code.
  qcmap_msgr_wwan_status_enum_v01 phase = QCMAP_MSGR_WWAN_STATUS_DISCONNECTED_V01;
  /// Handle of the client whose request is under way and which is told its outcome; 0 for
  /// autoconnect.
  uint32_t asker = 0;
  /// How many of the next attempts to connect are to fail.
  uint64_t failing_calls = 0;
  /// Bytes received and sent until the time `counted`. While the call is up, traffic since then
  /// comes on top.
  std::array<uint64_t, 2> bytes{};
  Clock::time_point counted{};

  bool IsUp() const { return phase == QCMAP_MSGR_WWAN_STATUS_CONNECTED_V01; }
  /// Whether the family is neither connected, connecting nor disconnecting.
  bool IsDown() const;
};

/// Whether a modem accepts the policy: known technologies, a known family, and profile numbers from
/// 1 to 24 for each family that the policy carries.
bool IsValid(const qcmap_msgr_net_policy_info_v01& policy);

struct Profile {
  profile_handle_type_v01 handle;
  qcmap_msgr_net_policy_info_v01 policy;
  bool autoconnect = false;
  bool roaming = false;
  std::array<Family, 2> families;

  qcmap_msgr_wwan_status_enum_v01 Status(FamilyIndex family) const;
};

/// Nothing but adding a profile needs memory, so a step of a call is never left half done.
class Modem : public Activity {
 public:
  struct Settings {
    size_t profiles = 3;
    Milliseconds call_time{200};
    bool network = true;
    /// Bytes that each connected family receives in a second. It sends a tenth as many.
    uint64_t traffic = 10000;
    /// Whether time moves only when the timeline is advanced.
    bool manual_clock = false;
    /// Each delay is longer by a random time of up to this. The same seed gives the same times.
    Milliseconds jitter{0};
    uint64_t seed = 1;
  };
  /// Sends an indication to the client with handle `receiver`, or to all clients when it is 0. Must
  /// not throw.
  using Indicate = std::function<void(uint32_t receiver, const Indication&)>;

  /// While `must_wait` holds, time does not advance any further.
  Modem(
      asio::io_context& io, const Settings& settings, Indicate indicate,
      std::function<bool()> must_wait = [] { return false; });

  void Arm() override { timeline_.Arm(); }
  Timeline& timeline() { return timeline_; }

  std::vector<Profile>& profiles() { return profiles_; }
  /// Returns null when no profile has this handle.
  Profile* Find(profile_handle_type_v01 handle);
  /// Handle of the first profile in the list. 0 when there is none.
  profile_handle_type_v01 FirstHandle() const {
    return profiles_.empty() ? 0 : profiles_.front().handle;
  }
  /// Adds a profile with a handle that was never used before.
  void Add(const qcmap_msgr_net_policy_info_v01& policy);

  bool mobile_ap_enabled() const { return mobile_ap_enabled_; }
  bool network() const { return network_; }
  bool roaming() const { return roaming_; }
  void EnableMobileAp();
  /// Ends all calls, until a client enables the Mobile AP again.
  void LoseMobileAp();
  void SetNetwork(bool on);
  void SetRoaming(bool on);

  Error Connect(Profile& profile, FamilyIndex family, uint32_t asker);
  Error Disconnect(Profile& profile, FamilyIndex family, uint32_t asker);
  /// Ends calls and attempts to connect as the network would. Then autoconnect tries again.
  void Drop(Profile& profile, std::initializer_list<FamilyIndex> families);
  /// Connects every family that autoconnect should bring up.
  void AutoConnect(Profile& profile);

  std::array<uint64_t, 2> Count(const Family& family) const;
  void SetCounters(Family& family, std::array<uint64_t, 2> bytes);

 private:
  void EndCall(Profile& profile, FamilyIndex family);
  bool MayCarry(const Profile& profile, FamilyIndex family) const;
  void Enter(Profile& profile, FamilyIndex family, qcmap_msgr_wwan_status_enum_v01 phase);
  /// Enters a phase that ends by itself.
  void Begin(Profile& profile, FamilyIndex family, qcmap_msgr_wwan_status_enum_v01 phase);
  /// Has OnTime() called for the family after this time and a random one.
  void Plan(const Profile& profile, FamilyIndex family, Milliseconds delay);
  /// Ends a phase, or has autoconnect try again.
  void OnTime(const Timeline::Event& event);
  void FinishConnecting(Profile& profile, FamilyIndex family);
  bool MayAutoConnect(const Profile& profile) const {
    return mobile_ap_enabled_ && profile.autoconnect;
  }
  void Report(const Profile& profile, FamilyIndex family, uint32_t indication,
              qcmap_msgr_wwan_status_enum_v01 outcome);

  const Settings settings_;
  Timeline timeline_;
  std::mt19937_64 random_{settings_.seed};
  const Indicate indicate_;
  std::vector<Profile> profiles_;
  profile_handle_type_v01 next_handle_ = 101;
  bool mobile_ap_enabled_ = false;
  bool network_;
  bool roaming_ = false;
};

}  // namespace sim
