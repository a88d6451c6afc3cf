/// Libraries in the vendor's place that answer at once, from fixed data and without allocating.
#include "fixed_client.h"

#include <algorithm>
#include <cstring>
#include <iterator>

#include <mox/util/network_manager.h>
#include <mox/util/process_control.h>
#include <qcmap_client.h>

bool refuses_requests = false;
bool refuses_decoding = false;
unsigned int indication_handle = 7;
unsigned int policy_entries = 50;
unsigned int mapping_entries = 50;
unsigned int vlan_entries = 50;
bool call_is_up = false;

namespace {

using Error = qmi_error_type_v01;

constexpr uint32_t kFirstHandle = 101;
/// The profile of every mapping. Each look-up passes half of the policies.
constexpr uint32_t kMappedHandle = kFirstHandle + QCMAP_MSGR_MAX_WWAN_POLICY_V01 / 2;
constexpr qcmap_msgr_net_policy_info_v01 kPolicy = {
    QCMAP_MSGR_TECH_PREF_3GPP_V01, QCMAP_MSGR_IP_FAMILY_V4V6_V01, {1, 5}, {2, 7}};

qcmap_msgr_wwan_policy_list_resp_msg_v01 policies;
qcmap_msgr_vlan_conf_t vlans;
qcmap_msgr_pdn_to_vlan_mapping_v01 mappings[QCMAP_MSGR_MAX_MAPPINGS_V01];

bool Answer(Error* error) {
  if (!refuses_requests) return true;
  *error = QMI_ERR_INTERNAL_V01;
  return false;
}

template <typename Out>
bool Answer(Error* error, Out* out, const Out& fixed) {
  if (!Answer(error)) return false;
  *out = fixed;
  return true;
}

}  // namespace

QCMAP_Client::QCMAP_Client(void (*)(qmi_client_struct*, unsigned int, void*, unsigned int, void*))
    : mobile_ap_handle(7), state_(nullptr) {
  policies.policy_list_valid = 1;
  for (uint32_t i = 0; i < QCMAP_MSGR_MAX_WWAN_POLICY_V01; ++i) {
    policies.policy_list[i] = {kFirstHandle + i, kPolicy};
    mappings[i] = {kMappedHandle, static_cast<int16_t>(2 + i)};
  }
  std::fill(std::begin(vlans.vlan_config), std::end(vlans.vlan_config),
            qcmap_msgr_vlan_config_v01{"eth0", 2, {}});
}

QCMAP_Client::~QCMAP_Client() = default;

bool QCMAP_Client::EnableMobileAP(Error*) {
  return true;
}
bool QCMAP_Client::GetMobileAPStatus(qcmap_msgr_mobile_ap_status_enum_v01* status, Error*) {
  *status = QCMAP_MSGR_MOBILE_AP_STATUS_CONNECTED_V01;
  return true;
}
bool QCMAP_Client::GetWWANPolicyList(qcmap_msgr_wwan_policy_list_resp_msg_v01* list, Error* error) {
  policies.policy_list_len = policy_entries;
  return Answer(error, list, policies);
}
bool QCMAP_Client::SetWWANProfileHandlePreference(unsigned int, Error* error) {
  return Answer(error);
}
bool QCMAP_Client::GetWWANPolicy(qcmap_msgr_net_policy_info_v01* policy, Error* error) {
  return Answer(error, policy, kPolicy);
}
bool QCMAP_Client::SetWWANPolicy(qcmap_msgr_net_policy_info_v01, Error* error) {
  return Answer(error);
}
bool QCMAP_Client::UpdateWWANPolicy(qcmap_msgr_update_profile_enum_v01,
                                    qcmap_msgr_net_policy_info_v01, Error* error) {
  return Answer(error);
}
bool QCMAP_Client::CreateWWANPolicy(qcmap_msgr_net_policy_info_v01, Error* error) {
  return Answer(error);
}
bool QCMAP_Client::DeleteWWANPolicy(Error* error) {
  return Answer(error);
}
bool QCMAP_Client::SetAutoconnect(unsigned char, Error* error) {
  return Answer(error);
}
bool QCMAP_Client::GetAutoconnect(unsigned char* enabled, Error* error) {
  return Answer(error, enabled, static_cast<unsigned char>(1));
}
bool QCMAP_Client::SetRoaming(unsigned char, Error* error) {
  return Answer(error);
}
bool QCMAP_Client::GetRoaming(unsigned char* enabled, Error* error) {
  return Answer(error, enabled, static_cast<unsigned char>(1));
}
bool QCMAP_Client::EnableIPV4(Error* error) {
  return Answer(error);
}
bool QCMAP_Client::DisableIPV4(Error* error) {
  return Answer(error);
}
bool QCMAP_Client::EnableIPV6(Error* error) {
  return Answer(error);
}
bool QCMAP_Client::DisableIPV6(Error* error) {
  return Answer(error);
}
bool QCMAP_Client::GetIPv4State(unsigned char* enabled, Error* error) {
  return Answer(error, enabled, static_cast<unsigned char>(1));
}
bool QCMAP_Client::GetIPv6State(unsigned char* enabled, Error* error) {
  return Answer(error, enabled, static_cast<unsigned char>(1));
}
bool QCMAP_Client::GetWWANStatus(qcmap_msgr_wwan_status_enum_v01* v4_status,
                                 qcmap_msgr_wwan_status_enum_v01* v6_status, Error* error) {
  if (!Answer(error)) return false;
  *v4_status =
      call_is_up ? QCMAP_MSGR_WWAN_STATUS_CONNECTED_V01 : QCMAP_MSGR_WWAN_STATUS_DISCONNECTED_V01;
  *v6_status = call_is_up ? QCMAP_MSGR_WWAN_STATUS_IPV6_CONNECTED_V01
                          : QCMAP_MSGR_WWAN_STATUS_IPV6_DISCONNECTED_V01;
  return true;
}
bool QCMAP_Client::ConnectBackHaul(qcmap_msgr_wwan_call_type_v01, Error* error) {
  return Answer(error);
}
bool QCMAP_Client::DisconnectBackHaul(qcmap_msgr_wwan_call_type_v01, Error* error) {
  return Answer(error);
}
bool QCMAP_Client::GetWWANStatistics(qcmap_msgr_ip_family_enum_v01,
                                     qcmap_msgr_wwan_statistics_type_v01* statistics,
                                     Error* error) {
  return Answer(error, statistics, {{1, 2}, {3, 4}});
}
bool QCMAP_Client::ResetWWANStatistics(qcmap_msgr_ip_family_enum_v01, Error* error) {
  return Answer(error);
}
bool QCMAP_Client::GetNetworkConfiguration(qcmap_msgr_ip_family_enum_v01 family,
                                           qcmap_nw_params_t* params, Error* error) {
  if (!Answer(error)) return false;
  if (family == QCMAP_MSGR_IP_FAMILY_V4_V01) {
    params->v4[0] = params->v4[1] = params->v4[2] = 0xc0000266;
  } else {
    std::memset(params->v6, 0x20, sizeof(params->v6));
  }
  return true;
}
bool QCMAP_Client::GetLANConfig(qcmap_msgr_lan_config_v01* config, Error* error) {
  return Answer(error, config, {0xc0a80101, 0xffffff00, 1, 0xc0a80102, 0xc0a801fe, 86400});
}
bool QCMAP_Client::SetLANConfig(qcmap_msgr_lan_config_v01, Error* error) {
  return Answer(error);
}
bool QCMAP_Client::ActivateLAN(Error* error) {
  return Answer(error);
}
bool QCMAP_Client::SetVLANConfig(qcmap_msgr_vlan_config_v01, Error* error, bool*) {
  return Answer(error);
}
bool QCMAP_Client::DeleteVLANConfig(qcmap_msgr_vlan_config_v01, Error* error) {
  return Answer(error);
}
bool QCMAP_Client::GetVLANConfig(qcmap_msgr_vlan_conf_t* list, Error* error) {
  vlans.vlan_config_len = static_cast<uint16_t>(vlan_entries);
  return Answer(error, list, vlans);
}
bool QCMAP_Client::AddPDNToVLANMapping(short, unsigned int, Error* error) {
  return Answer(error);
}
bool QCMAP_Client::DeletePDNToVLANMapping(short, unsigned int, Error* error) {
  return Answer(error);
}
bool QCMAP_Client::GetPDNtoVLANMappings(qcmap_msgr_pdn_to_vlan_mapping_v01* list, int* count,
                                        Error* error) {
  if (!Answer(error)) return false;
  std::memcpy(list, mappings, sizeof(mappings));
  *count = static_cast<int>(mapping_entries);
  return true;
}
bool QCMAP_Client::SetIPPassthroughConfig(qcmap_msgr_ip_passthrough_mode_enum_v01, bool,
                                          qcmap_msgr_ip_passthrough_config_v01*, Error* error) {
  return Answer(error);
}
bool QCMAP_Client::GetIPPassthroughConfig(qcmap_msgr_ip_passthrough_mode_enum_v01* mode,
                                          qcmap_msgr_ip_passthrough_config_v01* config,
                                          Error* error) {
  *mode = QCMAP_MSGR_IP_PASSTHROUGH_MODE_ENABLE_V01;
  return Answer(error, config, {QCMAP_MSGR_PASSTHROUGH_DEVICE_TYPE_USB_V01, {}, "laptop"});
}
bool QCMAP_Client::GetIPPassthroughState(unsigned char* state, Error* error) {
  return Answer(error, state, static_cast<unsigned char>(1));
}

int qmi_client_message_decode(qmi_client_type, int, unsigned int id, const void*, unsigned int,
                              void* record, unsigned int size) {
  if (refuses_decoding) return 1;
  std::memset(record, 0, size);
  if (id == QMI_QCMAP_MSGR_MOBILE_AP_STATUS_IND_V01 ||
      id == QMI_QCMAP_MSGR_STATION_MODE_STATUS_IND_V01) {
    static_cast<qcmap_msgr_status_ind_msg_v01*>(record)->status = 1;
  } else {
    auto* const call = static_cast<qcmap_msgr_tear_down_wwan_ind_msg_v01*>(record);
    call->mobile_ap_handle = indication_handle;
    call->conn_status = QCMAP_MSGR_WWAN_STATUS_CONNECTED_V01;
    call->profile_handle_valid = 1;
    call->profile_handle = kFirstHandle;
  }
  return 0;
}

int mox::util::ProcessControl::GetPidByProcessName(std::string, int) {
  return 1;
}
bool mox::util::NetworkManager::IsValidAddress(std::string, bool) {
  return true;
}
bool mox::util::NetworkManager::GetIpv4DhcpRange(std::string, std::string, std::string& start,
                                                 std::string& end) {
  start = "192.168.1.2";
  end = "192.168.1.254";
  return true;
}
bool mox::util::NetworkManager::CheckIpv4DhcpRangeValidation(std::string, std::string, std::string,
                                                             std::string) {
  return true;
}
bool mox::util::NetworkManager::CheckIpv4MacValidation(std::string) {
  return false;
}
