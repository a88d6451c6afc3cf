/// The public records' layout, which other programs are compiled against.
#include <mox/vendor/qcom/qcmap/subscription.h>

#include <cstddef>

using Counters = mox::vendor::qcom::qcmap::QcmapWrapper::WWANStatics;
using Policy = mox::wwan::DataManager::WwanPolicy;
using Addresses = mox::wwan::DataManager::NetworkConfig;
using Vlan = mox::wwan::MobileapManager::VlanConfig;
using Mapping = mox::wwan::MobileapManager::VlanMapping;
using Host = mox::wwan::MobileapManager::IpPassthroughConfig;

static_assert(sizeof(Policy) == 20 && offsetof(Policy, profile_v6) == 4, "");
static_assert(offsetof(Policy, tech) == 8 && offsetof(Policy, ip_family) == 12, "");
static_assert(offsetof(Policy, profile_handle) == 16, "");
static_assert(sizeof(Counters) == 24 && offsetof(Counters, counter64_2) == 8, "");
static_assert(offsetof(Counters, counter32_1) == 16 && offsetof(Counters, counter32_2) == 20, "");
static_assert(sizeof(Vlan) == 12 && offsetof(Vlan, vlan_id) == 4, "");
static_assert(offsetof(Vlan, profile_index) == 8, "");
static_assert(sizeof(Mapping) == 8 && offsetof(Mapping, profile_index) == 4, "");
static_assert(offsetof(Addresses, ip_family) < offsetof(Addresses, address_1), "");
static_assert(offsetof(Addresses, address_1) < offsetof(Addresses, address_2), "");
static_assert(offsetof(Addresses, address_2) < offsetof(Addresses, address_3), "");
static_assert(offsetof(Host, device_type) < offsetof(Host, host_device_name), "");
static_assert(offsetof(Host, host_device_name) < offsetof(Host, pt_state), "");
