/// All requests of the client class, by name.
#pragma once

#include <qcmap_client.h>

#include <functional>

struct Request {
  const char* name;
  std::function<bool(QCMAP_Client&, qmi_error_type_v01*)> send;
};

#define SENDS(name, ...)                                       \
  {                                                            \
#name, [](QCMAP_Client& client, qmi_error_type_v01* error) { \
      [[maybe_unused]] static Outputs out;                     \
      return client.name(__VA_ARGS__);                         \
    } \
  }

struct Outputs {
  qcmap_msgr_mobile_ap_status_enum_v01 mobile_ap_status;
  qcmap_msgr_wwan_policy_list_resp_msg_v01 policies;
  qcmap_msgr_net_policy_info_v01 policy;
  qcmap_msgr_wwan_status_enum_v01 status[2];
  qcmap_msgr_wwan_statistics_type_v01 statistics;
  qcmap_nw_params_t addresses;
  qcmap_msgr_lan_config_v01 lan;
  qcmap_msgr_vlan_conf_t vlans;
  qcmap_msgr_pdn_to_vlan_mapping_v01 mappings[QCMAP_MSGR_MAX_MAPPINGS_V01];
  qcmap_msgr_ip_passthrough_mode_enum_v01 mode;
  qcmap_msgr_ip_passthrough_config_v01 passthrough;
  int count;
  unsigned char byte;
};

inline const Request kEveryRequest[] = {
    SENDS(EnableMobileAP, error),
    SENDS(GetMobileAPStatus, &out.mobile_ap_status, error),
    SENDS(GetWWANPolicyList, &out.policies, error),
    SENDS(SetWWANProfileHandlePreference, 101, error),
    SENDS(GetWWANPolicy, &out.policy, error),
    SENDS(SetWWANPolicy, out.policy, error),
    SENDS(UpdateWWANPolicy, QCMAP_MSGR_UPDATE_PROFILE_V4_V01, out.policy, error),
    SENDS(CreateWWANPolicy, out.policy, error),
    SENDS(DeleteWWANPolicy, error),
    SENDS(SetAutoconnect, 1, error),
    SENDS(GetAutoconnect, &out.byte, error),
    SENDS(SetRoaming, 1, error),
    SENDS(GetRoaming, &out.byte, error),
    SENDS(EnableIPV4, error),
    SENDS(DisableIPV4, error),
    SENDS(EnableIPV6, error),
    SENDS(DisableIPV6, error),
    SENDS(GetIPv4State, &out.byte, error),
    SENDS(GetIPv6State, &out.byte, error),
    SENDS(GetWWANStatus, &out.status[0], &out.status[1], error),
    SENDS(ConnectBackHaul, QCMAP_MSGR_WWAN_CALL_TYPE_V4_V01, error),
    SENDS(DisconnectBackHaul, QCMAP_MSGR_WWAN_CALL_TYPE_V4_V01, error),
    SENDS(GetWWANStatistics, QCMAP_MSGR_IP_FAMILY_V4_V01, &out.statistics, error),
    SENDS(ResetWWANStatistics, QCMAP_MSGR_IP_FAMILY_V4_V01, error),
    SENDS(GetNetworkConfiguration, QCMAP_MSGR_IP_FAMILY_V4_V01, &out.addresses, error),
    SENDS(GetLANConfig, &out.lan, error),
    SENDS(SetLANConfig, out.lan, error),
    SENDS(ActivateLAN, error),
    SENDS(SetVLANConfig, {}, error, nullptr),
    SENDS(DeleteVLANConfig, {}, error),
    SENDS(GetVLANConfig, &out.vlans, error),
    SENDS(AddPDNToVLANMapping, 2, 101, error),
    SENDS(DeletePDNToVLANMapping, 2, 101, error),
    SENDS(GetPDNtoVLANMappings, out.mappings, &out.count, error),
    SENDS(SetIPPassthroughConfig, out.mode, true, &out.passthrough, error),
    SENDS(GetIPPassthroughConfig, &out.mode, &out.passthrough, error),
    SENDS(GetIPPassthroughState, &out.byte, error),
};
