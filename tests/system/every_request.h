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
    SENDS(GetWWANPolicy, kAnything, error),
    SENDS(SetWWANPolicy, {}, error),
    SENDS(UpdateWWANPolicy, {}, {}, error),
    SENDS(CreateWWANPolicy, {}, error),
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
    SENDS(SetLANConfig, {}, error),
    SENDS(ActivateLAN, error),
    SENDS(SetVLANConfig, {}, error, kAnything),
    SENDS(DeleteVLANConfig, {}, error),
    SENDS(GetVLANConfig, kAnything, error),
    SENDS(AddPDNToVLANMapping, 2, 101, error),
    SENDS(DeletePDNToVLANMapping, 2, 101, error),
    SENDS(GetPDNtoVLANMappings, kAnything, kAnything, error),
    SENDS(SetIPPassthroughConfig, {}, true, kAnything, error),
    SENDS(GetIPPassthroughConfig, kAnything, kAnything, error),
    SENDS(GetIPPassthroughState, kAnything, error),
};
