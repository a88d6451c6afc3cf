/// The seam to the modem's Mobile AP server: the client class and its message records.
/// Every size and offset is part of the binary interface. Bytes without a meaning here are called
/// `reserved`.
#pragma once

#include <cstddef>
#include <cstdint>

#include "qmi_client.h"

using profile_handle_type_v01 = uint32_t;

enum qmi_error_type_v01 : int32_t {
  QMI_ERR_NONE_V01 = 0,
  QMI_ERR_INTERNAL_V01 = 3,
  QMI_ERR_INVALID_HANDLE_V01 = 9,
  QMI_ERR_NO_NETWORK_FOUND_V01 = 13,
  QMI_ERR_CALL_FAILED_V01 = 14,
  QMI_ERR_NO_EFFECT_V01 = 26,
  QMI_ERR_INVALID_ARG_V01 = 48,
  QMI_ERR_NO_MEMORY_IN_LIST_V01 = 51,
  QMI_ERR_INCOMPATIBLE_STATE_V01 = 90,
};

enum qcmap_msgr_ip_family_enum_v01 : int32_t {
  QCMAP_MSGR_IP_FAMILY_V4_V01 = 4,
  QCMAP_MSGR_IP_FAMILY_V6_V01 = 6,
  QCMAP_MSGR_IP_FAMILY_V4V6_V01 = 10,
};

enum qcmap_msgr_wwan_status_enum_v01 : int32_t {
  QCMAP_MSGR_WWAN_STATUS_CONNECTING_V01 = 1,
  QCMAP_MSGR_WWAN_STATUS_CONNECTING_FAIL_V01 = 2,
  QCMAP_MSGR_WWAN_STATUS_CONNECTED_V01 = 3,
  QCMAP_MSGR_WWAN_STATUS_DISCONNECTING_V01 = 4,
  QCMAP_MSGR_WWAN_STATUS_DISCONNECTING_FAIL_V01 = 5,
  QCMAP_MSGR_WWAN_STATUS_DISCONNECTED_V01 = 6,
  QCMAP_MSGR_WWAN_STATUS_IPV6_CONNECTING_V01 = 7,
  QCMAP_MSGR_WWAN_STATUS_IPV6_CONNECTING_FAIL_V01 = 8,
  QCMAP_MSGR_WWAN_STATUS_IPV6_CONNECTED_V01 = 9,
  QCMAP_MSGR_WWAN_STATUS_IPV6_DISCONNECTING_V01 = 10,
  QCMAP_MSGR_WWAN_STATUS_IPV6_DISCONNECTING_FAIL_V01 = 11,
  QCMAP_MSGR_WWAN_STATUS_IPV6_DISCONNECTED_V01 = 12,
};

enum qcmap_msgr_wwan_call_type_v01 : int32_t {
  QCMAP_MSGR_WWAN_CALL_TYPE_V4_V01 = 1,
  QCMAP_MSGR_WWAN_CALL_TYPE_V6_V01 = 2,
};

enum qcmap_msgr_mobile_ap_status_enum_v01 : int32_t {
  QCMAP_MSGR_MOBILE_AP_STATUS_CONNECTED_V01 = 1,
  QCMAP_MSGR_MOBILE_AP_STATUS_DISCONNECTED_V01 = 2,
};

/// Which of the profile's numbers an update replaces. With POLICY the whole policy is replaced.
enum qcmap_msgr_update_profile_enum_v01 : int32_t {
  QCMAP_MSGR_UPDATE_PROFILE_NONE_V01 = -2147483647,
  QCMAP_MSGR_UPDATE_PROFILE_V4_V01 = 2,
  QCMAP_MSGR_UPDATE_PROFILE_POLICY_V01 = 3,
  QCMAP_MSGR_UPDATE_PROFILE_V6_V01 = 4,
  QCMAP_MSGR_UPDATE_PROFILE_V4V6_V01 = 6,
};

enum qcmap_msgr_ip_passthrough_mode_enum_v01 : int32_t {
  QCMAP_MSGR_IP_PASSTHROUGH_MODE_DISABLE_V01 = 0,
  QCMAP_MSGR_IP_PASSTHROUGH_MODE_ENABLE_V01 = 1,
};

constexpr uint64_t QCMAP_MSGR_TECH_PREF_3GPP_V01 = 1;
constexpr uint64_t QCMAP_MSGR_TECH_PREF_3GPP2_V01 = 2;
constexpr uint32_t QCMAP_MSGR_PASSTHROUGH_DEVICE_TYPE_USB_V01 = 3;
constexpr size_t QCMAP_MSGR_MAX_WWAN_POLICY_V01 = 50;
constexpr size_t QCMAP_MSGR_MAX_VLAN_ENTRIES_V01 = 2000;
constexpr size_t QCMAP_MSGR_MAX_MAPPINGS_V01 = 50;

struct qcmap_msgr_net_policy_info_v01 {
  uint64_t tech_pref;
  qcmap_msgr_ip_family_enum_v01 ip_family;
  uint8_t v4_profile_id[2];
  uint8_t v6_profile_id[2];
};
static_assert(sizeof(qcmap_msgr_net_policy_info_v01) == 16, "");
static_assert(offsetof(qcmap_msgr_net_policy_info_v01, ip_family) == 8, "");
static_assert(offsetof(qcmap_msgr_net_policy_info_v01, v4_profile_id) == 12, "");
static_assert(offsetof(qcmap_msgr_net_policy_info_v01, v6_profile_id) == 14, "");

struct qcmap_msgr_wwan_policy_entry_v01 {
  profile_handle_type_v01 profile_handle;
  alignas(8) qcmap_msgr_net_policy_info_v01 policy;
};
static_assert(sizeof(qcmap_msgr_wwan_policy_entry_v01) == 24, "");
static_assert(offsetof(qcmap_msgr_wwan_policy_entry_v01, policy) == 8, "");

struct qcmap_msgr_wwan_policy_list_resp_msg_v01 {
  uint8_t policy_list_valid;
  uint32_t policy_list_len;
  qcmap_msgr_wwan_policy_entry_v01 policy_list[QCMAP_MSGR_MAX_WWAN_POLICY_V01];
};
static_assert(sizeof(qcmap_msgr_wwan_policy_list_resp_msg_v01) == 1208, "");
static_assert(offsetof(qcmap_msgr_wwan_policy_list_resp_msg_v01, policy_list_len) == 4, "");
static_assert(offsetof(qcmap_msgr_wwan_policy_list_resp_msg_v01, policy_list) == 8, "");

/// The simulated platform counts received bytes, then sent ones, and likewise packets.
struct qcmap_msgr_wwan_statistics_type_v01 {
  uint64_t bytes[2];
  uint32_t packets[2];
};
static_assert(sizeof(qcmap_msgr_wwan_statistics_type_v01) == 24, "");
static_assert(offsetof(qcmap_msgr_wwan_statistics_type_v01, packets) == 16, "");

/// IPv4 addresses are numbers in host byte order, IPv6 addresses are in network byte order.
union qcmap_nw_params_t {
  uint32_t v4[3];
  uint8_t v6[3][16];
};
static_assert(sizeof(qcmap_nw_params_t) == 48, "");

/// Addresses are numbers in host byte order.
struct qcmap_msgr_lan_config_v01 {
  uint32_t gw_ip;
  uint32_t netmask;
  uint8_t enable_dhcp;
  uint32_t dhcp_start_ip;
  uint32_t dhcp_end_ip;
  uint32_t lease_time;
};
static_assert(sizeof(qcmap_msgr_lan_config_v01) == 24, "");
static_assert(offsetof(qcmap_msgr_lan_config_v01, netmask) == 4, "");
static_assert(offsetof(qcmap_msgr_lan_config_v01, enable_dhcp) == 8, "");
static_assert(offsetof(qcmap_msgr_lan_config_v01, dhcp_start_ip) == 12, "");
static_assert(offsetof(qcmap_msgr_lan_config_v01, dhcp_end_ip) == 16, "");
static_assert(offsetof(qcmap_msgr_lan_config_v01, lease_time) == 20, "");

struct qcmap_msgr_vlan_config_v01 {
  /// May lack its terminator when it comes from the server.
  char iface_name[16];
  int16_t vlan_id;
  uint8_t reserved[2];
};
static_assert(sizeof(qcmap_msgr_vlan_config_v01) == 20, "");
static_assert(offsetof(qcmap_msgr_vlan_config_v01, vlan_id) == 16, "");

struct qcmap_msgr_vlan_conf_t {
  uint16_t vlan_config_len;
  qcmap_msgr_vlan_config_v01 vlan_config[QCMAP_MSGR_MAX_VLAN_ENTRIES_V01];
};
static_assert(sizeof(qcmap_msgr_vlan_conf_t) == 40002, "");
static_assert(offsetof(qcmap_msgr_vlan_conf_t, vlan_config) == 2, "");

struct qcmap_msgr_pdn_to_vlan_mapping_v01 {
  profile_handle_type_v01 profile_handle;
  int16_t vlan_id;
};
static_assert(sizeof(qcmap_msgr_pdn_to_vlan_mapping_v01) == 8, "");
static_assert(offsetof(qcmap_msgr_pdn_to_vlan_mapping_v01, vlan_id) == 4, "");

struct qcmap_msgr_ip_passthrough_config_v01 {
  uint32_t device_type;
  uint8_t mac_addr[6];
  /// May lack its terminator when it comes from the server.
  char device_name[102];
};
static_assert(sizeof(qcmap_msgr_ip_passthrough_config_v01) == 112, "");
static_assert(offsetof(qcmap_msgr_ip_passthrough_config_v01, mac_addr) == 4, "");
static_assert(offsetof(qcmap_msgr_ip_passthrough_config_v01, device_name) == 10, "");

/// Message ids of the indications.
constexpr uint32_t QMI_QCMAP_MSGR_BRING_UP_WWAN_IND_V01 = 0x22;
constexpr uint32_t QMI_QCMAP_MSGR_TEAR_DOWN_WWAN_IND_V01 = 0x23;
constexpr uint32_t QMI_QCMAP_MSGR_WWAN_STATUS_IND_V01 = 0x25;
constexpr uint32_t QMI_QCMAP_MSGR_MOBILE_AP_STATUS_IND_V01 = 0x29;
constexpr uint32_t QMI_QCMAP_MSGR_STATION_MODE_STATUS_IND_V01 = 0x5E;

/// Tear-down indication. The bring-up and the WWAN status indication begin with the same members.
struct qcmap_msgr_tear_down_wwan_ind_msg_v01 {
  uint32_t mobile_ap_handle;
  int32_t conn_status;
  uint8_t reserved[12];
  uint8_t profile_handle_valid;
  profile_handle_type_v01 profile_handle;
};
static_assert(sizeof(qcmap_msgr_tear_down_wwan_ind_msg_v01) == 28, "");
static_assert(offsetof(qcmap_msgr_tear_down_wwan_ind_msg_v01, conn_status) == 4, "");
static_assert(offsetof(qcmap_msgr_tear_down_wwan_ind_msg_v01, profile_handle_valid) == 20, "");
static_assert(offsetof(qcmap_msgr_tear_down_wwan_ind_msg_v01, profile_handle) == 24, "");

/// Bring-up and WWAN status indication.
struct qcmap_msgr_bring_up_wwan_ind_msg_v01 {
  qcmap_msgr_tear_down_wwan_ind_msg_v01 call;
  uint8_t reserved[80];
};
static_assert(sizeof(qcmap_msgr_bring_up_wwan_ind_msg_v01) == 108, "");
static_assert(offsetof(qcmap_msgr_bring_up_wwan_ind_msg_v01, reserved) == 28, "");

/// Mobile AP status and station-mode status indication.
struct qcmap_msgr_status_ind_msg_v01 {
  uint32_t reserved;
  uint32_t status;
};
static_assert(sizeof(qcmap_msgr_status_ind_msg_v01) == 8, "");
static_assert(offsetof(qcmap_msgr_status_ind_msg_v01, status) == 4, "");

/// A session with the server. Each request returns true when it was granted; otherwise it writes
/// the reason to `*error`. A granted request may leave `*error` as it is. Requests that name no
/// profile act on the session's current one. The parameters called `flag` have a meaning on the
/// device only; the simulated platform does not use them.
///
/// A session belongs to the process that constructed the client. After a fork, every request in the
/// child fails at once with QMI_ERR_INTERNAL_V01, and the callback is never called there. The
/// destructor in the child only closes descriptors. The parent and its session are not affected. A
/// program that runs in the background must therefore construct its client after its last fork.
class __attribute__((visibility("default"))) QCMAP_Client {
 public:
  /// `callback` receives every indication, on a thread that belongs to the client.
  explicit QCMAP_Client(void (*callback)(qmi_client_struct*, unsigned int, void*, unsigned int,
                                         void*));
  virtual ~QCMAP_Client();
  QCMAP_Client(const QCMAP_Client&) = delete;
  QCMAP_Client& operator=(const QCMAP_Client&) = delete;

  bool EnableMobileAP(qmi_error_type_v01* error);
  bool GetMobileAPStatus(qcmap_msgr_mobile_ap_status_enum_v01* status, qmi_error_type_v01* error);

  bool GetWWANPolicyList(qcmap_msgr_wwan_policy_list_resp_msg_v01* list, qmi_error_type_v01* error);
  bool SetWWANProfileHandlePreference(unsigned int handle, qmi_error_type_v01* error);

  bool GetWWANPolicy(qcmap_msgr_net_policy_info_v01* policy, qmi_error_type_v01* error);
  bool SetWWANPolicy(qcmap_msgr_net_policy_info_v01 policy, qmi_error_type_v01* error);
  bool UpdateWWANPolicy(qcmap_msgr_update_profile_enum_v01 update,
                        qcmap_msgr_net_policy_info_v01 policy, qmi_error_type_v01* error);
  bool CreateWWANPolicy(qcmap_msgr_net_policy_info_v01 policy, qmi_error_type_v01* error);
  bool DeleteWWANPolicy(qmi_error_type_v01* error);

  bool SetAutoconnect(unsigned char enable, qmi_error_type_v01* error);
  bool GetAutoconnect(unsigned char* enabled, qmi_error_type_v01* error);
  bool SetRoaming(unsigned char enable, qmi_error_type_v01* error);
  bool GetRoaming(unsigned char* enabled, qmi_error_type_v01* error);
  bool EnableIPV4(qmi_error_type_v01* error);
  bool DisableIPV4(qmi_error_type_v01* error);
  bool EnableIPV6(qmi_error_type_v01* error);
  bool DisableIPV6(qmi_error_type_v01* error);
  bool GetIPv4State(unsigned char* enabled, qmi_error_type_v01* error);
  bool GetIPv6State(unsigned char* enabled, qmi_error_type_v01* error);

  bool GetWWANStatus(qcmap_msgr_wwan_status_enum_v01* v4_status,
                     qcmap_msgr_wwan_status_enum_v01* v6_status, qmi_error_type_v01* error);
  bool ConnectBackHaul(qcmap_msgr_wwan_call_type_v01 call_type, qmi_error_type_v01* error);
  bool DisconnectBackHaul(qcmap_msgr_wwan_call_type_v01 call_type, qmi_error_type_v01* error);

  bool GetWWANStatistics(qcmap_msgr_ip_family_enum_v01 family,
                         qcmap_msgr_wwan_statistics_type_v01* statistics,
                         qmi_error_type_v01* error);
  bool ResetWWANStatistics(qcmap_msgr_ip_family_enum_v01 family, qmi_error_type_v01* error);
  bool GetNetworkConfiguration(qcmap_msgr_ip_family_enum_v01 family, qcmap_nw_params_t* params,
                               qmi_error_type_v01* error);

  bool GetLANConfig(qcmap_msgr_lan_config_v01* config, qmi_error_type_v01* error);
  bool SetLANConfig(qcmap_msgr_lan_config_v01 config, qmi_error_type_v01* error);
  bool ActivateLAN(qmi_error_type_v01* error);

  bool SetVLANConfig(qcmap_msgr_vlan_config_v01 config, qmi_error_type_v01* error, bool* flag);
  bool DeleteVLANConfig(qcmap_msgr_vlan_config_v01 config, qmi_error_type_v01* error);
  bool GetVLANConfig(qcmap_msgr_vlan_conf_t* list, qmi_error_type_v01* error);

  bool AddPDNToVLANMapping(short vlan_id, unsigned int profile_handle, qmi_error_type_v01* error);
  bool DeletePDNToVLANMapping(short vlan_id, unsigned int profile_handle,
                              qmi_error_type_v01* error);
  /// `mappings` has room for QCMAP_MSGR_MAX_MAPPINGS_V01 entries.
  bool GetPDNtoVLANMappings(qcmap_msgr_pdn_to_vlan_mapping_v01* mappings, int* count,
                            qmi_error_type_v01* error);

  bool SetIPPassthroughConfig(qcmap_msgr_ip_passthrough_mode_enum_v01 mode, bool flag,
                              qcmap_msgr_ip_passthrough_config_v01* config,
                              qmi_error_type_v01* error);
  bool GetIPPassthroughConfig(qcmap_msgr_ip_passthrough_mode_enum_v01* mode,
                              qcmap_msgr_ip_passthrough_config_v01* config,
                              qmi_error_type_v01* error);
  bool GetIPPassthroughState(unsigned char* state, qmi_error_type_v01* error);

  /// Identifies this session in indications. It is set before the first indication and never
  /// changes.
  uint32_t mobile_ap_handle;

 private:
  void* state_;
};
static_assert(sizeof(QCMAP_Client) == (sizeof(void*) == 8 ? 24 : 12), "");
