/// The client class: each request is one message.
#include "qcmap_client.h"

#include <algorithm>
#include <memory>
#include <system_error>

#include "client/session.h"

namespace message = sim::message;

namespace {

template <typename Message>
bool Call(void* session, const typename Message::Request& request, typename Message::Reply& reply,
          qmi_error_type_v01* error) {
  const qmi_error_type_v01 result =
      session == nullptr ? QMI_ERR_INTERNAL_V01
                         : static_cast<sim::Session*>(session)->Call<Message>(request, reply);
  if (error != nullptr) *error = result;
  return result == QMI_ERR_NONE_V01;
}

template <typename Message>
bool Order(void* session, const typename Message::Request& request, qmi_error_type_v01* error) {
  sim::Nothing nothing;
  return Call<Message>(session, request, nothing, error);
}

template <typename Message>
bool Read(void* session, typename Message::Reply* value, qmi_error_type_v01* error) {
  return Call<Message>(session, {}, *value, error);
}

/// Callers pass the address of a bool: whatever the server says, it gets 0 or 1.
template <typename Message>
bool ReadFlag(void* session, unsigned char* enabled, qmi_error_type_v01* error) {
  uint8_t flag;
  if (!Read<Message>(session, &flag, error)) return false;
  *enabled = flag != 0;
  return true;
}

}  // namespace

// When there is no server, or no thread to receive its indications, the client exists all the same
// and every request fails.
QCMAP_Client::QCMAP_Client(sim::Session::Callback callback) : mobile_ap_handle(0), state_(nullptr) {
  auto session = std::make_unique<sim::Session>();
  if (session->HandleOrZero() == 0) return;
  mobile_ap_handle = session->HandleOrZero();
  try {
    if (callback != nullptr) session->Deliver(callback);
    state_ = session.release();
  } catch (const std::system_error&) {
  }
}

QCMAP_Client::~QCMAP_Client() {
  delete static_cast<sim::Session*>(state_);
}

bool QCMAP_Client::EnableMobileAP(qmi_error_type_v01* error) {
  return Order<message::EnableMobileAP>(state_, {}, error);
}

bool QCMAP_Client::GetMobileAPStatus(qcmap_msgr_mobile_ap_status_enum_v01* status,
                                     qmi_error_type_v01* error) {
  return Read<message::GetMobileAPStatus>(state_, status, error);
}

bool QCMAP_Client::GetWWANPolicyList(qcmap_msgr_wwan_policy_list_resp_msg_v01* list,
                                     qmi_error_type_v01* error) {
  return Read<message::GetWWANPolicyList>(state_, list, error);
}

bool QCMAP_Client::SetWWANProfileHandlePreference(unsigned int handle, qmi_error_type_v01* error) {
  return Order<message::SetWWANProfileHandlePreference>(state_, handle, error);
}

bool QCMAP_Client::GetWWANPolicy(qcmap_msgr_net_policy_info_v01* policy,
                                 qmi_error_type_v01* error) {
  return Read<message::GetWWANPolicy>(state_, policy, error);
}

bool QCMAP_Client::SetWWANPolicy(qcmap_msgr_net_policy_info_v01 policy, qmi_error_type_v01* error) {
  return Order<message::SetWWANPolicy>(state_, policy, error);
}

bool QCMAP_Client::UpdateWWANPolicy(qcmap_msgr_update_profile_enum_v01 update,
                                    qcmap_msgr_net_policy_info_v01 policy,
                                    qmi_error_type_v01* error) {
  return Order<message::UpdateWWANPolicy>(state_, {update, policy}, error);
}

bool QCMAP_Client::CreateWWANPolicy(qcmap_msgr_net_policy_info_v01 policy,
                                    qmi_error_type_v01* error) {
  return Order<message::CreateWWANPolicy>(state_, policy, error);
}

bool QCMAP_Client::DeleteWWANPolicy(qmi_error_type_v01* error) {
  return Order<message::DeleteWWANPolicy>(state_, {}, error);
}

bool QCMAP_Client::SetAutoconnect(unsigned char enable, qmi_error_type_v01* error) {
  return Order<message::SetAutoconnect>(state_, enable, error);
}

bool QCMAP_Client::GetAutoconnect(unsigned char* enabled, qmi_error_type_v01* error) {
  return ReadFlag<message::GetAutoconnect>(state_, enabled, error);
}

bool QCMAP_Client::SetRoaming(unsigned char enable, qmi_error_type_v01* error) {
  return Order<message::SetRoaming>(state_, enable, error);
}

bool QCMAP_Client::GetRoaming(unsigned char* enabled, qmi_error_type_v01* error) {
  return ReadFlag<message::GetRoaming>(state_, enabled, error);
}

bool QCMAP_Client::EnableIPV4(qmi_error_type_v01* error) {
  return Order<message::EnableIPV4>(state_, {}, error);
}

bool QCMAP_Client::DisableIPV4(qmi_error_type_v01* error) {
  return Order<message::DisableIPV4>(state_, {}, error);
}

bool QCMAP_Client::EnableIPV6(qmi_error_type_v01* error) {
  return Order<message::EnableIPV6>(state_, {}, error);
}

bool QCMAP_Client::DisableIPV6(qmi_error_type_v01* error) {
  return Order<message::DisableIPV6>(state_, {}, error);
}

bool QCMAP_Client::GetIPv4State(unsigned char* enabled, qmi_error_type_v01* error) {
  return ReadFlag<message::GetIPv4State>(state_, enabled, error);
}

bool QCMAP_Client::GetIPv6State(unsigned char* enabled, qmi_error_type_v01* error) {
  return ReadFlag<message::GetIPv6State>(state_, enabled, error);
}

bool QCMAP_Client::GetWWANStatus(qcmap_msgr_wwan_status_enum_v01* v4_status,
                                 qcmap_msgr_wwan_status_enum_v01* v6_status,
                                 qmi_error_type_v01* error) {
  sim::WwanStatus status;
  if (!Read<message::GetWWANStatus>(state_, &status, error)) return false;
  *v4_status = status.v4;
  *v6_status = status.v6;
  return true;
}

bool QCMAP_Client::ConnectBackHaul(qcmap_msgr_wwan_call_type_v01 call_type,
                                   qmi_error_type_v01* error) {
  return Order<message::ConnectBackHaul>(state_, call_type, error);
}

bool QCMAP_Client::DisconnectBackHaul(qcmap_msgr_wwan_call_type_v01 call_type,
                                      qmi_error_type_v01* error) {
  return Order<message::DisconnectBackHaul>(state_, call_type, error);
}

bool QCMAP_Client::GetWWANStatistics(qcmap_msgr_ip_family_enum_v01 family,
                                     qcmap_msgr_wwan_statistics_type_v01* statistics,
                                     qmi_error_type_v01* error) {
  return Call<message::GetWWANStatistics>(state_, family, *statistics, error);
}

bool QCMAP_Client::ResetWWANStatistics(qcmap_msgr_ip_family_enum_v01 family,
                                       qmi_error_type_v01* error) {
  return Order<message::ResetWWANStatistics>(state_, family, error);
}

bool QCMAP_Client::GetNetworkConfiguration(qcmap_msgr_ip_family_enum_v01 family,
                                           qcmap_nw_params_t* params, qmi_error_type_v01* error) {
  return Call<message::GetNetworkConfiguration>(state_, family, *params, error);
}

bool QCMAP_Client::GetLANConfig(qcmap_msgr_lan_config_v01* config, qmi_error_type_v01* error) {
  if (!Read<message::GetLANConfig>(state_, config, error)) return false;
  config->enable_dhcp = config->enable_dhcp != 0;
  return true;
}

bool QCMAP_Client::SetLANConfig(qcmap_msgr_lan_config_v01 config, qmi_error_type_v01* error) {
  return Order<message::SetLANConfig>(state_, config, error);
}

bool QCMAP_Client::ActivateLAN(qmi_error_type_v01* error) {
  return Order<message::ActivateLAN>(state_, {}, error);
}

bool QCMAP_Client::SetVLANConfig(qcmap_msgr_vlan_config_v01 config, qmi_error_type_v01* error,
                                 bool* flag) {
  uint8_t set;
  if (!Call<message::SetVLANConfig>(state_, config, set, error)) return false;
  if (flag != nullptr) *flag = set != 0;
  return true;
}

bool QCMAP_Client::DeleteVLANConfig(qcmap_msgr_vlan_config_v01 config, qmi_error_type_v01* error) {
  return Order<message::DeleteVLANConfig>(state_, config, error);
}

bool QCMAP_Client::GetVLANConfig(qcmap_msgr_vlan_conf_t* list, qmi_error_type_v01* error) {
  return Read<message::GetVLANConfig>(state_, list, error);
}

bool QCMAP_Client::AddPDNToVLANMapping(short vlan_id, unsigned int profile_handle,
                                       qmi_error_type_v01* error) {
  return Order<message::AddPDNToVLANMapping>(state_, {profile_handle, vlan_id}, error);
}

bool QCMAP_Client::DeletePDNToVLANMapping(short vlan_id, unsigned int profile_handle,
                                          qmi_error_type_v01* error) {
  return Order<message::DeletePDNToVLANMapping>(state_, {profile_handle, vlan_id}, error);
}

bool QCMAP_Client::GetPDNtoVLANMappings(qcmap_msgr_pdn_to_vlan_mapping_v01* mappings, int* count,
                                        qmi_error_type_v01* error) {
  sim::MappingList list;
  if (!Read<message::GetPDNtoVLANMappings>(state_, &list, error)) return false;
  std::copy_n(list.mappings, list.count, mappings);
  *count = static_cast<int>(list.count);
  return true;
}

bool QCMAP_Client::SetIPPassthroughConfig(qcmap_msgr_ip_passthrough_mode_enum_v01 mode,
                                          bool /*flag*/,
                                          qcmap_msgr_ip_passthrough_config_v01* config,
                                          qmi_error_type_v01* error) {
  return Order<message::SetIPPassthroughConfig>(state_, {mode, *config}, error);
}

bool QCMAP_Client::GetIPPassthroughConfig(qcmap_msgr_ip_passthrough_mode_enum_v01* mode,
                                          qcmap_msgr_ip_passthrough_config_v01* config,
                                          qmi_error_type_v01* error) {
  sim::Passthrough passthrough;
  if (!Read<message::GetIPPassthroughConfig>(state_, &passthrough, error)) return false;
  *mode = passthrough.mode;
  *config = passthrough.config;
  return true;
}

bool QCMAP_Client::GetIPPassthroughState(unsigned char* state, qmi_error_type_v01* error) {
  return Read<message::GetIPPassthroughState>(state_, state, error);
}
