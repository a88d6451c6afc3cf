/// A program that is linked with the libraries of qcmapctl and does nothing. With any argument, it
/// makes the requests of `qcmapctl status` and prints nothing.
#include <mox/vendor/qcom/qcmap/qcmap_wrapper.h>

#include <string>
#include <vector>

int main(int argc, char**) {
  using namespace mox::wwan;
  if (argc == 1) return 0;
  auto& qcmap = *mox::vendor::qcom::qcmap::QcmapWrapper::GetInstance();
  std::vector<DataManager::WwanPolicy> policies;
  std::vector<MobileapManager::VlanConfig> vlans;
  std::vector<MobileapManager::VlanMapping> mappings;
  MobileapManager::IpPassthroughConfig passthrough;
  DataManager::ConnectStatus v4{}, v6{};
  std::string gateway, netmask, start, end;
  bool flag = false;
  int lease = 0;
  bool granted = qcmap.GetWwanPolicies(policies);
  for (uint32_t index = 0; index < policies.size(); ++index)
    granted = qcmap.GetWwanConnectStatus(index, v4, v6) && granted;
  granted = qcmap.GetLanConfig(gateway, netmask, flag, start, end, lease) && granted;
  granted = qcmap.GetVlanConfigs(vlans) && granted;
  granted = qcmap.GetPdnToVlanMapping(mappings) && granted;
  granted = qcmap.GetIpPassthrough(flag, passthrough) && granted;
  return granted ? 0 : 1;
}
