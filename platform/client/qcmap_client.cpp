/// The client class. Each request is one message to the server.
#include "qcmap_client.h"

#include <algorithm>
#include <memory>

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

/// Callers may pass the address of a bool, so any other value than 0 from the server becomes 1.
template <typename Message>
bool ReadFlag(void* session, unsigned char* enabled, qmi_error_type_v01* error) {
  uint8_t flag;
  if (!Call<Message>(session, {}, flag, error)) return false;
  *enabled = flag != 0;
  return true;
}

}  // namespace

// Without a server, or without a thread to receive its indications, the client is still constructed
// but every request fails.
QCMAP_Client::QCMAP_Client(sim::Session::Callback callback) : mobile_ap_handle(0), state_(nullptr) {
  auto session = std::make_unique<sim::Session>();
  if (session->HandleOrZero() == 0) return;
  mobile_ap_handle = session->HandleOrZero();
  if (callback == nullptr || session->Deliver(callback)) state_ = session.release();
}

QCMAP_Client::~QCMAP_Client() {
  delete static_cast<sim::Session*>(state_);
}

// Most requests send at most one value and return at most one.
#define ORDER(name)                                    \
  bool QCMAP_Client::name(qmi_error_type_v01* error) { \
    return Order<message::name>(state_, {}, error);    \
  }
#define ORDER_WITH(name, type)                                     \
  bool QCMAP_Client::name(type value, qmi_error_type_v01* error) { \
    return Order<message::name>(state_, value, error);             \
  }
#define READ(name)                                                                  \
  bool QCMAP_Client::name(message::name::Reply* value, qmi_error_type_v01* error) { \
    return Call<message::name>(state_, {}, *value, error);                          \
  }
#define READ_FLAG(name)                                                        \
  bool QCMAP_Client::name(unsigned char* enabled, qmi_error_type_v01* error) { \
    return ReadFlag<message::name>(state_, enabled, error);                    \
  }

ORDER(EnableMobileAP)
READ(GetMobileAPStatus)

READ(GetWWANPolicyList)
ORDER_WITH(SetWWANProfileHandlePreference, unsigned int)

READ(GetWWANPolicy)
ORDER_WITH(SetWWANPolicy, qcmap_msgr_net_policy_info_v01)
ORDER_WITH(CreateWWANPolicy, qcmap_msgr_net_policy_info_v01)
ORDER(DeleteWWANPolicy)

bool QCMAP_Client::UpdateWWANPolicy(qcmap_msgr_update_profile_enum_v01 update,
                                    qcmap_msgr_net_policy_info_v01 policy,
                                    qmi_error_type_v01* error) {
  return Order<message::UpdateWWANPolicy>(state_, {update, policy}, error);
}

ORDER_WITH(SetAutoconnect, unsigned char)
READ_FLAG(GetAutoconnect)
ORDER_WITH(SetRoaming, unsigned char)
READ_FLAG(GetRoaming)
ORDER(EnableIPV4)
ORDER(DisableIPV4)
ORDER(EnableIPV6)
ORDER(DisableIPV6)
READ_FLAG(GetIPv4State)
READ_FLAG(GetIPv6State)

bool QCMAP_Client::GetWWANStatus(qcmap_msgr_wwan_status_enum_v01* v4_status,
                                 qcmap_msgr_wwan_status_enum_v01* v6_status,
                                 qmi_error_type_v01* error) {
  sim::WwanStatus status;
  if (!Call<message::GetWWANStatus>(state_, {}, status, error)) return false;
  *v4_status = status.v4;
  *v6_status = status.v6;
  return true;
}

ORDER_WITH(ConnectBackHaul, qcmap_msgr_wwan_call_type_v01)
ORDER_WITH(DisconnectBackHaul, qcmap_msgr_wwan_call_type_v01)

bool QCMAP_Client::GetWWANStatistics(qcmap_msgr_ip_family_enum_v01 family,
                                     qcmap_msgr_wwan_statistics_type_v01* statistics,
                                     qmi_error_type_v01* error) {
  return Call<message::GetWWANStatistics>(state_, family, *statistics, error);
}

ORDER_WITH(ResetWWANStatistics, qcmap_msgr_ip_family_enum_v01)

bool QCMAP_Client::GetNetworkConfiguration(qcmap_msgr_ip_family_enum_v01 family,
                                           qcmap_nw_params_t* params, qmi_error_type_v01* error) {
  return Call<message::GetNetworkConfiguration>(state_, family, *params, error);
}

bool QCMAP_Client::GetLANConfig(qcmap_msgr_lan_config_v01* config, qmi_error_type_v01* error) {
  if (!Call<message::GetLANConfig>(state_, {}, *config, error)) return false;
  config->enable_dhcp = config->enable_dhcp != 0;
  return true;
}

ORDER_WITH(SetLANConfig, qcmap_msgr_lan_config_v01)
ORDER(ActivateLAN)

bool QCMAP_Client::SetVLANConfig(qcmap_msgr_vlan_config_v01 config, qmi_error_type_v01* error,
                                 bool* flag) {
  uint8_t set;
  if (!Call<message::SetVLANConfig>(state_, config, set, error)) return false;
  if (flag != nullptr) *flag = set != 0;
  return true;
}

ORDER_WITH(DeleteVLANConfig, qcmap_msgr_vlan_config_v01)
READ(GetVLANConfig)

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
  if (!Call<message::GetPDNtoVLANMappings>(state_, {}, list, error)) return false;
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
  if (!Call<message::GetIPPassthroughConfig>(state_, {}, passthrough, error)) return false;
  *mode = passthrough.mode;
  *config = passthrough.config;
  return true;
}

READ(GetIPPassthroughState)
