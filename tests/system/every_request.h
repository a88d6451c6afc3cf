/// All requests of the client class, by name.
#pragma once

#include <qcmap_client.h>

#include "anything.h"

struct Request {
  const char* name;
  bool (*send)(QCMAP_Client&, qmi_error_type_v01*);
};

constexpr auto kCall4 = QCMAP_MSGR_WWAN_CALL_TYPE_V4_V01;
constexpr auto kFamily4 = QCMAP_MSGR_IP_FAMILY_V4_V01;
constexpr qcmap_msgr_net_policy_info_v01 kPolicy{1, kFamily4, {9, 9}, {9, 9}};
constexpr qcmap_msgr_lan_config_v01 kLan{0x0A000001, 0xFFFFFF00, 0, 0, 0, 60};

#define SENDS(name, ...)                                                                           \
  {                                                                                                \
#name,                                                                                         \
        [](QCMAP_Client & client, qmi_error_type_v01 * error) { return client.name(__VA_ARGS__); } \
  }

inline const Request kEveryRequest[] = {
    SENDS(EnableMobileAP, error),
    SENDS(GetMobileAPStatus, kAnything, error),
    SENDS(GetWWANPolicyList, kAnything, error),
    SENDS(SetWWANProfileHandlePreference, 101, error),
    SENDS(CreateWWANPolicy, kPolicy, error),
    SENDS(GetWWANPolicy, kAnything, error),
    SENDS(SetWWANPolicy, kPolicy, error),
    SENDS(UpdateWWANPolicy, QCMAP_MSGR_UPDATE_PROFILE_V4_V01, kPolicy, error),
    SENDS(DeleteWWANPolicy, error),
    SENDS(SetAutoconnect, 1, error),
    SENDS(GetAutoconnect, kAnything, error),
    SENDS(SetRoaming, 1, error),
    SENDS(GetRoaming, kAnything, error),
    SENDS(EnableIPV4, error),
    SENDS(DisableIPV4, error),
    SENDS(EnableIPV6, error),
    SENDS(DisableIPV6, error),
    SENDS(GetIPv4State, kAnything, error),
    SENDS(GetIPv6State, kAnything, error),
    SENDS(GetWWANStatus, kAnything, kAnything, error),
    SENDS(ConnectBackHaul, kCall4, error),
    SENDS(DisconnectBackHaul, kCall4, error),
    SENDS(GetWWANStatistics, kFamily4, kAnything, error),
    SENDS(ResetWWANStatistics, kFamily4, error),
    SENDS(GetNetworkConfiguration, kFamily4, kAnything, error),
    SENDS(GetLANConfig, kAnything, error),
    SENDS(SetLANConfig, kLan, error),
    SENDS(ActivateLAN, error),
    SENDS(SetVLANConfig, {"eth0", 8, {}}, error, kAnything),
    SENDS(DeleteVLANConfig, {"eth0", 7, {}}, error),
    SENDS(GetVLANConfig, kAnything, error),
    SENDS(AddPDNToVLANMapping, 7, 103, error),
    SENDS(DeletePDNToVLANMapping, 6, 103, error),
    SENDS(GetPDNtoVLANMappings, kAnything, kAnything, error),
    SENDS(SetIPPassthroughConfig, QCMAP_MSGR_IP_PASSTHROUGH_MODE_ENABLE_V01, true, kAnything,
          error),
    SENDS(GetIPPassthroughConfig, kAnything, kAnything, error),
    SENDS(GetIPPassthroughState, kAnything, error),
};
