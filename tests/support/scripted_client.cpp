/// The libraries beyond the seam, under their own headers, answering as a test scripts them.
#include "scripted_client.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "allocation.h"
#include "mox/util/event_dic.h"
#include "mox/util/network_manager.h"
#include "mox/util/process_control.h"

static std::ostream& operator<<(std::ostream& out, const qcmap_msgr_net_policy_info_v01& policy) {
  return out << "tech " << policy.tech_pref << " family " << policy.ip_family << " v4 "
             << +policy.v4_profile_id[0] << ' ' << +policy.v4_profile_id[1] << " v6 "
             << +policy.v6_profile_id[0] << ' ' << +policy.v6_profile_id[1];
}

namespace {

Script* current = nullptr;
/// What a test reports that does not end. Made in advance, since a signal handler must not
/// allocate.
std::string late;

/// The text in a field, and whether anything follows its end.
template <size_t kSize>
std::string Field(const char (&field)[kSize]) {
  const char* const end = std::find(field, field + kSize, '\0');
  const bool clean = std::all_of(end, field + kSize, [](char c) { return c == '\0'; });
  return std::string(field, end) + (end == field + kSize ? " (no end)" : clean ? "" : " (stale)");
}

int Shown(unsigned char number) {
  return number;
}
template <typename Value>
const Value& Shown(const Value& value) {
  return value;
}

template <typename... Arguments>
bool Ask(qmi_error_type_v01* error, const Arguments&... arguments) {
  const Untracked untracked;
  return current->Ask(Join(Shown(arguments)...), error);
}

template <typename Record>
bool Fill(bool granted, Record* record, const Record& answer) {
  std::memset(record, 0xA5, sizeof *record);
  if (granted) *record = answer;
  return granted;
}

template <typename Record>
const char* Cleared(const Record* record, size_t count = 1) {
  const auto* const bytes = reinterpret_cast<const unsigned char*>(record);
  const bool cleared = std::all_of(bytes, bytes + count * sizeof(Record),
                                   [](unsigned char byte) { return byte == 0; });
  return cleared ? "cleared" : "not cleared";
}

/// The name of a request, and whether its record was not zeroed.
template <typename Record>
std::string Reading(const char* request, const Record* record) {
  const Untracked untracked;
  return std::string(request) + (Cleared(record)[0] == 'c' ? "" : " (not cleared)");
}

template <typename... Arguments>
void NoteUtility(const Arguments&... arguments) {
  const Untracked untracked;
  current->utility_calls.push_back(Join(arguments...));
}

}  // namespace

Script::Script(int server_pid) : pid(server_pid) {
  current = this;
  const testing::TestInfo* const test = testing::UnitTest::GetInstance()->current_test_info();
  late = Join(test->test_suite_name(), test->name(), "did not end within 60 seconds.\n");
  std::signal(SIGALRM, [](int) {
    static_cast<void>(!write(STDERR_FILENO, late.data(), late.size()));
    std::_Exit(EXIT_FAILURE);
  });
  alarm(60);
  policy_list.policy_list_valid = 1;
  policy_list.policy_list_len = 3;
  for (uint32_t i = 0; i < QCMAP_MSGR_MAX_WWAN_POLICY_V01; ++i) {
    const auto number = static_cast<uint8_t>(i);
    policy_list.policy_list[i] = {11 * (i + 1), policy};
    policy_list.policy_list[i].policy.v4_profile_id[1] = number;
  }
}

Script::~Script() {
  alarm(0);
  EXPECT_EQ(live_clients, 0) << "clients left";
  current = nullptr;
}

void Script::Settle(const std::string& request, bool granted, int error) {
  const std::lock_guard<std::mutex> lock(mutex_);
  outcomes_[request] = {granted, error};
}

std::vector<std::string> Script::TakeRequests() {
  const std::lock_guard<std::mutex> lock(mutex_);
  return std::exchange(requests_, {});
}

bool Script::Ask(const std::string& request, qmi_error_type_v01* error) {
  const std::string name = request.substr(0, request.find(' '));
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    const bool fresh = *error == QMI_ERR_NONE_V01;
    requests_.push_back(request + (fresh ? "" : " (error " + std::to_string(*error) + ")"));
  }
  RunBefore(name);
  const std::lock_guard<std::mutex> lock(mutex_);
  const auto outcome = outcomes_.find(name);
  if (outcome == outcomes_.end()) return true;
  *error = static_cast<qmi_error_type_v01>(outcome->second.second);
  return outcome->second.first;
}

void Script::RunBefore(const std::string& request) {
  const auto hook = before.find(request);
  if (hook != before.end()) hook->second();
}

bool Script::Deliver(uint32_t id, void* bytes, uint32_t length) {
  const std::lock_guard<std::mutex> lock(indication_mutex_);
  if (callback_ == nullptr) return false;
  callback_(nullptr, id, bytes, length, nullptr);
  return true;
}

void Script::Connect(Callback* callback) {
  const std::lock_guard<std::mutex> lock(indication_mutex_);
  callback_ = callback;
  ++clients_made;
  ++live_clients;
}

void Script::Disconnect() {
  const std::lock_guard<std::mutex> lock(indication_mutex_);
  callback_ = nullptr;
  --live_clients;
}

QCMAP_Client::QCMAP_Client(Callback* callback) : mobile_ap_handle(77), state_(nullptr) {
  current->Connect(callback);
  static_cast<void>(state_);
}

QCMAP_Client::~QCMAP_Client() {
  current->Disconnect();
}

// Requests of one shape.

#define SENDING_NOTHING(request)                          \
  bool QCMAP_Client::request(qmi_error_type_v01* error) { \
    return Ask(error, #request);                          \
  }

#define SENDING(request, type)                                        \
  bool QCMAP_Client::request(type value, qmi_error_type_v01* error) { \
    return Ask(error, #request, value);                               \
  }

#define SENDING_A_MAPPING(request)                                                            \
  bool QCMAP_Client::request(short vlan_id, unsigned int handle, qmi_error_type_v01* error) { \
    return Ask(error, #request, vlan_id, handle);                                             \
  }

#define READING_A_FLAG(request, answer)                                        \
  bool QCMAP_Client::request(unsigned char* flag, qmi_error_type_v01* error) { \
    const bool granted = Ask(error, #request);                                 \
    return granted && Fill(granted, flag, current->answer);                    \
  }

#define READING(request, type, answer)                                           \
  bool QCMAP_Client::request(type* record, qmi_error_type_v01* error) {          \
    return Fill(Ask(error, Reading(#request, record)), record, current->answer); \
  }

#define READING_OF_A_FAMILY(request, type, answer)                                       \
  bool QCMAP_Client::request(qcmap_msgr_ip_family_enum_v01 family, type* record,         \
                             qmi_error_type_v01* error) {                                \
    return Fill(Ask(error, Reading(#request, record), family), record, current->answer); \
  }

SENDING_NOTHING(EnableMobileAP)
SENDING_NOTHING(DeleteWWANPolicy)
SENDING_NOTHING(EnableIPV4)
SENDING_NOTHING(DisableIPV4)
SENDING_NOTHING(EnableIPV6)
SENDING_NOTHING(DisableIPV6)
SENDING_NOTHING(ActivateLAN)
SENDING(SetWWANProfileHandlePreference, unsigned int)
SENDING(SetWWANPolicy, qcmap_msgr_net_policy_info_v01)
SENDING(CreateWWANPolicy, qcmap_msgr_net_policy_info_v01)
SENDING(ResetWWANStatistics, qcmap_msgr_ip_family_enum_v01)
SENDING(SetAutoconnect, unsigned char)
SENDING(SetRoaming, unsigned char)
SENDING(ConnectBackHaul, qcmap_msgr_wwan_call_type_v01)
SENDING(DisconnectBackHaul, qcmap_msgr_wwan_call_type_v01)
SENDING_A_MAPPING(AddPDNToVLANMapping)
SENDING_A_MAPPING(DeletePDNToVLANMapping)
READING_A_FLAG(GetAutoconnect, flag)
READING_A_FLAG(GetRoaming, flag)
READING_A_FLAG(GetIPv4State, flag)
READING_A_FLAG(GetIPv6State, flag)
READING_A_FLAG(GetIPPassthroughState, passthrough_state)
READING(GetWWANPolicy, qcmap_msgr_net_policy_info_v01, policy)
READING(GetVLANConfig, qcmap_msgr_vlan_conf_t, vlans)
READING_OF_A_FAMILY(GetWWANStatistics, qcmap_msgr_wwan_statistics_type_v01, statistics)
READING_OF_A_FAMILY(GetNetworkConfiguration, qcmap_nw_params_t, addresses)
READING(GetMobileAPStatus, qcmap_msgr_mobile_ap_status_enum_v01, ap_status)
READING(GetWWANPolicyList, qcmap_msgr_wwan_policy_list_resp_msg_v01, policy_list)
READING(GetLANConfig, qcmap_msgr_lan_config_v01, lan)

bool QCMAP_Client::UpdateWWANPolicy(qcmap_msgr_update_profile_enum_v01 update,
                                    qcmap_msgr_net_policy_info_v01 policy,
                                    qmi_error_type_v01* error) {
  return Ask(error, "UpdateWWANPolicy", update, policy);
}

bool QCMAP_Client::GetWWANStatus(qcmap_msgr_wwan_status_enum_v01* v4_status,
                                 qcmap_msgr_wwan_status_enum_v01* v6_status,
                                 qmi_error_type_v01* error) {
  const bool granted = Ask(error, "GetWWANStatus");
  Fill(granted, v4_status, static_cast<qcmap_msgr_wwan_status_enum_v01>(current->wwan_status[0]));
  return Fill(granted, v6_status,
              static_cast<qcmap_msgr_wwan_status_enum_v01>(current->wwan_status[1]));
}

bool QCMAP_Client::SetLANConfig(qcmap_msgr_lan_config_v01 config, qmi_error_type_v01* error) {
  char text[80];
  snprintf(text, sizeof text, "%x %x %d %x %x %u", config.gw_ip, config.netmask, config.enable_dhcp,
           config.dhcp_start_ip, config.dhcp_end_ip, config.lease_time);
  return Ask(error, "SetLANConfig", text);
}

bool QCMAP_Client::SetVLANConfig(qcmap_msgr_vlan_config_v01 config, qmi_error_type_v01* error,
                                 bool* out_flag) {
  return Ask(error, "SetVLANConfig", Field(config.iface_name), config.vlan_id, *out_flag);
}

bool QCMAP_Client::DeleteVLANConfig(qcmap_msgr_vlan_config_v01 config, qmi_error_type_v01* error) {
  return Ask(error, "DeleteVLANConfig", Field(config.iface_name), config.vlan_id);
}

bool QCMAP_Client::GetPDNtoVLANMappings(qcmap_msgr_pdn_to_vlan_mapping_v01* mappings, int* count,
                                        qmi_error_type_v01* error) {
  // Member by member: a compiler may leave the padding behind each VLAN as it was.
  const bool cleared = std::all_of(
      mappings, mappings + QCMAP_MSGR_MAX_MAPPINGS_V01,
      [](const auto& mapping) { return mapping.profile_handle == 0 && mapping.vlan_id == 0; });
  const bool granted =
      Ask(error, "GetPDNtoVLANMappings", cleared ? "cleared" : "not cleared", *count);
  std::copy(current->mappings.begin(), current->mappings.end(), mappings);
  return Fill(granted, count, current->mapping_count);
}

bool QCMAP_Client::SetIPPassthroughConfig(qcmap_msgr_ip_passthrough_mode_enum_v01 mode, bool flag,
                                          qcmap_msgr_ip_passthrough_config_v01* config,
                                          qmi_error_type_v01* error) {
  return Ask(error, "SetIPPassthroughConfig", mode, flag, config->device_type,
             Cleared(config->mac_addr, sizeof config->mac_addr), Field(config->device_name));
}

bool QCMAP_Client::GetIPPassthroughConfig(qcmap_msgr_ip_passthrough_mode_enum_v01* mode,
                                          qcmap_msgr_ip_passthrough_config_v01* config,
                                          qmi_error_type_v01* error) {
  const bool granted = Ask(error, Reading("GetIPPassthroughConfig", config));
  Fill(granted, mode,
       static_cast<qcmap_msgr_ip_passthrough_mode_enum_v01>(current->passthrough_mode));
  return Fill(granted, config, current->passthrough);
}

extern "C" int qmi_client_message_decode(qmi_client_type, int message_type, unsigned int message_id,
                                         const void* bytes, unsigned int length, void* record,
                                         unsigned int record_size) {
  const Untracked untracked;
  if (current == nullptr) return 1;
  if (current->decode_error != 0) return current->decode_error;
  current->decoded = Join(message_type, message_id, length, record_size,
                          Cleared(static_cast<const char*>(record), record_size));
  std::memcpy(record, bytes, std::min(length, record_size));
  return 0;
}

namespace mox::util {

int ProcessControl::GetPidByProcessName(std::string name, int limit) {
  NoteUtility("GetPidByProcessName", name, limit);
  current->RunBefore("GetPidByProcessName");
  return current->pid;
}

bool NetworkManager::IsValidAddress(std::string address, bool flag) {
  NoteUtility("IsValidAddress", address, flag);
  return current->bad_addresses.count(address) == 0;
}

bool NetworkManager::GetIpv4DhcpRange(std::string gateway, std::string netmask, std::string& start,
                                      std::string& end) {
  NoteUtility("GetIpv4DhcpRange", gateway, netmask);
  if (current->derived_range.empty()) return false;
  start = current->derived_range.at(0);
  end = current->derived_range.at(1);
  return true;
}

bool NetworkManager::CheckIpv4DhcpRangeValidation(std::string gateway, std::string netmask,
                                                  std::string start, std::string end) {
  NoteUtility("CheckIpv4DhcpRangeValidation", gateway, netmask, start, end);
  return current->range_fits;
}

bool NetworkManager::CheckIpv4MacValidation(std::string text) {
  NoteUtility("CheckIpv4MacValidation", text);
  return current->is_mac;
}

bool EventDic::AddParam(Param param, std::string value) {
  return params_.emplace(param, std::move(value)).second;
}

}  // namespace mox::util
