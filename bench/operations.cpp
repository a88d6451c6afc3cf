/// Runs each operation of the library under callgrind, which writes a profile for each, and prints
/// what callgrind does not count. scripts/bench makes a table of both.
#include <mox/vendor/qcom/qcmap/subscription.h>
#include <pthread.h>
#include <qcmap_client.h>
#include <syslog.h>
#include <valgrind/callgrind.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <new>
#include <string>
#include <vector>

#include "fixed_client.h"

namespace {

long allocations = 0;

void* Count(void* memory) {
  ++allocations;
  return memory;
}

}  // namespace

extern "C" void* __libc_calloc(size_t count, size_t size);
extern "C" void* calloc(size_t count, size_t size) {
  return Count(__libc_calloc(count, size));
}
void* operator new(size_t size) {
  void* const memory = Count(std::malloc(size));
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}
void operator delete(void* memory) noexcept {
  std::free(memory);
}
void operator delete(void* memory, size_t) noexcept {
  std::free(memory);
}

namespace {

using namespace mox::vendor::qcom::qcmap;
using mox::util::IPFamily;
using mox::wwan::DataManager;
using mox::wwan::MobileapManager;
using mox::wwan::Tech;

using Operation = std::function<void()>;

/// Returns how much of a thread's stack the operation uses, the thread's own part included.
size_t DepthOf(const Operation& operation) {
  constexpr unsigned char kPaint = 0xa5;
  std::vector<unsigned char> stack(256 * 1024, kPaint);
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  pthread_attr_setstack(&attributes, stack.data(), stack.size());
  const auto run = [](void* argument) -> void* {
    (*static_cast<const Operation*>(argument))();
    return nullptr;
  };
  pthread_t thread;
  const int error = pthread_create(&thread, &attributes, run, const_cast<Operation*>(&operation));
  if (error != 0) std::exit(error);
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attributes);
  const auto used = [](unsigned char byte) { return byte != kPaint; };
  return static_cast<size_t>(stack.end() - std::find_if(stack.begin(), stack.end(), used));
}

/// Prints a line for `operation`: its name, the instructions and allocations to compare with (0
/// instructions if there is no such figure), then its own allocations and stack.
void Measure(const std::string& name, int reference_instructions, const Operation& operation,
             int reference_allocations = 0) {
  operation();  // the first run fills the caller's strings and vectors and the loader's tables
  const long before = allocations;
  CALLGRIND_ZERO_STATS;
  operation();
  CALLGRIND_DUMP_STATS_AT(name.c_str());
  const long own_allocations = allocations - before;
  const size_t empty = DepthOf([] {});
  const size_t stack = std::max(DepthOf(operation), empty) - empty;
  std::printf("%s\t%d\t%d\t%ld\t%zu\n", name.c_str(), reference_instructions, reference_allocations,
              own_allocations, stack);
}

/// Measures an operation that is granted, and then refused.
void MeasureBoth(const std::string& name, int granted, int refused, const Operation& operation) {
  Measure(name, granted, operation);
  refuses_requests = true;
  Measure(name + ", refused", refused, operation);
  refuses_requests = false;
}

}  // namespace

int main() {
  setlogmask(LOG_MASK(LOG_EMERG));
  QcmapWrapper& qcmap = *QcmapWrapper::GetInstance();
  bool flag = false;
  int number = 0;
  profile_handle_type_v01 handle = 0;
  DataManager::WwanPolicy policy;
  DataManager::ConnectStatus v4{}, v6{};
  DataManager::NetworkConfig addresses;
  QcmapWrapper::WWANStatics counters{};
  MobileapManager::VlanConfig vlan{3, 2, 0};
  MobileapManager::VlanConfig vlan_without_profile{3, 20, -1};
  MobileapManager::IpPassthroughConfig passthrough{MobileapManager::DeviceType::USB_HOST, "laptop",
                                                   0};
  std::vector<DataManager::WwanPolicy> policies;
  std::vector<MobileapManager::VlanConfig> vlans;
  std::vector<MobileapManager::VlanMapping> mappings;
  std::string gateway, netmask, start, end;
  const std::string given[] = {"192.168.1.1", "255.255.255.0", "192.168.1.2", "192.168.1.9"};

  Measure("GetInstance", 12, [] { QcmapWrapper::GetInstance(); });
  Measure("ConnectToQcmapIfNeeded, connected", 5, [&] { qcmap.ConnectToQcmapIfNeeded(); });
  Measure("ChangeWwanProfile, same", 17, [&] { qcmap.ChangeWwanProfile(0); });
  uint32_t other = 0;
  Measure("ChangeWwanProfile, other", 45, [&] { qcmap.ChangeWwanProfile(other ^= 1); });
  refuses_requests = true;
  Measure("ChangeWwanProfile, other, refused", 37, [&] { qcmap.ChangeWwanProfile(other ^ 1); });
  refuses_requests = false;
  Measure("ChangeWwanProfile, out of range", 46, [&] { qcmap.ChangeWwanProfile(50); });
  qcmap.ChangeWwanProfile(0);
  MeasureBoth("GetProfileHandle", 35, 38, [&] { qcmap.GetProfileHandle(0, handle); });

  MeasureBoth("SetWwanPolicy, index 0", 131, 142,
              [&] { qcmap.SetWwanPolicy(0, Tech::ANY, IPFamily::IPV4V6, 6, 8); });
  Measure("SetWwanPolicy, unchanged", 127,
          [&] { qcmap.SetWwanPolicy(0, Tech::ANY, IPFamily::IPV4V6, 5, 7); });
  qcmap.ChangeWwanProfile(1);
  Measure("SetWwanPolicy, two updates", 141,
          [&] { qcmap.SetWwanPolicy(1, Tech::ANY, IPFamily::IPV4V6, 6, 8); });
  qcmap.ChangeWwanProfile(0);
  MeasureBoth("CreateWwanPolicy", 52, 61,
              [&] { qcmap.CreateWwanPolicy(Tech::ANY, IPFamily::IPV4V6, 5, 7); });
  MeasureBoth("DeleteWwanPolicy", 20, 29, [&] { qcmap.DeleteWwanPolicy(0); });
  MeasureBoth("GetWwanPolicy", 43, 36, [&] { qcmap.GetWwanPolicy(0, policy); });
  Measure(
      "GetWwanPolicies, 50, new vector", 1685,
      [&] {
        std::vector<DataManager::WwanPolicy> fresh;
        qcmap.GetWwanPolicies(fresh);
      },
      1);
  Measure("GetWwanPolicies, 50, reused vector", 1663, [&] { qcmap.GetWwanPolicies(policies); });
  refuses_requests = true;
  Measure("GetWwanPolicies, refused", 51, [&] { qcmap.GetWwanPolicies(policies); });
  refuses_requests = false;

  MeasureBoth("SetAutoConnect", 23, 32, [&] { qcmap.SetAutoConnect(0, true); });
  MeasureBoth("GetAutoConnect", 23, 32, [&] { qcmap.GetAutoConnect(0, flag); });
  MeasureBoth("SetRoaming", 23, 32, [&] { qcmap.SetRoaming(0, true); });
  MeasureBoth("GetRoaming", 23, 32, [&] { qcmap.GetRoaming(0, flag); });
  MeasureBoth("EnableIpv4", 19, 28, [&] { qcmap.EnableIpv4(0); });
  MeasureBoth("DisableIpv4", 19, 28, [&] { qcmap.DisableIpv4(0); });
  MeasureBoth("EnableIpv6", 19, 28, [&] { qcmap.EnableIpv6(0); });
  MeasureBoth("DisableIpv6", 19, 28, [&] { qcmap.DisableIpv6(0); });
  MeasureBoth("GetIpv4State", 23, 32, [&] { qcmap.GetIpv4State(0, flag); });
  MeasureBoth("GetIpv6State", 23, 32, [&] { qcmap.GetIpv6State(0, flag); });

  MeasureBoth("GetWwanConnectStatus", 46, 40, [&] { qcmap.GetWwanConnectStatus(0, v4, v6); });
  MeasureBoth("ConnectBackhaul, request", 101, 104,
              [&] { qcmap.ConnectBackhaul(0, IPFamily::IPV4); });
  Measure("DisconnectBackhaul, disconnected", 77,
          [&] { qcmap.DisconnectBackhaul(0, IPFamily::IPV4); });
  call_is_up = true;
  Measure("ConnectBackhaul, connected", 74, [&] { qcmap.ConnectBackhaul(0, IPFamily::IPV4); });
  Measure("DisconnectBackhaul, request", 99, [&] { qcmap.DisconnectBackhaul(0, IPFamily::IPV4); });
  MeasureBoth("GetWWANStatistics", 42, 47,
              [&] { qcmap.GetWWANStatistics(0, IPFamily::IPV4, counters); });
  MeasureBoth("ResetWWANStatistics", 32, 41, [&] { qcmap.ResetWWANStatistics(0, IPFamily::IPV4); });
  MeasureBoth("GetNetworkConfig, IPv4", 366, 66,
              [&] { qcmap.GetNetworkConfig(0, IPFamily::IPV4, addresses); });
  MeasureBoth("GetNetworkConfig, IPv6", 140, 66,
              [&] { qcmap.GetNetworkConfig(0, IPFamily::IPV6, addresses); });

  MeasureBoth("GetLanConfig", 555, 48,
              [&] { qcmap.GetLanConfig(gateway, netmask, flag, start, end, number); });
  MeasureBoth("SetLanConfig, range given", 483, 503,
              [&] { qcmap.SetLanConfig(given[0], given[1], true, given[2], given[3], 60); });
  Measure("SetLanConfig, range derived", 296,
          [&] { qcmap.SetLanConfig(given[0], given[1], true, "", "", 60); });
  Measure("SetLanConfig, DHCP off", 197,
          [&] { qcmap.SetLanConfig(given[0], given[1], false, "", "", 60); });
  MeasureBoth("ActivateLan", 16, 26, [&] { qcmap.ActivateLan(); });

  MeasureBoth("SetVlanConfig", 40, 50, [&] { qcmap.SetVlanConfig(vlan); });
  MeasureBoth("DeleteVlanConfig", 38, 48, [&] { qcmap.DeleteVlanConfig(vlan); });
  MeasureBoth("GetVlanConfigs, 50, reused vector", 1204, 47, [&] {
    vlans.clear();
    qcmap.GetVlanConfigs(vlans);
  });
  MeasureBoth("SetPdnToVlanMapping", 44, 38, [&] { qcmap.SetPdnToVlanMapping(vlan); });
  MeasureBoth("DeletePdnToVlanMapping, by index", 50, 44,
              [&] { qcmap.DeletePdnToVlanMapping(vlan); });
  MeasureBoth("DeletePdnToVlanMapping, by VLAN", 492, 502,
              [&] { qcmap.DeletePdnToVlanMapping(vlan_without_profile); });
  mapping_entries = 20;
  MeasureBoth("GetPdnToVlanMapping, 20, reused vector", 2844, 98, [&] {
    mappings.clear();
    qcmap.GetPdnToVlanMapping(mappings);
  });

  Measure("SetIpPassthrough, off", 54, [&] { qcmap.SetIpPassthrough(false, passthrough); });
  MeasureBoth("SetIpPassthrough, on", 125, 135, [&] { qcmap.SetIpPassthrough(true, passthrough); });
  MeasureBoth("GetIpPassthrough", 84, 59, [&] { qcmap.GetIpPassthrough(flag, passthrough); });

  const auto indicate = [](uint32_t id) { QcmapWrapper::EvtCb(nullptr, id, nullptr, 0, nullptr); };
  Measure(
      "EvtCb 0x22, no subscriber", 257, [&] { indicate(0x22); }, 1);
  int keys[4];
  for (int& key : keys) Subscribe(qcmap, &key, [](mox::util::EventDic&) {});
  Measure(
      "EvtCb 0x22, 4 subscribers", 301, [&] { indicate(0x22); }, 1);
  indication_handle = 8;
  Measure(
      "EvtCb 0x22, mismatch", 92, [&] { indicate(0x22); }, 1);
  Measure("EvtCb 0x29", 66, [&] { indicate(0x29); });
  refuses_decoding = true;
  Measure("EvtCb 0x29, refused", 62, [&] { indicate(0x29); });
  refuses_decoding = false;
  Measure("EvtCb 0x5E", 69, [&] { indicate(0x5e); });
  Measure("EvtCb, unknown", 40, [&] { indicate(0x77); });

  // Each list from empty to full.
  for (const unsigned int entries : {0u, 1u, 25u, 50u}) {
    policy_entries = entries;
    Measure("GetWwanPolicies, " + std::to_string(entries), 0,
            [&] { qcmap.GetWwanPolicies(policies); });
  }
  for (const unsigned int entries : {0u, 1u, 25u, 50u}) {
    mapping_entries = entries;
    Measure("GetPdnToVlanMapping, " + std::to_string(entries), 0, [&] {
      mappings.clear();
      qcmap.GetPdnToVlanMapping(mappings);
    });
  }
  for (const unsigned int entries : {0u, 1u, 1000u, 2000u}) {
    vlan_entries = entries;
    Measure("GetVlanConfigs, " + std::to_string(entries), 0, [&] {
      vlans.clear();
      qcmap.GetVlanConfigs(vlans);
    });
  }
}
