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

/// A mutex with default attributes, to be held through std::lock_guard (hence the names).
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

// The classes above are members, yet not part of the library's interface.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wattributes"

/// The one object through which device software drives the modem's Mobile AP.
///
/// Results. Operations return true or Result::SUCCESS on success. Every failure is also told by
/// lines in the system log (syslog, under the identity and options that the program gave openlog),
/// unless the operation says "silent". LOG_ERR: a refused request or argument. LOG_WARNING: no
/// server, the Mobile AP is not connected, or a failure that is tolerated. LOG_DEBUG: traces. Each
/// line begins with the operation's full signature and the source line. A success leaves a line
/// above LOG_DEBUG only where the operation says so. Out-values keep what they held when an
/// operation fails, unless it says otherwise. Nothing is thrown but std::bad_alloc, after which
/// out-values may be partly written.
///
/// Connection. Every operation that sends a request first makes sure of the server: without a
/// connection it makes one attempt, and fails after the lines of ConnectToQcmapIfNeeded when that
/// does. Once connected, the object counts as connected for as long as it lives. When the server
/// goes away, requests fail from then on, and the program must be restarted to reach a new server,
/// which would not know the profile that this object believes selected.
///
/// Profiles. Operations with an `index` act on the data profile at that place (from 0, at most 49)
/// of the server's policy list. They select it first with ChangeWwanProfile and fail after its
/// lines when that does. Selecting and acting are two requests: threads that use different
/// profiles must take turns, or one acts on the profile that the other has selected.
///
/// Threads. The first GetInstance must have returned before another thread uses the library.
/// After that every operation may be called from any thread, and blocks for its requests. The
/// connection, the remembered profile and the instance pointer are not locked; they are free of
/// data races all the same. While one thread attempts to connect, operations on others fail at
/// once, as if not connected, and silent. GetWwanPolicies and GetNetworkConfig wait for each
/// other, an attempt included; they must not be called from a subscriber's callback, which already
/// runs under the mutex of the subscribers (see subscription.h), since no thread may ever hold both
/// mutexes.
class MVQ_QCMAP_EXPORT QcmapWrapper {
 public:
  /// The one instance; null until the first GetInstance has returned.
  static QcmapWrapper* s_ins_;

  /// Returns the one instance. The first call builds it, which includes one attempt to connect; it
  /// returns a usable object also when that fails. When it throws std::bad_alloc, nothing is left
  /// behind and the next call starts again. Never null. The instance lives until the process ends.
  /// The first call must be finished before any other thread calls.
  static QcmapWrapper* GetInstance();

  /// Only for GetInstance, and for tests that need an object of their own.
  QcmapWrapper();
  /// Ends the connection. Waits for an indication under way. Leaves `s_ins_` as it is. Not from a
  /// callback, and not while an operation runs; what the callbacks own must not subscribe or
  /// unsubscribe when it goes.
  ~QcmapWrapper();
  QcmapWrapper(const QcmapWrapper&) = delete;
  QcmapWrapper& operator=(const QcmapWrapper&) = delete;

  // Connection.

  /// Whether a process of the server's name runs. Logs its id (LOG_DEBUG), negative for none.
  bool IsQcmapAlive();

  /// Makes sure of a connected client. Returns at once, and silent, when there is one, or while
  /// another thread is attempting. Otherwise attempts once: false when no server runs or the
  /// Mobile AP is not connected (LOG_WARNING each). A refused enable is only logged (LOG_ERR).
  bool ConnectToQcmapIfNeeded();

  // Profile selection (profile_selection.cpp).

  /// Makes the profile `index` the server's current one for this client. Asks the server for
  /// nothing when `index` is the one selected last (at first: 0), even if the list has changed
  /// since. On failure (the list cannot be read, no such index, the server refuses; LOG_ERR) the
  /// profile selected before stays selected.
  bool ChangeWwanProfile(uint32_t index);

  /// Selects `index` and stores the server's handle of that policy in `handle`. Silent when the
  /// selected index has since gone from the list.
  bool GetProfileHandle(uint32_t index, profile_handle_type_v01& handle);

  // Policies (policy.cpp).

  /// Changes the policy of a profile. The modem profile numbers sent are, by `family`: IPV4:
  /// `profile_1` for IPv4; IPV6: `profile_1` for IPv6; IPV4V6: `profile_1` for IPv4 and `profile_2`
  /// for IPv6. The other family keeps the server's number; with NONE, which is sent as IPV4, both
  /// do. Both numbers, the one kept included, must be 1 to 24, also when nothing would be sent
  /// (LOG_ERR otherwise, nothing is sent). When `profile_1` is the server's IPv4 number and
  /// `profile_2` its IPv6 number, whatever the family, nothing is sent and the result is true:
  /// `tech` and `family` alone cannot be changed. Any `tech` but TECH_3GPP and TECH_3GPP2 is sent
  /// as no preference. Profiles but the first take two requests; after a refusal of the second the
  /// first stays in effect.
  bool SetWwanPolicy(uint32_t index, mox::wwan::Tech tech, mox::util::IPFamily family,
                     int profile_1, int profile_2);

  /// Adds a policy: `profile_1` is its IPv4 number, `profile_2` its IPv6 number, both sent as they
  /// are; `tech` and `family` as for SetWwanPolicy. GetWwanPolicies tells where it stands. Selects
  /// no profile.
  bool CreateWwanPolicy(mox::wwan::Tech tech, mox::util::IPFamily family, uint8_t profile_1,
                        uint8_t profile_2);

  /// Deletes the policy of a profile. Later policies move up by one, and `index` still counts as
  /// selected: select another profile before going on.
  bool DeleteWwanPolicy(uint8_t index);

  /// Reads the policy of a profile. `policy.profile_handle` becomes 0xFFFFFFFF.
  bool GetWwanPolicy(uint32_t index, mox::wwan::DataManager::WwanPolicy& policy);

  /// Reads all policies, at most 50, in the order of their indices. Empties `policies` first; it is
  /// empty after a failure. Selects no profile. Not from a subscriber's callback (two mutexes).
  bool GetWwanPolicies(std::vector<mox::wwan::DataManager::WwanPolicy>& policies);

  /// The technology that a server's preference mask stands for: bit 0 TECH_3GPP (whatever the other
  /// bits, so that setting what was read drops them), else bit 1 TECH_3GPP2, else ANY. Asks no
  /// server.
  static mox::wwan::Tech ConvertToTech(unsigned long long tech_preference);

  /// The family that the server's number stands for: 4 IPV4, 6 IPV6, 10 IPV4V6, any other NONE.
  /// Asks no server.
  static mox::util::IPFamily ConvertToIPFamily(qcmap_msgr_ip_family_enum_v01 family);

  // Per-profile switches (switch.cpp). A flag that is read is written by the client itself,
  // which leaves it alone when the request fails.

  /// Switches whether the server brings the profile's call up by itself.
  bool SetAutoConnect(uint32_t index, bool enable);
  bool GetAutoConnect(uint32_t index, bool& enabled);
  /// Switches whether the profile's call may be made while roaming.
  bool SetRoaming(uint32_t index, bool enable);
  bool GetRoaming(uint32_t index, bool& enabled);
  /// Switch whether the profile's call may carry IPv4.
  bool EnableIpv4(uint32_t index);
  bool DisableIpv4(uint32_t index);
  /// Switch whether the profile's call may carry IPv6.
  bool EnableIpv6(uint32_t index);
  bool DisableIpv6(uint32_t index);
  /// Read whether it may.
  bool GetIpv4State(uint32_t index, bool& enabled);
  bool GetIpv6State(uint32_t index, bool& enabled);

  // Backhaul call (call.cpp).

  /// Reads the state of both families of a profile's call.
  bool GetWwanConnectStatus(uint32_t index, mox::wwan::DataManager::ConnectStatus& v4_status,
                            mox::wwan::DataManager::ConnectStatus& v6_status);

  /// Asks for one family of a profile's call, IPV4 or IPV6 (FAILURE and LOG_ERR for any other).
  /// SUCCESS when the server has accepted the request: the outcome follows as a BRING_UP event, and
  /// as WWAN events. SUCCESS too, without a request and silent, when the family is connected.
  /// FAILURE when it cannot be requested. A state that cannot be read (LOG_ERR) does not keep the
  /// call from being requested. The profile stays selected, also after a failure.
  mox::Result ConnectBackhaul(uint32_t index, mox::util::IPFamily family);

  /// Takes one family of a profile's call down, IPV4 or IPV6 (FAILURE and LOG_ERR for any other).
  /// SUCCESS when the server has accepted the request: the outcome follows as a TEAR_DOWN event.
  /// FAILURE when it cannot be requested: silent when the family is already disconnected, LOG_ERR
  /// when the state cannot be read, and nothing is requested then. INCOMPATIBLE_STATE when the call
  /// is in no state to be taken down (LOG_ERR; silent when the server says so of a request that it
  /// granted). The profile stays selected, also after a failure.
  mox::Result DisconnectBackhaul(uint32_t index, mox::util::IPFamily family);

  // Statistics (stats.cpp).

  /// Traffic counters in the server's order. What each counts is the server's to say.
  struct WWANStatics {
    uint64_t counter64_1;
    uint64_t counter64_2;
    uint32_t counter32_1;
    uint32_t counter32_2;
  };

  /// Reads the counters of one family of a profile's call, or of both together (IPV4V6).
  /// INVALID_ARGUMENT (LOG_ERR) for any other family, before the server is looked for and the
  /// profile selected.
  mox::Result GetWWANStatistics(uint32_t index, mox::util::IPFamily family,
                                WWANStatics& statistics);

  /// Sets the counters to zero. Families and results as for GetWWANStatistics.
  mox::Result ResetWWANStatistics(uint32_t index, mox::util::IPFamily family);

  // Network configuration (address.cpp).

  /// Reads the three addresses of one family of a profile's call, IPV4 or IPV6 (FAILURE, silent,
  /// for any other). NO_NETWORK when the call has none. After a failure `config.ip_family` is NONE
  /// and the texts are as before. Not from a subscriber's callback (two mutexes).
  mox::Result GetNetworkConfig(uint32_t index, mox::util::IPFamily family,
                               mox::wwan::DataManager::NetworkConfig& config);

  // LAN (lan.cpp); addresses and the netmask are IPv4 in dotted-quad form.

  /// Reads the LAN's gateway address, netmask, DHCP switch, range and lease time (the server's
  /// number, unchanged; one above 2^31 - 1 comes back negative).
  bool GetLanConfig(std::string& gw_ip, std::string& netmask, bool& enable_dhcp,
                    std::string& dhcp_start_ip, std::string& dhcp_end_ip, int& lease_time);

  /// Sets them. Gateway and netmask are checked always. With DHCP on, a start or end that is given
  /// is checked, and when either is empty both are derived from gateway and netmask. With DHCP off
  /// the range is not checked, and a text that is no address is sent as 255.255.255.255. A refused
  /// address is logged (LOG_ERR); a range that does not fit the subnet, or a subnet without room
  /// for one, is refused silent. That the present configuration could not be read is only logged
  /// (LOG_WARNING). Takes effect with ActivateLan.
  bool SetLanConfig(std::string gw_ip, std::string netmask, bool enable_dhcp,
                    std::string dhcp_start_ip, std::string dhcp_end_ip, uint32_t lease_time);

  /// Has the server apply the LAN configuration.
  bool ActivateLan();

  // VLANs (vlan.cpp).

  /// Adds VLAN `vlan_id` (2 to 4094) on the interface of `tethering_mode` (1 rndis0, 2 ecm0, 3
  /// eth0); LOG_ERR for others. Neither this nor DeleteVlanConfig looks at `profile_index` or
  /// changes the record.
  bool SetVlanConfig(mox::wwan::MobileapManager::VlanConfig& vlan);
  /// Deletes that VLAN from that interface. Limits and lines as for adding it.
  bool DeleteVlanConfig(mox::wwan::MobileapManager::VlanConfig& vlan);

  /// Appends the server's VLANs, at most 2000, each with `profile_index` -1, and with
  /// `tethering_mode` 0 when it is on another interface. Returns true, with
  /// nothing appended, also when the request fails without an error code (LOG_ERR).
  bool GetVlanConfigs(std::vector<mox::wwan::MobileapManager::VlanConfig>& vlans);

  // PDN-to-VLAN mapping (map.cpp); selects no profile.

  /// Maps VLAN `vlan_id` to the profile `profile_index`. Silent when there is no such profile.
  /// `tethering_mode` is not looked at; the server judges the VLAN id, of which it gets 16 bits.
  bool SetPdnToVlanMapping(mox::wwan::MobileapManager::VlanConfig& vlan);

  /// Removes one mapping: of VLAN `vlan_id` to the profile `profile_index`, or, when that is
  /// negative, the first of that VLAN to a profile that exists. Silent when `profile_index` names
  /// no profile, or when there is no such first; a mapping that the server does not have is a
  /// refusal (LOG_ERR).
  bool DeletePdnToVlanMapping(mox::wwan::MobileapManager::VlanConfig& vlan);

  /// Appends the server's mappings, at most 50, each with the index of its profile, or -1 when no
  /// policy has the mapping's handle any more. Selects no profile.
  bool GetPdnToVlanMapping(std::vector<mox::wwan::MobileapManager::VlanMapping>& mappings);

  // IP passthrough (passthrough.cpp).

  /// With `enable`, hands the WWAN address through to the USB host `host_device_name` (at most 100
  /// bytes, LOG_ERR beyond; a MAC address is refused too, LOG_ERR; it ends at a zero byte). Refuses
  /// silent a `device_type` other than USB_HOST. Without `enable`, ends it, and does not look at
  /// `config`. Never changes `config`.
  bool SetIpPassthrough(bool enable, mox::wwan::MobileapManager::IpPassthroughConfig& config);

  /// Reads it back. While disabled, `device_type` and `host_device_name` are written only when a
  /// USB host is configured. When it is enabled for another kind of host: false after LOG_DEBUG,
  /// `enabled` true, `config` as before. When only the state byte cannot be read: false after
  /// LOG_ERR, `enabled` and the other fields written all the same.
  bool GetIpPassthrough(bool& enabled, mox::wwan::MobileapManager::IpPassthroughConfig& config);

  // Indications (indication.cpp).

  /// The callback that every client gets; the client's library calls it on a thread of its own.
  /// `bytes` is the encoded indication of `length` bytes, `user_data` is not used. Logs each
  /// indication (LOG_DEBUG) and hands the events of data calls to the subscribers. Drops what it
  /// cannot use: a status that cannot be decoded and the answer to another client (LOG_ERR each);
  /// silent, after its first line, a data call that cannot be decoded, one for which there is no
  /// memory, and one that comes before the instance. Lets a subscriber's exception through, with
  /// the mutex released; later subscribers then miss the event.
  static void EvtCb(qmi_client_type client, uint32_t message_id, void* bytes, uint32_t length,
                    void* user_data);

 private:
  friend void Subscribe(QcmapWrapper& wrapper, void* subscriber,
                        std::function<void(mox::util::EventDic&)> callback);
  friend void Unsubscribe(QcmapWrapper& wrapper, void* subscriber);

  /// Called in the order of their keys.
  std::map<void*, std::function<void(mox::util::EventDic&)>> event_callbacks_;
  /// Guards `event_callbacks_`. Held while an event is delivered, all callbacks included.
  Mutex event_callbacks_mutex_;
  /// True from the first successful attempt on. This, `client_` and `profile_index_` are accessed
  /// by atomic builtins, without a lock.
  bool connected_;
  /// Held by GetWwanPolicies and GetNetworkConfig for their whole run, requests included.
  Mutex op_mutex_;
  /// No operation uses these three, nor `event_queue_`: they belong to the object's layout.
  Mutex aux_mutex_1_;
  Mutex aux_mutex_2_;
  Condition aux_cond_;
  /// Owned. Not null once connected, and during an attempt.
  QCMAP_Client* client_;
  /// The profile selected last.
  uint32_t profile_index_;
  EventQueue event_queue_;
};

#pragma GCC diagnostic pop

}  // namespace qcmap
}  // namespace qcom
}  // namespace vendor
}  // namespace mox
