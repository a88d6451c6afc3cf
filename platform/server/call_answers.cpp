/// Answers to the requests about profiles and their calls.
#include <arpa/inet.h>

#include <algorithm>

#include "server/requests.h"

namespace sim {
namespace {

constexpr Error kGranted = QMI_ERR_NONE_V01;
constexpr uint8_t kMaxProfileNumber = 24;
constexpr uint64_t kPacketBytes = 1000;

/// Whether a modem takes the policy: known technologies and family, and profile numbers that it has
/// for the families that the policy carries.
bool IsSound(const qcmap_msgr_net_policy_info_v01& policy) {
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

/// Changes something of a profile that may be what a call was waiting for.
template <typename Member, typename Value>
Error Set(Model& model, Profile& profile, Member& member, const Value& value) {
  member = value;
  model.modem.AutoConnect(profile);
  return kGranted;
}

bool IsFlag(uint8_t value) {
  return value <= 1;
}

/// Hands each family that is meant to `use`.
template <typename Use>
Error ForEach(qcmap_msgr_ip_family_enum_v01 meant, Use use) {
  const bool both = meant == QCMAP_MSGR_IP_FAMILY_V4V6_V01;
  const bool v4 = both || meant == QCMAP_MSGR_IP_FAMILY_V4_V01;
  const bool v6 = both || meant == QCMAP_MSGR_IP_FAMILY_V6_V01;
  if (v4) use(kIpv4);
  if (v6) use(kIpv6);
  return v4 || v6 ? kGranted : QMI_ERR_INVALID_ARG_V01;
}

bool IsKnown(qcmap_msgr_wwan_call_type_v01 type) {
  return type == QCMAP_MSGR_WWAN_CALL_TYPE_V4_V01 || type == QCMAP_MSGR_WWAN_CALL_TYPE_V6_V01;
}

FamilyIndex FamilyOf(qcmap_msgr_wwan_call_type_v01 type) {
  return type == QCMAP_MSGR_WWAN_CALL_TYPE_V6_V01 ? kIpv6 : kIpv4;
}

}  // namespace

namespace answer {

// The connection itself opens its session, once.
Error OpenSession(Model&, Session&, const uint32_t&, uint32_t&) {
  return QMI_ERR_INCOMPATIBLE_STATE_V01;
}

Error EnableMobileAP(Model& model, Session&, const Nothing&, Nothing&) {
  model.modem.EnableMobileAp();
  return kGranted;
}

Error GetMobileAPStatus(Model& model, Session&, const Nothing&,
                        qcmap_msgr_mobile_ap_status_enum_v01& status) {
  status = model.modem.mobile_ap_enabled() ? QCMAP_MSGR_MOBILE_AP_STATUS_CONNECTED_V01
                                           : QCMAP_MSGR_MOBILE_AP_STATUS_DISCONNECTED_V01;
  return kGranted;
}

Error GetWWANPolicyList(Model& model, Session&, const Nothing&, PolicyList& list) {
  list.policy_list_valid = 1;
  for (const Profile& profile : model.modem.profiles())
    list.policy_list[list.policy_list_len++] = {profile.handle, profile.policy};
  return kGranted;
}

Error SetWWANProfileHandlePreference(Model& model, Session& session,
                                     const profile_handle_type_v01& handle, Nothing&) {
  if (model.modem.Find(handle) == nullptr) return QMI_ERR_INVALID_HANDLE_V01;
  session.profile = handle;
  return kGranted;
}

Error GetWWANPolicy(Model&, Session&, Profile& profile, const Nothing&,
                    qcmap_msgr_net_policy_info_v01& policy) {
  policy = profile.policy;
  return kGranted;
}

Error SetWWANPolicy(Model& model, Session&, Profile& profile,
                    const qcmap_msgr_net_policy_info_v01& policy, Nothing&) {
  if (!IsSound(policy)) return QMI_ERR_INVALID_ARG_V01;
  return Set(model, profile, profile.policy, policy);
}

Error UpdateWWANPolicy(Model& model, Session& session, Profile& profile,
                       const PolicyUpdate& request, Nothing& nothing) {
  const bool both = request.update == QCMAP_MSGR_UPDATE_PROFILE_V4V6_V01;
  const bool whole = request.update == QCMAP_MSGR_UPDATE_PROFILE_POLICY_V01;
  const bool v4 = both || request.update == QCMAP_MSGR_UPDATE_PROFILE_V4_V01;
  const bool v6 = both || request.update == QCMAP_MSGR_UPDATE_PROFILE_V6_V01;
  if (!whole && !v4 && !v6) return QMI_ERR_INVALID_ARG_V01;
  qcmap_msgr_net_policy_info_v01 updated = whole ? request.policy : profile.policy;
  if (v4) std::copy_n(request.policy.v4_profile_id, 2, updated.v4_profile_id);
  if (v6) std::copy_n(request.policy.v6_profile_id, 2, updated.v6_profile_id);
  return SetWWANPolicy(model, session, profile, updated, nothing);
}

Error CreateWWANPolicy(Model& model, Session&, const qcmap_msgr_net_policy_info_v01& policy,
                       Nothing&) {
  if (!IsSound(policy)) return QMI_ERR_INVALID_ARG_V01;
  if (model.modem.profiles().size() == QCMAP_MSGR_MAX_WWAN_POLICY_V01)
    return QMI_ERR_NO_MEMORY_IN_LIST_V01;
  model.modem.Add(policy);
  return kGranted;
}

Error DeleteWWANPolicy(Model& model, Session&, Profile& profile, const Nothing&, Nothing&) {
  for (const auto& mapping : model.lan.mappings)
    if (mapping.profile_handle == profile.handle) return QMI_ERR_INCOMPATIBLE_STATE_V01;
  for (const Family& family : profile.families)
    if (!family.IsDown()) return QMI_ERR_INCOMPATIBLE_STATE_V01;
  auto& profiles = model.modem.profiles();
  profiles.erase(profiles.begin() + (&profile - profiles.data()));
  return kGranted;
}

Error SetAutoconnect(Model& model, Session&, Profile& profile, const uint8_t& on, Nothing&) {
  return IsFlag(on) ? Set(model, profile, profile.autoconnect, on) : QMI_ERR_INVALID_ARG_V01;
}

Error GetAutoconnect(Model&, Session&, Profile& profile, const Nothing&, uint8_t& on) {
  on = profile.autoconnect;
  return kGranted;
}

Error SetRoaming(Model& model, Session&, Profile& profile, const uint8_t& on, Nothing&) {
  return IsFlag(on) ? Set(model, profile, profile.roaming, on) : QMI_ERR_INVALID_ARG_V01;
}

Error GetRoaming(Model&, Session&, Profile& profile, const Nothing&, uint8_t& on) {
  on = profile.roaming;
  return kGranted;
}

Error EnableIPV4(Model& model, Session&, Profile& profile, const Nothing&, Nothing&) {
  return Set(model, profile, profile.families[kIpv4].enabled, true);
}

Error DisableIPV4(Model& model, Session&, Profile& profile, const Nothing&, Nothing&) {
  return Set(model, profile, profile.families[kIpv4].enabled, false);
}

Error EnableIPV6(Model& model, Session&, Profile& profile, const Nothing&, Nothing&) {
  return Set(model, profile, profile.families[kIpv6].enabled, true);
}

Error DisableIPV6(Model& model, Session&, Profile& profile, const Nothing&, Nothing&) {
  return Set(model, profile, profile.families[kIpv6].enabled, false);
}

Error GetIPv4State(Model&, Session&, Profile& profile, const Nothing&, uint8_t& on) {
  on = profile.families[kIpv4].enabled;
  return kGranted;
}

Error GetIPv6State(Model&, Session&, Profile& profile, const Nothing&, uint8_t& on) {
  on = profile.families[kIpv6].enabled;
  return kGranted;
}

Error GetWWANStatus(Model&, Session&, Profile& profile, const Nothing&, WwanStatus& status) {
  status = {profile.Status(kIpv4), profile.Status(kIpv6)};
  return kGranted;
}

Error ConnectBackHaul(Model& model, Session& session, Profile& profile,
                      const qcmap_msgr_wwan_call_type_v01& type, Nothing&) {
  if (!IsKnown(type)) return QMI_ERR_INVALID_ARG_V01;
  return model.modem.Connect(profile, FamilyOf(type), session.handle);
}

Error DisconnectBackHaul(Model& model, Session& session, Profile& profile,
                         const qcmap_msgr_wwan_call_type_v01& type, Nothing&) {
  if (!IsKnown(type)) return QMI_ERR_INVALID_ARG_V01;
  return model.modem.Disconnect(profile, FamilyOf(type), session.handle);
}

Error GetWWANStatistics(Model& model, Session&, Profile& profile,
                        const qcmap_msgr_ip_family_enum_v01& meant,
                        qcmap_msgr_wwan_statistics_type_v01& statistics) {
  return ForEach(meant, [&](FamilyIndex family) {
    const auto bytes = model.modem.Count(profile.families[family]);
    for (size_t i = 0; i < bytes.size(); ++i) {
      statistics.bytes[i] += bytes[i];
      statistics.packets[i] += static_cast<uint32_t>((bytes[i] + kPacketBytes - 1) / kPacketBytes);
    }
  });
}

Error ResetWWANStatistics(Model& model, Session&, Profile& profile,
                          const qcmap_msgr_ip_family_enum_v01& meant, Nothing&) {
  return ForEach(
      meant, [&](FamilyIndex family) { model.modem.SetCounters(profile.families[family], {}); });
}

// The call's own address and two name servers, from the ranges set aside for documentation.
Error GetNetworkConfiguration(Model&, Session&, Profile& profile,
                              const qcmap_msgr_ip_family_enum_v01& family,
                              qcmap_nw_params_t& params) {
  const bool is_v6 = family == QCMAP_MSGR_IP_FAMILY_V6_V01;
  if (!is_v6 && family != QCMAP_MSGR_IP_FAMILY_V4_V01) return QMI_ERR_INVALID_ARG_V01;
  if (!profile.families[is_v6 ? kIpv6 : kIpv4].IsUp()) return QMI_ERR_NO_NETWORK_FOUND_V01;
  const uint32_t host = (profile.handle - 1) % 254 + 1;
  if (!is_v6) {
    params = {{0xC0000200 | host, 0xC6336401, 0xC6336402}};
    return kGranted;
  }
  const char* const addresses[] = {"2001:db8::", "2001:db8:53::1", "2001:db8:53::2"};
  for (size_t i = 0; i < std::size(addresses); ++i)
    ::inet_pton(AF_INET6, addresses[i], params.v6[i]);
  params.v6[0][15] = static_cast<uint8_t>(host);
  return kGranted;
}

}  // namespace answer
}  // namespace sim
