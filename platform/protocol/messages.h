/// Every message between client and server: its name, its request record and its reply record.
///
/// A list's record ends with its last entry. A record of type Nothing takes no bytes, nor does the
/// record of a reply that carries an error.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "protocol/datagram.h"
#include "qcmap_client.h"

namespace sim {

struct Nothing {};
/// Names a session. Only its owner knows the key, which the server chooses.
struct SessionTicket {
  uint32_t handle;
  uint32_t key[2];
};
inline bool operator==(const SessionTicket& a, const SessionTicket& b) {
  return std::memcmp(&a, &b, sizeof a) == 0;
}
struct PolicyUpdate {
  qcmap_msgr_update_profile_enum_v01 update;
  qcmap_msgr_net_policy_info_v01 policy;
};
struct WwanStatus {
  qcmap_msgr_wwan_status_enum_v01 v4, v6;
};
struct MappingList {
  uint32_t count;
  qcmap_msgr_pdn_to_vlan_mapping_v01 mappings[QCMAP_MSGR_MAX_MAPPINGS_V01];
};
struct Passthrough {
  qcmap_msgr_ip_passthrough_mode_enum_v01 mode;
  qcmap_msgr_ip_passthrough_config_v01 config;
};

using PolicyList = qcmap_msgr_wwan_policy_list_resp_msg_v01;
using VlanList = qcmap_msgr_vlan_conf_t;

// A session has two connections, and the first message on each is OpenSession. On the first
// connection its handle is 0, and the reply is the session's ticket, with its Mobile AP handle. On
// the second connection, which receives the indications, it sends that ticket and gets it back.
// clang-format off
#define SIM_MODEM_MESSAGES(MESSAGE) \
  MESSAGE(EnableMobileAP, Nothing, Nothing) \
  MESSAGE(GetMobileAPStatus, Nothing, qcmap_msgr_mobile_ap_status_enum_v01) \
  MESSAGE(GetWWANPolicyList, Nothing, PolicyList) \
  MESSAGE(SetWWANProfileHandlePreference, profile_handle_type_v01, Nothing) \
  MESSAGE(CreateWWANPolicy, qcmap_msgr_net_policy_info_v01, Nothing)

// These act on the profile that the header names.
#define SIM_PROFILE_MESSAGES(MESSAGE) \
  MESSAGE(GetWWANPolicy, Nothing, qcmap_msgr_net_policy_info_v01) \
  MESSAGE(SetWWANPolicy, qcmap_msgr_net_policy_info_v01, Nothing) \
  MESSAGE(UpdateWWANPolicy, PolicyUpdate, Nothing) \
  MESSAGE(DeleteWWANPolicy, Nothing, Nothing) \
  MESSAGE(SetAutoconnect, uint8_t, Nothing) \
  MESSAGE(GetAutoconnect, Nothing, uint8_t) \
  MESSAGE(SetRoaming, uint8_t, Nothing) \
  MESSAGE(GetRoaming, Nothing, uint8_t) \
  MESSAGE(EnableIPV4, Nothing, Nothing) \
  MESSAGE(DisableIPV4, Nothing, Nothing) \
  MESSAGE(EnableIPV6, Nothing, Nothing) \
  MESSAGE(DisableIPV6, Nothing, Nothing) \
  MESSAGE(GetIPv4State, Nothing, uint8_t) \
  MESSAGE(GetIPv6State, Nothing, uint8_t) \
  MESSAGE(GetWWANStatus, Nothing, WwanStatus) \
  MESSAGE(ConnectBackHaul, qcmap_msgr_wwan_call_type_v01, Nothing) \
  MESSAGE(DisconnectBackHaul, qcmap_msgr_wwan_call_type_v01, Nothing) \
  MESSAGE(GetWWANStatistics, qcmap_msgr_ip_family_enum_v01, qcmap_msgr_wwan_statistics_type_v01) \
  MESSAGE(ResetWWANStatistics, qcmap_msgr_ip_family_enum_v01, Nothing) \
  MESSAGE(GetNetworkConfiguration, qcmap_msgr_ip_family_enum_v01, qcmap_nw_params_t)

#define SIM_LAN_MESSAGES(MESSAGE) \
  MESSAGE(GetLANConfig, Nothing, qcmap_msgr_lan_config_v01) \
  MESSAGE(SetLANConfig, qcmap_msgr_lan_config_v01, Nothing) \
  MESSAGE(ActivateLAN, Nothing, Nothing) \
  MESSAGE(SetVLANConfig, qcmap_msgr_vlan_config_v01, uint8_t) \
  MESSAGE(DeleteVLANConfig, qcmap_msgr_vlan_config_v01, Nothing) \
  MESSAGE(GetVLANConfig, Nothing, VlanList) \
  MESSAGE(AddPDNToVLANMapping, qcmap_msgr_pdn_to_vlan_mapping_v01, Nothing) \
  MESSAGE(DeletePDNToVLANMapping, qcmap_msgr_pdn_to_vlan_mapping_v01, Nothing) \
  MESSAGE(GetPDNtoVLANMappings, Nothing, MappingList) \
  MESSAGE(SetIPPassthroughConfig, Passthrough, Nothing) \
  MESSAGE(GetIPPassthroughConfig, Nothing, Passthrough) \
  MESSAGE(GetIPPassthroughState, Nothing, uint8_t)

#define SIM_MESSAGES(MESSAGE) \
  SIM_MODEM_MESSAGES(MESSAGE) SIM_PROFILE_MESSAGES(MESSAGE) SIM_LAN_MESSAGES(MESSAGE) \
  MESSAGE(OpenSession, SessionTicket, SessionTicket)
// clang-format on

#define SIM_NUMBER(name, request, reply) name,
enum class MessageId : uint32_t { SIM_MESSAGES(SIM_NUMBER) kCount };
#undef SIM_NUMBER

#define SIM_NAME(name, request, reply) #name,
/// Indexed by MessageId.
constexpr const char* kMessageNames[] = {SIM_MESSAGES(SIM_NAME)};
#undef SIM_NAME

namespace message {
#define SIM_TYPE(name, request, reply)                           \
  struct name {                                                  \
    using Request = request;                                     \
    using Reply = reply;                                         \
    static constexpr auto kId = uint32_t(MessageId::name);       \
    static_assert(std::is_trivially_copyable_v<Request>, #name); \
    static_assert(std::is_trivially_copyable_v<Reply>, #name);   \
  };
SIM_MESSAGES(SIM_TYPE)
#undef SIM_TYPE
}  // namespace message

constexpr size_t kMaxDatagramBytes = sizeof(Header) + sizeof(VlanList);

/// Returns the bytes that a record takes in a datagram. The count of a list is clamped to the
/// list's capacity first.
template <typename Record>
size_t WireSize(Record&) {
  return std::is_empty_v<Record> ? 0 : sizeof(Record);
}
template <typename List, typename Count, typename Entry, size_t kCapacity>
size_t ListSize(const List&, Count& count, const Entry (&entries)[kCapacity]) {
  count = std::min(count, static_cast<Count>(kCapacity));
  return sizeof(List) - sizeof entries + count * sizeof(Entry);
}
inline size_t WireSize(PolicyList& list) {
  return ListSize(list, list.policy_list_len, list.policy_list);
}
inline size_t WireSize(VlanList& list) {
  return ListSize(list, list.vlan_config_len, list.vlan_config);
}
inline size_t WireSize(MappingList& list) {
  return ListSize(list, list.count, list.mappings);
}

/// Copies the record out of a datagram. Returns false when the record has the wrong size; `record`
/// is then unspecified.
template <typename Record>
bool Unpack(const Datagram& datagram, Record& record) {
  std::memset(&record, 0, sizeof record);
  std::memcpy(&record, datagram.record, std::min(datagram.record_size, sizeof record));
  return datagram.record_size == WireSize(record);
}

}  // namespace sim
