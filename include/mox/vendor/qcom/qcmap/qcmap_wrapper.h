/// Drives the modem's Mobile AP and data calls.
#pragma once

#include <pthread.h>

#include <cstdint>
#include <functional>
#include <list>
#include <map>
#include <string>
#include <vector>

#include "mox/result.h"
#include "mox/util/event_dic.h"
#include "mox/util/ip_family.h"
#include "mox/wwan/data_manager.h"
#include "mox/wwan/mobileap_manager.h"
#include "mox/wwan/tech.h"

#define MVQ_QCMAP_EXPORT __attribute__((visibility("default")))
#define MVQ_QCMAP_HIDDEN __attribute__((visibility("hidden")))

class QCMAP_Client;
enum qcmap_msgr_ip_family_enum_v01 : int32_t;
struct qmi_client_struct;
using qmi_client_type = qmi_client_struct*;
using profile_handle_type_v01 = uint32_t;

namespace mox {
namespace vendor {
namespace qcom {
namespace qcmap {

/// A mutex with default attributes. Its members have the names that std::lock_guard calls.
class MVQ_QCMAP_HIDDEN Mutex {
 public:
  Mutex();
  ~Mutex();
  Mutex(const Mutex&) = delete;
  Mutex& operator=(const Mutex&) = delete;

  void lock();
  void unlock();

 private:
  pthread_mutex_t mutex_;
};

/// A condition variable on CLOCK_MONOTONIC.
class MVQ_QCMAP_HIDDEN Condition {
 public:
  Condition();
  ~Condition();
  Condition(const Condition&) = delete;
  Condition& operator=(const Condition&) = delete;

 private:
  pthread_cond_t condition_;
  std::string name_;
};

/// A queue of events.
class MVQ_QCMAP_HIDDEN EventQueue {
 private:
  std::list<util::EventDic> events_;
  Mutex mutex_;
  Condition condition_;
};

// GCC warns that QcmapWrapper is visible while the classes of its members are not. That is
// intended: those classes are no part of the library's interface.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wattributes"

/// The one object through which device software drives the modem's Mobile AP.
///
/// Results. An operation that succeeds returns true or Result::SUCCESS. When an operation fails,
/// out-values keep what they held, unless its comment says otherwise. Operations throw nothing but
/// std::bad_alloc, after which out-values may be partly written.
///
/// Log. Every failure also writes to the system log, with whatever identity and options the program
/// passed to openlog, unless the operation's comment says "without a log line". The levels are:
/// - LOG_ERR: an argument is invalid, or the server refused a request.
/// - LOG_WARNING: no server runs, the Mobile AP is not connected, or a failure is tolerated.
/// - LOG_DEBUG: traces. A success logs at this level only, unless its comment says otherwise.
/// Each line begins with the full signature of the function that logs it and the source line.
///
/// Connection. Every operation that sends a request connects first if necessary, and fails if that
/// fails (see ConnectToQcmapIfNeeded). Once connected, the object counts as connected for as long
/// as it lives. If the server goes away, every request fails from then on. The program must then be
/// restarted, because a new server would not know which profile this object has selected.
///
/// Profiles. An `index` is the position of a data profile in the server's policy list, from 0 to at
/// most 49. Operations with an `index` first select that profile, and fail if that fails (see
/// ChangeWwanProfile). Callers need to know two things:
/// - Selecting and acting are two requests. Threads that use different profiles must take turns, or
///   one acts on the profile that the other has selected in between.
/// - An index can come to mean another profile. When any client deletes a policy, the ones after it
///   move up by one, but the selected profile stays selected. Operations on the index selected last
///   still act on the profile that was there at the time, while GetProfileHandle, GetWwanPolicies
///   and the mapping operations already use the one that is there now. To select anew after a
///   deletion, select some other index first. If index 0 is selected and only one policy is left,
///   there is no other index: add a policy, or restart the program.
///
/// Events. Calls report their changes to subscribers (see subscription.h). A program that
/// subscribes late misses nothing if it works in this order: subscribe, read the state with
/// GetWwanConnectStatus, then request. An event may then repeat what was read, but none is missed;
/// where the two differ, the event counts, because any later change sends another event. A family
/// that is already up sends no event when it is requested, so never wait for one without having
/// read the state.
///
/// Threads. The first GetInstance must return before another thread uses the library. After that,
/// any thread may call any operation, which blocks until its requests are answered. No lock
/// protects the connection, the selected index and `s_ins_`, but reading and changing them from
/// several threads is free of data races. While one thread is connecting, operations on other
/// threads fail at once without a log line. GetWwanPolicies and GetNetworkConfig run one at a time,
/// even while they connect: each waits for the other. They must not be called from a subscriber's
/// callback. A callback already runs under the mutex of the subscribers, and no thread may hold
/// both mutexes.
///
/// Waiting. A request that is not answered fails when the client's time limit has passed. Most
/// operations make one request, or three if they have to select a profile; the first ones make two
/// more to connect. An attempt to connect, ConnectBackhaul and SetLanConfig go on after some failed
/// requests, and each of these can take a time limit of its own. The waiting times of
/// GetWwanPolicies and GetNetworkConfig add up, because they run one at a time: if n threads call
/// them while the server is stopped, the last one returns after n time limits.
///
/// Fork. The connection belongs to the process that made it. In a child process every request fails
/// at once and no event arrives; the parent is not disturbed. A program that runs as a daemon must
/// therefore fork before its first GetInstance. An operation may block in the child if at the
/// moment of the fork another thread of the parent was in an operation or received an event: it may
/// need a mutex which that thread held, such as the one of syslog.
class MVQ_QCMAP_EXPORT QcmapWrapper {
 public:
  /// The one instance; null until the first GetInstance has returned.
  static QcmapWrapper* s_ins_;

  /// Returns the one instance, which is never null and lives until the process ends.
  /// The first call creates it and makes one attempt to connect; if that fails, the instance is
  /// usable all the same and later operations try again. The attempt is logged as by
  /// ConnectToQcmapIfNeeded. If the first call throws std::bad_alloc, no instance remains and the
  /// next call starts anew.
  /// The first call must return before any other thread calls.
  static QcmapWrapper* GetInstance();

  /// Used by GetInstance, and by tests that need an object of their own. Only the object to which
  /// `s_ins_` points delivers events.
  QcmapWrapper();
  /// Disconnects, after waiting for a delivery in progress. Must not be called from a callback or
  /// while any operation runs. Destructors of objects that callbacks captured must not call
  /// Subscribe or Unsubscribe. `s_ins_` is left as it is.
  ~QcmapWrapper();
  QcmapWrapper(const QcmapWrapper&) = delete;
  QcmapWrapper& operator=(const QcmapWrapper&) = delete;

  // Connection (connection.cpp).

  /// Returns whether a process with the server's name runs. Logs its process id, which is negative
  /// when there is none (LOG_DEBUG).
  bool IsQcmapAlive();

  /// Connects unless already connected. Returns true at once when connected. Returns false at once,
  /// without a log line, while another thread is connecting. Otherwise makes one attempt, which
  /// fails when no server runs or the Mobile AP is not connected (LOG_WARNING each). If the server
  /// refuses to enable the Mobile AP, that is only logged (LOG_ERR) and the attempt goes on.
  bool ConnectToQcmapIfNeeded();

  // Profile selection (profile_selection.cpp).

  /// Makes the profile at `index` the one that this client's requests act on. Sends nothing when
  /// `index` is already selected (initially 0), even if the policy list has changed since. Fails
  /// when the list cannot be read, has no such index, or the server refuses (LOG_ERR each); the
  /// profile selected before then stays selected.
  bool ChangeWwanProfile(uint32_t index);

  /// Selects `index`, then reads the policy list and stores the handle that it now has at `index`.
  /// The handle identifies the profile in events. Fails without a log line when the list no longer
  /// has that index. After another client deleted a policy, the handle can be that of another
  /// profile than the selected one (see Profiles above).
  bool GetProfileHandle(uint32_t index, profile_handle_type_v01& handle);

  // Policy (policy.cpp).

  /// Changes the policy of a profile. `family` decides what is sent:
  ///
  /// | `family` | IPv4 profile number | IPv6 profile number | family sent |
  /// |----------|---------------------|---------------------|-------------|
  /// | IPV4     | `profile_1`         | the server's        | IPV4        |
  /// | IPV6     | the server's        | `profile_1`         | IPV6        |
  /// | IPV4V6   | `profile_1`         | `profile_2`         | IPV4V6      |
  /// | NONE     | the server's        | the server's        | IPV4        |
  ///
  /// Both resulting numbers must be 1 to 24, or the call fails (LOG_ERR) and changes nothing.
  /// Otherwise, if `profile_1` is the server's IPv4 number and `profile_2` its IPv6 number, the
  /// call changes nothing and returns true, whatever `family` is. So `tech` and `family` cannot be
  /// changed without changing a number too. Any `tech` other than TECH_3GPP and TECH_3GPP2 is sent
  /// as no preference.
  ///
  /// For index 0 a change takes one request, for any other index two. If the server refuses the
  /// second request, the call fails, but what the first one changed stays changed.
  bool SetWwanPolicy(uint32_t index, mox::wwan::Tech tech, mox::util::IPFamily family,
                     int profile_1, int profile_2);

  /// Adds a policy. `profile_1` is its IPv4 profile number and `profile_2` its IPv6 one; both are
  /// sent unchecked. `tech` and `family` are sent as by SetWwanPolicy. Read the new policy's index
  /// with GetWwanPolicies. Does not select a profile.
  bool CreateWwanPolicy(mox::wwan::Tech tech, mox::util::IPFamily family, uint8_t profile_1,
                        uint8_t profile_2);

  /// Deletes the policy of a profile. The policies after it move up by one, for every client.
  /// `index` still counts as selected although its profile is gone, so select another index before
  /// the next operation.
  bool DeleteWwanPolicy(uint8_t index);

  /// Reads the policy of a profile. The server does not report the handle here:
  /// `policy.profile_handle` becomes 0xFFFFFFFF.
  bool GetWwanPolicy(uint32_t index, mox::wwan::DataManager::WwanPolicy& policy);

  /// Replaces the content of `policies` by all policies, at most 50, in the order of their indices.
  /// `policies` is empty after a failure. Does not select a profile. Must not be called from a
  /// subscriber's callback.
  bool GetWwanPolicies(std::vector<mox::wwan::DataManager::WwanPolicy>& policies);

  /// Converts the server's mask of preferred technologies: TECH_3GPP when bit 0 is set, otherwise
  /// TECH_3GPP2 when bit 1 is set, otherwise ANY. Other bits are ignored, so they are lost when the
  /// result is set again. Sends nothing.
  static mox::wwan::Tech ConvertToTech(unsigned long long tech_preference);

  /// Converts the server's number of a family: 4 is IPV4, 6 is IPV6, 10 is IPV4V6, and any other
  /// number is NONE. Sends nothing.
  static mox::util::IPFamily ConvertToIPFamily(qcmap_msgr_ip_family_enum_v01 family);

  // Switch: the on/off settings of each profile (switch.cpp).

  /// Sets whether the server brings the profile's call up by itself.
  bool SetAutoConnect(uint32_t index, bool enable);
  /// Reads that setting.
  bool GetAutoConnect(uint32_t index, bool& enabled);
  /// Sets whether the profile's call may be made while roaming.
  bool SetRoaming(uint32_t index, bool enable);
  /// Reads that setting.
  bool GetRoaming(uint32_t index, bool& enabled);
  /// Set whether the profile's call may carry IPv4.
  bool EnableIpv4(uint32_t index);
  bool DisableIpv4(uint32_t index);
  /// Set whether the profile's call may carry IPv6.
  bool EnableIpv6(uint32_t index);
  bool DisableIpv6(uint32_t index);
  /// Read whether the profile's call may carry IPv4 or IPv6.
  bool GetIpv4State(uint32_t index, bool& enabled);
  bool GetIpv6State(uint32_t index, bool& enabled);

  // Call (call.cpp).

  /// Reads the state of both families of a profile's call.
  bool GetWwanConnectStatus(uint32_t index, mox::wwan::DataManager::ConnectStatus& v4_status,
                            mox::wwan::DataManager::ConnectStatus& v6_status);

  /// Requests one family, IPV4 or IPV6, of a profile's call.
  /// SUCCESS: the server accepted the request, and events report the outcome: BRING_UP_CONNECTED or
  /// BRING_UP_CONNECTION_FAILED, and WWAN_CONNECTED once the family is up. SUCCESS is also returned
  /// when the family is already up. Then the call is not requested again and no event follows:
  /// subscribe and read the state first (see Events above).
  /// FAILURE: there is no connection (logged as by ConnectToQcmapIfNeeded), the profile could not
  /// be selected, the server refused the request, or `family` is any other value (LOG_ERR each). A
  /// refused selection is tried a second time, and each refusal is logged. If the state cannot be
  /// read (LOG_ERR), the call is requested all the same. The profile stays selected, even after a
  /// failure.
  mox::Result ConnectBackhaul(uint32_t index, mox::util::IPFamily family);

  /// Takes one family, IPV4 or IPV6, of a profile's call down.
  /// SUCCESS: the server accepted the request, and events report the outcome:
  /// TEAR_DOWN_DISCONNECTED or TEAR_DOWN_DISCONNECTION_FAILED, and WWAN_DISCONNECTED once the
  /// family is down.
  /// FAILURE without a request to take the call down: the family is already down (without a log
  /// line), there is no connection (logged as by ConnectToQcmapIfNeeded), the state cannot be read,
  /// the profile cannot be selected, or `family` is any other value (LOG_ERR each).
  /// FAILURE after that request: the server refused it (LOG_ERR).
  /// INCOMPATIBLE_STATE: the call cannot be taken down in its present state. LOG_ERR when the
  /// server refused; without a log line when it reported this state but accepted the request. The
  /// profile stays selected, even after a failure.
  mox::Result DisconnectBackhaul(uint32_t index, mox::util::IPFamily family);

  // Stats: traffic counters (stats.cpp).

  /// Traffic counters in the server's order. Their meaning is defined by the server.
  struct WWANStatics {
    uint64_t counter64_1;
    uint64_t counter64_2;
    uint32_t counter32_1;
    uint32_t counter32_2;
  };

  /// Reads the counters of one family of a profile's call, or of both together (IPV4V6). Any other
  /// family gives INVALID_ARGUMENT (LOG_ERR), even when no server runs. Other failures give FAILURE
  /// (LOG_ERR or LOG_WARNING).
  mox::Result GetWWANStatistics(uint32_t index, mox::util::IPFamily family,
                                WWANStatics& statistics);

  /// Sets the counters to zero. Families and results are those of GetWWANStatistics.
  mox::Result ResetWWANStatistics(uint32_t index, mox::util::IPFamily family);

  // Address (address.cpp).

  /// Reads the three addresses of one family, IPV4 or IPV6, of a profile's call as text.
  /// NO_NETWORK (LOG_ERR): the call has no addresses, for instance because it is down.
  /// FAILURE: `family` is any other value (without a log line), or the addresses cannot be read.
  /// After a failure `config.ip_family` is NONE and the texts are unchanged. The profile is
  /// selected before `family` is checked, and stays selected. Must not be called from a
  /// subscriber's callback.
  mox::Result GetNetworkConfig(uint32_t index, mox::util::IPFamily family,
                               mox::wwan::DataManager::NetworkConfig& config);

  // LAN (lan.cpp). Addresses and netmasks are IPv4 in dotted-quad form.

  /// Reads the LAN's gateway address, netmask, DHCP switch, DHCP range and lease time. The lease
  /// time is the server's number; one above 2^31 - 1 comes back negative.
  bool GetLanConfig(std::string& gw_ip, std::string& netmask, bool& enable_dhcp,
                    std::string& dhcp_start_ip, std::string& dhcp_end_ip, int& lease_time);

  /// Sets the LAN's configuration, which takes effect with ActivateLan.
  /// Gateway and netmask must be valid addresses (LOG_ERR otherwise).
  /// With DHCP on, a start or end that is not empty must be a valid address (LOG_ERR otherwise). If
  /// either is empty, both are derived from gateway and netmask. A range outside the subnet, or a
  /// subnet with no room for one, is refused without a log line.
  /// With DHCP off the range is not checked, and a text that is no address is sent as
  /// 255.255.255.255.
  /// If the present configuration cannot be read, a warning is logged (LOG_WARNING) and the new one
  /// is sent anyway.
  /// `lease_time` is passed on unchecked, in the server's unit.
  bool SetLanConfig(std::string gw_ip, std::string netmask, bool enable_dhcp,
                    std::string dhcp_start_ip, std::string dhcp_end_ip, uint32_t lease_time);

  /// Makes the server apply the LAN configuration.
  bool ActivateLan();

  // VLAN (vlan.cpp).

  /// Adds VLAN `vlan_id`, 2 to 4094, to the interface `tethering_mode`: 1 is rndis0, 2 is ecm0, 3
  /// is eth0. Other values are refused (LOG_ERR). `profile_index` is ignored, and `vlan` is not
  /// changed.
  bool SetVlanConfig(mox::wwan::MobileapManager::VlanConfig& vlan);
  /// Deletes that VLAN from that interface. Ranges and log lines are those of SetVlanConfig.
  bool DeleteVlanConfig(mox::wwan::MobileapManager::VlanConfig& vlan);

  /// Appends the server's VLANs to `vlans`, at most 2000. Each has `profile_index` -1, and
  /// `tethering_mode` 0 if it is on an interface other than the three above. If the server refuses
  /// the request without an error code, this logs it (LOG_ERR) but returns true and appends
  /// nothing.
  bool GetVlanConfigs(std::vector<mox::wwan::MobileapManager::VlanConfig>& vlans);

  // Map: PDN-to-VLAN mapping (map.cpp). None of these selects a profile.

  /// Maps VLAN `vlan_id` to the profile at `profile_index`. Fails without a log line when there is
  /// no such profile. `tethering_mode` is ignored. The VLAN id is cut to 16 bits and otherwise left
  /// for the server to check.
  bool SetPdnToVlanMapping(mox::wwan::MobileapManager::VlanConfig& vlan);

  /// Removes the mapping of VLAN `vlan_id` to the profile at `profile_index`. If `profile_index` is
  /// negative, removes the first mapping of that VLAN to a profile that exists. The VLAN id is cut
  /// to 16 bits in the request, but not while that mapping is looked up. Fails without a log line
  /// when there is no such profile, or no such mapping to choose. A mapping that the server does
  /// not have is a refusal (LOG_ERR).
  bool DeletePdnToVlanMapping(mox::wwan::MobileapManager::VlanConfig& vlan);

  /// Appends the server's mappings to `mappings`, at most 50. Each has the index of its profile, or
  /// -1 when that profile has been deleted.
  bool GetPdnToVlanMapping(std::vector<mox::wwan::MobileapManager::VlanMapping>& mappings);

  // Passthrough (passthrough.cpp).

  /// With `enable`, hands the WWAN address through to the USB host named in `config`. A
  /// `device_type` other than USB_HOST is refused without a log line. `host_device_name` must not
  /// be a MAC address and may have at most 100 bytes (LOG_ERR otherwise); only what precedes a zero
  /// byte is sent. Without `enable`, ends passthrough and ignores `config`. Never changes `config`.
  bool SetIpPassthrough(bool enable, mox::wwan::MobileapManager::IpPassthroughConfig& config);

  /// Reads whether passthrough is enabled, and for which host.
  /// While it is disabled, `device_type` and `host_device_name` are written only if a USB host is
  /// configured. If it is enabled for another kind of host, the result is false (LOG_DEBUG),
  /// `enabled` is true and `config` is unchanged. If only the state byte cannot be read, the result
  /// is false (LOG_ERR), but everything except `pt_state` has been written.
  bool GetIpPassthrough(bool& enabled, mox::wwan::MobileapManager::IpPassthroughConfig& config);

  // Indication (indication.cpp).

  /// The callback that each client is created with; the client's library calls it on a thread of
  /// its own. `bytes` is the encoded indication of `length` bytes; `user_data` is ignored. Logs
  /// each indication (LOG_DEBUG) and delivers the events of calls to the subscribers. Discards,
  /// with LOG_ERR: status indications that cannot be decoded, and answers meant for another client.
  /// Discards without a further line: call indications that cannot be decoded, that find no memory,
  /// or that arrive before the instance exists, and answers that arrive while there is no client.
  /// If a subscriber throws, the exception leaves this function with the mutex released, and the
  /// remaining subscribers miss the event.
  static void EvtCb(qmi_client_type client, uint32_t message_id, void* bytes, uint32_t length,
                    void* user_data);

 private:
  friend void Subscribe(QcmapWrapper& wrapper, void* subscriber,
                        std::function<void(mox::util::EventDic&)> callback);
  friend void Unsubscribe(QcmapWrapper& wrapper, void* subscriber);

  /// Like ConnectToQcmapIfNeeded and ChangeWwanProfile. In the usual case, when the connection is
  /// made and the profile selected, they call nothing.
  MVQ_QCMAP_HIDDEN bool Connect();
  MVQ_QCMAP_HIDDEN bool Select(uint32_t index);

  /// The subscribers' callbacks, called in the order of their keys.
  std::map<void*, std::function<void(mox::util::EventDic&)>> event_callbacks_;
  /// Guards `event_callbacks_`. Held while an event is delivered, including all its callbacks.
  Mutex event_callbacks_mutex_;
  /// True from the first successful attempt on. This, `client_` and `profile_index_` are accessed
  /// without a lock, through atomic builtins.
  bool connected_;
  /// Keeps GetWwanPolicies and GetNetworkConfig apart: one of them runs at a time, from its first
  /// line to its last, connecting and requests included. Callers rely on that, so the lock must not
  /// be narrowed to a part of them. It protects no data and no other operation takes it, so another
  /// thread can still select another profile in between.
  Mutex op_mutex_;
  /// No operation uses these three or `event_queue_`. They are part of the object's binary layout.
  Mutex aux_mutex_1_;
  Mutex aux_mutex_2_;
  Condition aux_cond_;
  /// Owned. Not null once connected, and while an attempt runs.
  QCMAP_Client* client_;
  /// The index selected last.
  uint32_t profile_index_;
  EventQueue event_queue_;
};

#pragma GCC diagnostic pop

}  // namespace qcmap
}  // namespace qcom
}  // namespace vendor
}  // namespace mox
