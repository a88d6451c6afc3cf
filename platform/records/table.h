/// The one table of names: the fields of the seam's records, the enumerators, and the requests with
/// their arguments and answers. Whatever shows or reads a record does it by this table (see
/// printer.h). It needs only the seam's headers, so it serves a device as well.
#pragma once

#include <qcmap_client.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string_view>
#include <tuple>

namespace seam {

// What a value means, where its type does not say so.

/// A number in host byte order.
template <typename Number>
struct Ipv4Address {
  Number& number;
};
template <typename Number>
Ipv4Address(Number&) -> Ipv4Address<Number>;

/// A number that stands for an enumerator.
template <typename Enum, typename Number>
struct Code {
  Number& number;
};
template <typename Enum, typename Number>
Code<Enum, Number> AsCode(Number& number) {
  return {number};
}

/// The name of somebody's machine, in a field that it may fill without a terminator.
template <typename Char>
struct HostName {
  Char* text;
  size_t capacity;
};
template <typename Char>
HostName(Char*, size_t) -> HostName<Char>;

template <typename Entry>
struct Entries {
  Entry* first;
  size_t count;
  /// How many a reader may write.
  size_t capacity = 0;
};
/// As many entries as `count` says, but no more than there is room for.
template <typename Entry, typename Count>
Entries<Entry> Counted(Entry* first, Count count, size_t capacity) {
  const size_t wanted = count < 0 ? 0 : static_cast<size_t>(count);
  return {first, std::min(wanted, capacity), capacity};
}

/// A field's name, and a function that returns its value in a given record.
template <typename In>
struct Field {
  const char* name;
  In in;
};
template <typename In>
Field(const char*, In) -> Field<In>;

/// The fields of a record: a tuple of Field.
template <typename Record>
inline constexpr auto kFields = nullptr;

// clang-format off
#define RECORD(type, ...) \
  template <> inline constexpr auto kFields<type> = std::make_tuple(__VA_ARGS__)
#define FIELD(name) Field{#name, [](auto& record) -> auto& { return record.name; }}
#define IPV4(name) Field{#name, [](auto& record) { return Ipv4Address{record.name}; }}
#define CODE(name, type) Field{#name, [](auto& record) { return AsCode<type>(record.name); }}
#define HOST_NAME(name) \
  Field{#name, [](auto& record) { return HostName{record.name, sizeof record.name}; }}
#define LIST(name, count) \
  Field{#name, [](auto& record) { return Counted(record.name, record.count, std::size(record.name)); }}

RECORD(qcmap_msgr_net_policy_info_v01,
       FIELD(tech_pref), FIELD(ip_family), FIELD(v4_profile_id), FIELD(v6_profile_id));
RECORD(qcmap_msgr_wwan_policy_entry_v01, FIELD(profile_handle), FIELD(policy));
RECORD(qcmap_msgr_wwan_policy_list_resp_msg_v01,
       FIELD(policy_list_valid), FIELD(policy_list_len), LIST(policy_list, policy_list_len));
RECORD(qcmap_msgr_wwan_statistics_type_v01, FIELD(bytes), FIELD(packets));
RECORD(qcmap_msgr_lan_config_v01,
       IPV4(gw_ip), IPV4(netmask), FIELD(enable_dhcp), IPV4(dhcp_start_ip), IPV4(dhcp_end_ip),
       FIELD(lease_time));
RECORD(qcmap_msgr_vlan_config_v01, FIELD(iface_name), FIELD(vlan_id));
RECORD(qcmap_msgr_vlan_conf_t, FIELD(vlan_config_len), LIST(vlan_config, vlan_config_len));
RECORD(qcmap_msgr_pdn_to_vlan_mapping_v01, FIELD(profile_handle), FIELD(vlan_id));
RECORD(qcmap_msgr_ip_passthrough_config_v01,
       FIELD(device_type), FIELD(mac_addr), HOST_NAME(device_name));
// All indications about a call begin with these fields.
RECORD(qcmap_msgr_tear_down_wwan_ind_msg_v01,
       FIELD(mobile_ap_handle), CODE(conn_status, qcmap_msgr_wwan_status_enum_v01),
       FIELD(profile_handle_valid), FIELD(profile_handle));
RECORD(qcmap_msgr_status_ind_msg_v01, CODE(status, qcmap_msgr_mobile_ap_status_enum_v01));

#undef RECORD
#undef FIELD
#undef IPV4
#undef CODE
#undef HOST_NAME
#undef LIST
// clang-format on

struct Enumerator {
  int64_t value;
  const char* name;
};
/// The enumerators of a type, without the beginning and the `_V01` that all its names share.
template <typename Enum>
inline constexpr Enumerator kEnumerators[1] = {};

#define NAMED(prefix, name) \
  { prefix##name##_V01, #name }

template <>
inline constexpr Enumerator kEnumerators<qmi_error_type_v01>[] = {
    NAMED(QMI_ERR_, NONE),
    NAMED(QMI_ERR_, INTERNAL),
    NAMED(QMI_ERR_, INVALID_HANDLE),
    NAMED(QMI_ERR_, NO_NETWORK_FOUND),
    NAMED(QMI_ERR_, CALL_FAILED),
    NAMED(QMI_ERR_, NO_EFFECT),
    NAMED(QMI_ERR_, INVALID_ARG),
    NAMED(QMI_ERR_, NO_MEMORY_IN_LIST),
    NAMED(QMI_ERR_, INCOMPATIBLE_STATE),
};
template <>
inline constexpr Enumerator kEnumerators<qcmap_msgr_ip_family_enum_v01>[] = {
    NAMED(QCMAP_MSGR_IP_FAMILY_, V4),
    NAMED(QCMAP_MSGR_IP_FAMILY_, V6),
    NAMED(QCMAP_MSGR_IP_FAMILY_, V4V6),
};
template <>
inline constexpr Enumerator kEnumerators<qcmap_msgr_wwan_status_enum_v01>[] = {
    NAMED(QCMAP_MSGR_WWAN_STATUS_, CONNECTING),
    NAMED(QCMAP_MSGR_WWAN_STATUS_, CONNECTING_FAIL),
    NAMED(QCMAP_MSGR_WWAN_STATUS_, CONNECTED),
    NAMED(QCMAP_MSGR_WWAN_STATUS_, DISCONNECTING),
    NAMED(QCMAP_MSGR_WWAN_STATUS_, DISCONNECTING_FAIL),
    NAMED(QCMAP_MSGR_WWAN_STATUS_, DISCONNECTED),
    NAMED(QCMAP_MSGR_WWAN_STATUS_, IPV6_CONNECTING),
    NAMED(QCMAP_MSGR_WWAN_STATUS_, IPV6_CONNECTING_FAIL),
    NAMED(QCMAP_MSGR_WWAN_STATUS_, IPV6_CONNECTED),
    NAMED(QCMAP_MSGR_WWAN_STATUS_, IPV6_DISCONNECTING),
    NAMED(QCMAP_MSGR_WWAN_STATUS_, IPV6_DISCONNECTING_FAIL),
    NAMED(QCMAP_MSGR_WWAN_STATUS_, IPV6_DISCONNECTED),
};
template <>
inline constexpr Enumerator kEnumerators<qcmap_msgr_wwan_call_type_v01>[] = {
    NAMED(QCMAP_MSGR_WWAN_CALL_TYPE_, V4),
    NAMED(QCMAP_MSGR_WWAN_CALL_TYPE_, V6),
};
template <>
inline constexpr Enumerator kEnumerators<qcmap_msgr_mobile_ap_status_enum_v01>[] = {
    NAMED(QCMAP_MSGR_MOBILE_AP_STATUS_, CONNECTED),
    NAMED(QCMAP_MSGR_MOBILE_AP_STATUS_, DISCONNECTED),
};
template <>
inline constexpr Enumerator kEnumerators<qcmap_msgr_update_profile_enum_v01>[] = {
    NAMED(QCMAP_MSGR_UPDATE_PROFILE_, NONE),   NAMED(QCMAP_MSGR_UPDATE_PROFILE_, V4),
    NAMED(QCMAP_MSGR_UPDATE_PROFILE_, POLICY), NAMED(QCMAP_MSGR_UPDATE_PROFILE_, V6),
    NAMED(QCMAP_MSGR_UPDATE_PROFILE_, V4V6),
};
template <>
inline constexpr Enumerator kEnumerators<qcmap_msgr_ip_passthrough_mode_enum_v01>[] = {
    NAMED(QCMAP_MSGR_IP_PASSTHROUGH_MODE_, DISABLE),
    NAMED(QCMAP_MSGR_IP_PASSTHROUGH_MODE_, ENABLE),
};
/// The indications, by their message ids.
enum class IndicationId : uint32_t {};
template <>
inline constexpr Enumerator kEnumerators<IndicationId>[] = {
    NAMED(QMI_QCMAP_MSGR_, BRING_UP_WWAN_IND),       NAMED(QMI_QCMAP_MSGR_, TEAR_DOWN_WWAN_IND),
    NAMED(QMI_QCMAP_MSGR_, WWAN_STATUS_IND),         NAMED(QMI_QCMAP_MSGR_, MOBILE_AP_STATUS_IND),
    NAMED(QMI_QCMAP_MSGR_, STATION_MODE_STATUS_IND),
};
#undef NAMED

/// The name of a value. Null if it has none.
template <typename Enum>
const char* NameOf(Enum value) {
  for (const auto& [number, name] : kEnumerators<Enum>) {
    if (static_cast<Enum>(number) == value) return name;
  }
  return nullptr;
}

/// A request, with the names that the parameters have in QCMAP_Client. Answers are what the client
/// writes when the request is granted. The error, which it may write in any case, is not listed.
struct Request {
  const char* name;
  const char* arguments[3];
  const char* answers[2];
};
inline constexpr Request kRequests[] = {
    {"EnableMobileAP", {}, {}},
    {"GetMobileAPStatus", {}, {"status"}},
    {"GetWWANPolicyList", {}, {"list"}},
    {"SetWWANProfileHandlePreference", {"handle"}, {}},
    {"GetWWANPolicy", {}, {"policy"}},
    {"SetWWANPolicy", {"policy"}, {}},
    {"UpdateWWANPolicy", {"update", "policy"}, {}},
    {"CreateWWANPolicy", {"policy"}, {}},
    {"DeleteWWANPolicy", {}, {}},
    {"SetAutoconnect", {"enable"}, {}},
    {"GetAutoconnect", {}, {"enabled"}},
    {"SetRoaming", {"enable"}, {}},
    {"GetRoaming", {}, {"enabled"}},
    {"EnableIPV4", {}, {}},
    {"DisableIPV4", {}, {}},
    {"EnableIPV6", {}, {}},
    {"DisableIPV6", {}, {}},
    {"GetIPv4State", {}, {"enabled"}},
    {"GetIPv6State", {}, {"enabled"}},
    {"GetWWANStatus", {}, {"v4_status", "v6_status"}},
    {"ConnectBackHaul", {"call_type"}, {}},
    {"DisconnectBackHaul", {"call_type"}, {}},
    {"GetWWANStatistics", {"family"}, {"statistics"}},
    {"ResetWWANStatistics", {"family"}, {}},
    {"GetNetworkConfiguration", {"family"}, {"params"}},
    {"GetLANConfig", {}, {"config"}},
    {"SetLANConfig", {"config"}, {}},
    {"ActivateLAN", {}, {}},
    {"SetVLANConfig", {"config"}, {"flag"}},
    {"DeleteVLANConfig", {"config"}, {}},
    {"GetVLANConfig", {}, {"list"}},
    {"AddPDNToVLANMapping", {"vlan_id", "profile_handle"}, {}},
    {"DeletePDNToVLANMapping", {"vlan_id", "profile_handle"}, {}},
    {"GetPDNtoVLANMappings", {}, {"count", "mappings"}},
    {"SetIPPassthroughConfig", {"mode", "config", "flag"}, {}},
    {"GetIPPassthroughConfig", {}, {"mode", "config"}},
    {"GetIPPassthroughState", {}, {"state"}},
};

/// Null for a name that no request has.
constexpr const Request* FindRequest(std::string_view name) {
  for (const Request& request : kRequests) {
    if (request.name == name) return &request;
  }
  return nullptr;
}

}  // namespace seam
