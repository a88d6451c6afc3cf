/// Answers to the requests about one profile: its policy, its switches and its calls.
#include <arpa/inet.h>

#include <algorithm>

#include "server/requests.h"

namespace sim {
namespace {

using Policy = qcmap_msgr_net_policy_info_v01;
using CallType = qcmap_msgr_wwan_call_type_v01;
using IpFamily = qcmap_msgr_ip_family_enum_v01;

constexpr uint64_t kPacketBytes = 1000;

template <typename Value>
Error Give(Value& reply, const Value& value) {
  reply = value;
  return kGranted;
}

/// Answers for the profile that the request names. The object converts to false when there is none.
class ProfileAnswers {
 public:
  ProfileAnswers(Model& model, Caller& caller)
      : modem_(model.modem), lan_(model.lan), caller_(caller) {
    if (caller_.profile == 0) caller_.profile = modem_.FirstHandle();
    profile_ = modem_.Find(caller_.profile);
  }
  explicit operator bool() const { return profile_ != nullptr; }

  Error GetWWANPolicy(const Nothing&, Policy& policy) { return Give(policy, profile_->policy); }
  Error SetWWANPolicy(const Policy& policy, Nothing&) {
    return IsValid(policy) ? Set(profile_->policy, policy) : QMI_ERR_INVALID_ARG_V01;
  }
  Error UpdateWWANPolicy(const PolicyUpdate& request, Nothing& nothing) {
    const bool both = request.update == QCMAP_MSGR_UPDATE_PROFILE_V4V6_V01;
    const bool whole = request.update == QCMAP_MSGR_UPDATE_PROFILE_POLICY_V01;
    const bool v4 = both || request.update == QCMAP_MSGR_UPDATE_PROFILE_V4_V01;
    const bool v6 = both || request.update == QCMAP_MSGR_UPDATE_PROFILE_V6_V01;
    if (!whole && !v4 && !v6) return QMI_ERR_INVALID_ARG_V01;
    Policy updated = whole ? request.policy : profile_->policy;
    if (v4) std::copy_n(request.policy.v4_profile_id, 2, updated.v4_profile_id);
    if (v6) std::copy_n(request.policy.v6_profile_id, 2, updated.v6_profile_id);
    return SetWWANPolicy(updated, nothing);
  }
  Error DeleteWWANPolicy(const Nothing&, Nothing&) {
    for (const auto& mapping : lan_.mappings)
      if (mapping.profile_handle == profile_->handle) return QMI_ERR_INCOMPATIBLE_STATE_V01;
    for (const Family& family : profile_->families)
      if (!family.IsDown()) return QMI_ERR_INCOMPATIBLE_STATE_V01;
    auto& profiles = modem_.profiles();
    profiles.erase(profiles.begin() + (profile_ - profiles.data()));
    return kGranted;
  }

  Error SetAutoconnect(const uint8_t& on, Nothing&) { return SetFlag(profile_->autoconnect, on); }
  Error GetAutoconnect(const Nothing&, uint8_t& on) { return GetFlag(on, profile_->autoconnect); }
  Error SetRoaming(const uint8_t& on, Nothing&) { return SetFlag(profile_->roaming, on); }
  Error GetRoaming(const Nothing&, uint8_t& on) { return GetFlag(on, profile_->roaming); }
  Error EnableIPV4(const Nothing&, Nothing&) { return Set(OfFamily(kIpv4).enabled, true); }
  Error DisableIPV4(const Nothing&, Nothing&) { return Set(OfFamily(kIpv4).enabled, false); }
  Error EnableIPV6(const Nothing&, Nothing&) { return Set(OfFamily(kIpv6).enabled, true); }
  Error DisableIPV6(const Nothing&, Nothing&) { return Set(OfFamily(kIpv6).enabled, false); }
  Error GetIPv4State(const Nothing&, uint8_t& on) { return GetFlag(on, OfFamily(kIpv4).enabled); }
  Error GetIPv6State(const Nothing&, uint8_t& on) { return GetFlag(on, OfFamily(kIpv6).enabled); }

  Error GetWWANStatus(const Nothing&, WwanStatus& status) {
    return Give(status, {profile_->Status(kIpv4), profile_->Status(kIpv6)});
  }
  Error ConnectBackHaul(const CallType& type, Nothing&) { return Order(type, &Modem::Connect); }
  Error DisconnectBackHaul(const CallType& type, Nothing&) {
    return Order(type, &Modem::Disconnect);
  }

  Error GetWWANStatistics(const IpFamily& meant, qcmap_msgr_wwan_statistics_type_v01& statistics) {
    return ForEach(meant, [&](Family& family) {
      const auto bytes = modem_.Count(family);
      for (size_t i = 0; i < bytes.size(); ++i) {
        statistics.bytes[i] += bytes[i];
        const uint64_t packets = (bytes[i] + kPacketBytes - 1) / kPacketBytes;
        statistics.packets[i] += static_cast<uint32_t>(packets);
      }
    });
  }
  Error ResetWWANStatistics(const IpFamily& meant, Nothing&) {
    return ForEach(meant, [&](Family& family) { modem_.SetCounters(family, {}); });
  }
  // The call's own address and two name servers, all from ranges reserved for documentation.
  Error GetNetworkConfiguration(const IpFamily& family, qcmap_nw_params_t& params) {
    const bool is_v6 = family == QCMAP_MSGR_IP_FAMILY_V6_V01;
    if (!is_v6 && family != QCMAP_MSGR_IP_FAMILY_V4_V01) return QMI_ERR_INVALID_ARG_V01;
    if (!OfFamily(is_v6 ? kIpv6 : kIpv4).IsUp()) return QMI_ERR_NO_NETWORK_FOUND_V01;
    const uint32_t host = (profile_->handle - 1) % 254 + 1;
    if (!is_v6) return Give(params, {{0xC0000200 | host, 0xC6336401, 0xC6336402}});
    const char* const addresses[] = {"2001:db8::", "2001:db8:53::1", "2001:db8:53::2"};
    for (size_t i = 0; i < std::size(addresses); ++i)
      ::inet_pton(AF_INET6, addresses[i], params.v6[i]);
    params.v6[0][15] = static_cast<uint8_t>(host);
    return kGranted;
  }

 private:
  Family& OfFamily(FamilyIndex family) { return profile_->families[family]; }
  /// Changes a setting. The change may be what autoconnect needs to bring a family up.
  template <typename Member, typename Value>
  Error Set(Member& member, const Value& value) {
    member = value;
    modem_.AutoConnect(*profile_);
    return kGranted;
  }
  Error SetFlag(bool& flag, uint8_t on) {
    return on <= 1 ? Set(flag, on) : QMI_ERR_INVALID_ARG_V01;
  }
  Error GetFlag(uint8_t& on, bool flag) { return Give<uint8_t>(on, flag); }
  Error Order(CallType type, Error (Modem::*order)(Profile&, FamilyIndex, uint32_t)) {
    const bool is_v6 = type == QCMAP_MSGR_WWAN_CALL_TYPE_V6_V01;
    if (!is_v6 && type != QCMAP_MSGR_WWAN_CALL_TYPE_V4_V01) return QMI_ERR_INVALID_ARG_V01;
    return (modem_.*order)(*profile_, is_v6 ? kIpv6 : kIpv4, caller_.handle);
  }
  template <typename Use>
  Error ForEach(IpFamily meant, Use use) {
    const bool both = meant == QCMAP_MSGR_IP_FAMILY_V4V6_V01;
    const bool v4 = both || meant == QCMAP_MSGR_IP_FAMILY_V4_V01;
    const bool v6 = both || meant == QCMAP_MSGR_IP_FAMILY_V6_V01;
    if (v4) use(OfFamily(kIpv4));
    if (v6) use(OfFamily(kIpv6));
    return v4 || v6 ? kGranted : QMI_ERR_INVALID_ARG_V01;
  }

  Modem& modem_;
  Lan& lan_;
  Caller& caller_;
  Profile* profile_;
};

}  // namespace

AnswerFunction FindProfileAnswer(uint32_t id) {
  switch (id) {
#define SIM_CASE(name, request, reply) \
  case message::name::kId:             \
    return AnswerWith<message::name, ProfileAnswers, &ProfileAnswers::name>;
    SIM_PROFILE_MESSAGES(SIM_CASE)
#undef SIM_CASE
    default:
      return nullptr;
  }
}

}  // namespace sim
