/// All requests of the client class, by name.
#pragma once

#include <qcmap_client.h>

struct Request {
  const char* name;
  bool (*send)(QCMAP_Client&, qmi_error_type_v01*);
};

/// Room for whatever a request writes.
struct Anything {
  template <typename Record>
  operator Record*() const {
    static Record records[QCMAP_MSGR_MAX_MAPPINGS_V01];
    return records;
  }
};
constexpr Anything kOut;
constexpr auto kCall4 = QCMAP_MSGR_WWAN_CALL_TYPE_V4_V01;
constexpr auto kFamily4 = QCMAP_MSGR_IP_FAMILY_V4_V01;

#define SENDS(name, ...)                                                                           \
  {                                                                                                \
#name,                                                                                         \
        [](QCMAP_Client & client, qmi_error_type_v01 * error) { return client.name(__VA_ARGS__); } \
  }

inline const Request kEveryRequest[] = {
    SENDS(EnableMobileAP, error),
    SENDS(GetMobileAPStatus, kOut, error),
    SENDS(GetWWANPolicyList, kOut, error),
    SENDS(SetWWANProfileHandlePreference, 101, error),
    SENDS(GetWWANPolicy, kOut, error),
    SENDS(SetWWANPolicy, {}, error),
    SENDS(UpdateWWANPolicy, {}, {}, error),
    SENDS(CreateWWANPolicy, {}, error),
    SENDS(DeleteWWANPolicy, error),
    SENDS(SetAutoconnect, 1, error),
    SENDS(GetAutoconnect, kOut, error),
    SENDS(SetRoaming, 1, error),
    SENDS(GetRoaming, kOut, error),
    SENDS(EnableIPV4, error),
    SENDS(DisableIPV4, error),
    SENDS(EnableIPV6, error),
    SENDS(DisableIPV6, error),
    SENDS(GetIPv4State, kOut, error),
    SENDS(GetIPv6State, kOut, error),
    SENDS(GetWWANStatus, kOut, kOut, error),
    SENDS(ConnectBackHaul, kCall4, error),
    SENDS(DisconnectBackHaul, kCall4, error),
    SENDS(GetWWANStatistics, kFamily4, kOut, error),
    SENDS(ResetWWANStatistics, kFamily4, error),
    SENDS(GetNetworkConfiguration, kFamily4, kOut, error),
    SENDS(GetLANConfig, kOut, error),
    SENDS(SetLANConfig, {}, error),
    SENDS(ActivateLAN, error),
    SENDS(SetVLANConfig, {}, error, kOut),
    SENDS(DeleteVLANConfig, {}, error),
    SENDS(GetVLANConfig, kOut, error),
    SENDS(AddPDNToVLANMapping, 2, 101, error),
    SENDS(DeletePDNToVLANMapping, 2, 101, error),
    SENDS(GetPDNtoVLANMappings, kOut, kOut, error),
    SENDS(SetIPPassthroughConfig, {}, true, kOut, error),
    SENDS(GetIPPassthroughConfig, kOut, kOut, error),
    SENDS(GetIPPassthroughState, kOut, error),
};
