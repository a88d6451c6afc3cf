/// The libraries beyond the seam, under their own headers, answering as a test scripts them.
#pragma once

#include <atomic>
#include <functional>
#include <map>
#include <mutex>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "qcmap_client.h"

/// What a refused request leaves as its error: the log shows 59[0x3b].
constexpr int kError = 59;

using Callback = void(qmi_client_struct*, unsigned int, void*, unsigned int, void*);

/// The values, separated by blanks.
template <typename... Values>
std::string Join(const Values&... values) {
  std::ostringstream out;
  const char* separator = "";
  ((out << std::exchange(separator, " ") << values), ...);
  return out.str();
}

/// Everything beyond the seam. Only one may exist at a time. At first, the server runs, grants
/// every request and has three profiles, with the handles 11, 22 and 33. A refused request leaves
/// garbage in its record, but does not touch a flag that belongs to the library's caller. A script
/// that exists for 60 seconds ends the program with a message, so that no fault makes a test hang.
class Script {
 public:
  /// `server_pid`: what the probe finds.
  explicit Script(int server_pid = 4711);
  /// Fails the test when a client is left.
  ~Script();
  Script(const Script&) = delete;
  Script& operator=(const Script&) = delete;

  void Refuse(const std::string& request, int error = kError) { Settle(request, false, error); }
  void Grant(const std::string& request, int error = 0) { Settle(request, true, error); }

  /// The requests since the last call, in order: name, then what was sent. Marks an error value or
  /// a record that should have been cleared.
  std::vector<std::string> TakeRequests();

  /// Passes `record` to the latest client's callback; returns false when there is no client.
  /// Deleting a client waits for a delivery in progress.
  template <typename Record>
  bool Indicate(uint32_t id, Record record) {
    return Deliver(id, &record, sizeof record);
  }

  std::atomic<int> pid;
  /// By request: runs on the requesting thread before the answer is made.
  std::map<std::string, std::function<void()>> before;

  qcmap_msgr_mobile_ap_status_enum_v01 ap_status = QCMAP_MSGR_MOBILE_AP_STATUS_CONNECTED_V01;
  qcmap_msgr_wwan_policy_list_resp_msg_v01 policy_list = {};
  qcmap_msgr_net_policy_info_v01 policy = {1, QCMAP_MSGR_IP_FAMILY_V4V6_V01, {1, 5}, {2, 7}};
  unsigned char flag = 1;
  int wwan_status[2] = {6, 9};
  qcmap_msgr_wwan_statistics_type_v01 statistics = {{1ull << 40, 2}, {3, 0xffffffff}};
  qcmap_nw_params_t addresses = {};
  qcmap_msgr_lan_config_v01 lan = {0xc0a80101, 0xffffff00, 1, 0xc0a80114, 0xc0a8013c, 3600};
  qcmap_msgr_vlan_conf_t vlans = {};
  int mapping_count = 0;
  std::vector<qcmap_msgr_pdn_to_vlan_mapping_v01> mappings;
  int passthrough_mode = 1;
  qcmap_msgr_ip_passthrough_config_v01 passthrough = {3, {}, "laptop"};
  unsigned char passthrough_state = 5;

  /// Calls of the address utilities and of the probe, as text.
  std::vector<std::string> utility_calls;
  /// The addresses that are not valid.
  std::set<std::string> bad_addresses;
  /// Whether a DHCP range is valid.
  bool range_fits = true;
  /// The derived start and end; while it is empty, deriving them fails.
  std::vector<std::string> derived_range;
  /// Whether every text is a MAC address.
  bool is_mac = false;

  /// What the decoder returns.
  int decode_error = 0;
  /// Type, id, length and record size of the latest decoding.
  std::string decoded;

  std::atomic<int> clients_made{0};
  std::atomic<int> live_clients{0};

  /// For the client class: notes a request and returns whether it is granted.
  bool Ask(const std::string& request, qmi_error_type_v01* error);
  void RunBefore(const std::string& request);
  void Connect(Callback* callback);
  void Disconnect();

 private:
  void Settle(const std::string& request, bool granted, int error);
  bool Deliver(uint32_t id, void* bytes, uint32_t length);

  std::mutex mutex_;
  std::vector<std::string> requests_;
  /// Whether it is granted, and its error.
  std::map<std::string, std::pair<bool, int>> outcomes_;
  /// Held during the delivery of an indication.
  std::mutex indication_mutex_;
  Callback* callback_ = nullptr;
};
