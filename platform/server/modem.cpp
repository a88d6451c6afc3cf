/// Keeps the modem's profiles and takes their calls through connecting and disconnecting.
#include "server/modem.h"

#include <algorithm>

#include "server/words.h"

namespace sim {
namespace {

constexpr uint8_t kMaxProfileNumber = 24;
/// How long autoconnect waits after an attempt to connect has failed.
constexpr Milliseconds kRetryPause{1000};
/// Counters stand still here, where the sum of two of them still fits.
constexpr uint64_t kMaxBytes = INT64_MAX;

constexpr auto kConnecting = QCMAP_MSGR_WWAN_STATUS_CONNECTING_V01;
constexpr auto kConnectingFailed = QCMAP_MSGR_WWAN_STATUS_CONNECTING_FAIL_V01;
constexpr auto kConnected = QCMAP_MSGR_WWAN_STATUS_CONNECTED_V01;
constexpr auto kDisconnecting = QCMAP_MSGR_WWAN_STATUS_DISCONNECTING_V01;
constexpr auto kDisconnected = QCMAP_MSGR_WWAN_STATUS_DISCONNECTED_V01;
constexpr auto kBringUp = QMI_QCMAP_MSGR_BRING_UP_WWAN_IND_V01;
constexpr auto kTearDown = QMI_QCMAP_MSGR_TEAR_DOWN_WWAN_IND_V01;

qcmap_msgr_wwan_status_enum_v01 Code(FamilyIndex family, qcmap_msgr_wwan_status_enum_v01 phase) {
  return static_cast<qcmap_msgr_wwan_status_enum_v01>(phase + (family == kIpv6 ? 6 : 0));
}

}  // namespace

bool Family::IsDown() const {
  return phase != kConnecting && phase != kConnected && phase != kDisconnecting;
}

bool IsValid(const qcmap_msgr_net_policy_info_v01& policy) {
  const bool is_v4 = policy.ip_family == QCMAP_MSGR_IP_FAMILY_V4_V01;
  const bool is_v6 = policy.ip_family == QCMAP_MSGR_IP_FAMILY_V6_V01;
  const auto are_numbers = [](const uint8_t(&numbers)[2]) {
    return std::min(numbers[0], numbers[1]) >= 1 &&
           std::max(numbers[0], numbers[1]) <= kMaxProfileNumber;
  };
  return policy.tech_pref <= (QCMAP_MSGR_TECH_PREF_3GPP_V01 | QCMAP_MSGR_TECH_PREF_3GPP2_V01) &&
         (is_v4 || is_v6 || policy.ip_family == QCMAP_MSGR_IP_FAMILY_V4V6_V01) &&
         (is_v6 || are_numbers(policy.v4_profile_id)) &&
         (is_v4 || are_numbers(policy.v6_profile_id));
}

qcmap_msgr_wwan_status_enum_v01 Profile::Status(FamilyIndex family) const {
  return Code(family, families[family].phase);
}

Modem::Modem(asio::io_context& io, const Settings& settings, Indicate indicate,
             std::function<bool()> must_wait)
    : settings_(settings),
      timeline_(
          io, settings.manual_clock, [this](const Timeline::Event& event) { OnTime(event); },
          std::move(must_wait)),
      indicate_(std::move(indicate)),
      network_(settings.network) {
  for (size_t i = 0; i < settings.profiles; ++i) {
    const auto number = static_cast<uint8_t>(i + 1);
    Add({QCMAP_MSGR_TECH_PREF_3GPP_V01,
         QCMAP_MSGR_IP_FAMILY_V4V6_V01,
         {number, number},
         {number, number}});
  }
}

Profile* Modem::Find(profile_handle_type_v01 handle) {
  for (Profile& profile : profiles_)
    if (profile.handle == handle) return &profile;
  return nullptr;
}

void Modem::Add(const qcmap_msgr_net_policy_info_v01& policy) {
  timeline_.Reserve(std::size(kFamilies) * (profiles_.size() + 1));
  profiles_.push_back({next_handle_, policy, false, false, {}});
  ++next_handle_;
}

void Modem::EnableMobileAp() {
  if (mobile_ap_enabled_) return;
  mobile_ap_enabled_ = true;
  indicate_(0, {QMI_QCMAP_MSGR_MOBILE_AP_STATUS_IND_V01, QCMAP_MSGR_MOBILE_AP_STATUS_CONNECTED_V01,
                std::nullopt});
  for (Profile& profile : profiles_) AutoConnect(profile);
}

void Modem::LoseMobileAp() {
  if (!mobile_ap_enabled_) return;
  mobile_ap_enabled_ = false;
  for (Profile& profile : profiles_) Drop(profile, {kIpv4, kIpv6});
  indicate_(0, {QMI_QCMAP_MSGR_MOBILE_AP_STATUS_IND_V01,
                QCMAP_MSGR_MOBILE_AP_STATUS_DISCONNECTED_V01, std::nullopt});
}

void Modem::SetNetwork(bool on) {
  network_ = on;
  for (Profile& profile : profiles_) {
    if (on) {
      AutoConnect(profile);
    } else {
      Drop(profile, {kIpv4, kIpv6});
    }
  }
}

void Modem::SetRoaming(bool on) {
  roaming_ = on;
  for (Profile& profile : profiles_) AutoConnect(profile);
}

Error Modem::Connect(Profile& profile, FamilyIndex family, uint32_t asker) {
  const auto phase = profile.families[family].phase;
  if (phase == kConnecting || phase == kConnected) return QMI_ERR_NO_EFFECT_V01;
  if (phase == kDisconnecting) return QMI_ERR_INCOMPATIBLE_STATE_V01;
  if (!network_) return QMI_ERR_NO_NETWORK_FOUND_V01;
  if (!MayCarry(profile, family)) return QMI_ERR_CALL_FAILED_V01;
  profile.families[family].asker = asker;
  Begin(profile, family, kConnecting);
  return QMI_ERR_NONE_V01;
}

Error Modem::Disconnect(Profile& profile, FamilyIndex family, uint32_t asker) {
  if (profile.families[family].phase == kDisconnecting) return QMI_ERR_NO_EFFECT_V01;
  if (profile.families[family].IsDown()) return QMI_ERR_INCOMPATIBLE_STATE_V01;
  // The client that asked for the connection learns that it failed.
  if (profile.families[family].phase == kConnecting)
    Report(profile, family, kBringUp, kConnectingFailed);
  profile.families[family].asker = asker;
  Begin(profile, family, kDisconnecting);
  return QMI_ERR_NONE_V01;
}

void Modem::Drop(Profile& profile, std::initializer_list<FamilyIndex> families) {
  for (const FamilyIndex family : families) EndCall(profile, family);
  AutoConnect(profile);
}

void Modem::EndCall(Profile& profile, FamilyIndex family) {
  if (profile.families[family].phase == kConnecting) {
    Report(profile, family, kBringUp, kConnectingFailed);
    Enter(profile, family, kConnectingFailed);
  } else if (profile.families[family].IsUp()) {
    Enter(profile, family, kDisconnected);
  }
}

void Modem::AutoConnect(Profile& profile) {
  if (!MayAutoConnect(profile)) return;
  for (const FamilyIndex family : kFamilies) Connect(profile, family, 0);
}

bool Modem::MayCarry(const Profile& profile, FamilyIndex family) const {
  const auto other = family == kIpv4 ? QCMAP_MSGR_IP_FAMILY_V6_V01 : QCMAP_MSGR_IP_FAMILY_V4_V01;
  return (!roaming_ || profile.roaming) && profile.families[family].enabled &&
         profile.policy.ip_family != other;
}

void Modem::Enter(Profile& profile, FamilyIndex family, qcmap_msgr_wwan_status_enum_v01 phase) {
  Family& entered = profile.families[family];
  timeline_.Remove(profile.handle, family);
  SetCounters(entered, Count(entered));
  entered.phase = phase;
  indicate_(0, {QMI_QCMAP_MSGR_WWAN_STATUS_IND_V01, profile.Status(family), profile.handle});
}

void Modem::Begin(Profile& profile, FamilyIndex family, qcmap_msgr_wwan_status_enum_v01 phase) {
  Enter(profile, family, phase);
  Plan(profile, family, settings_.call_time);
}

void Modem::Plan(const Profile& profile, FamilyIndex family, Milliseconds delay) {
  using std::chrono::microseconds;
  const auto most = static_cast<uint64_t>(microseconds(settings_.jitter).count());
  const microseconds jitter(random_() % (most + 1));
  timeline_.Add({timeline_.Now() + delay + jitter, profile.handle, family});
}

void Modem::OnTime(const Timeline::Event& event) {
  Profile* const profile = Find(event.profile);
  if (profile == nullptr) return;
  const auto phase = profile->families[event.family].phase;
  if (phase == kConnecting) {
    FinishConnecting(*profile, event.family);
  } else if (phase == kDisconnecting) {
    Report(*profile, event.family, kTearDown, kDisconnected);
    Enter(*profile, event.family, kDisconnected);
  } else if (MayAutoConnect(*profile)) {
    Connect(*profile, event.family, 0);
  }
}

void Modem::FinishConnecting(Profile& profile, FamilyIndex family) {
  uint64_t& failing_calls = profile.families[family].failing_calls;
  const auto outcome = failing_calls > 0 ? kConnectingFailed : kConnected;
  if (failing_calls > 0 && failing_calls != kUntilHealed) --failing_calls;
  Report(profile, family, kBringUp, outcome);
  Enter(profile, family, outcome);
  if (outcome == kConnectingFailed && MayAutoConnect(profile)) Plan(profile, family, kRetryPause);
}

void Modem::Report(const Profile& profile, FamilyIndex family, uint32_t indication,
                   qcmap_msgr_wwan_status_enum_v01 outcome) {
  const uint32_t asker = profile.families[family].asker;
  if (asker != 0) indicate_(asker, {indication, Code(family, outcome), profile.handle});
}

std::array<uint64_t, 2> Modem::Count(const Family& family) const {
  if (!family.IsUp()) return family.bytes;
  const std::chrono::duration<double> seconds = timeline_.Now() - family.counted;
  const double in_all = static_cast<double>(settings_.traffic) * seconds.count();
  const auto received = static_cast<uint64_t>(std::min(in_all, static_cast<double>(kMaxBytes)));
  return {std::min(family.bytes[0] + received, kMaxBytes),
          std::min(family.bytes[1] + received / 10, kMaxBytes)};
}

void Modem::SetCounters(Family& family, std::array<uint64_t, 2> bytes) {
  for (size_t i = 0; i < bytes.size(); ++i) family.bytes[i] = std::min(bytes[i], kMaxBytes);
  family.counted = timeline_.Now();
}

}  // namespace sim
