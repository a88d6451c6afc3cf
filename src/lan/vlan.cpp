/// The VLANs of the tethering interfaces.
#include "mox/vendor/qcom/qcmap/qcmap_wrapper.h"

#include <algorithm>
#include <cstring>

#include <qcmap_client.h>

#include "core/first_step.h"
#include "core/log.h"

namespace mox::vendor::qcom::qcmap {

namespace {

constexpr int kMinVlanId = 2;
constexpr int kMaxVlanId = 4094;

constexpr int32_t kUnknownMode = 0;

/// The name of the mode's interface; null if it has none.
const char* ToVendor(int32_t tethering_mode) {
  switch (tethering_mode) {
    case 1:
      return "rndis0";
    case 2:
      return "ecm0";
    case 3:
      return "eth0";
    default:
      return nullptr;
  }
}

/// Whether the interface has that name. What follows the terminator in the record does not matter.
template <size_t kSize>
bool IsNamed(const qcmap_msgr_vlan_config_v01& record, const char (&name)[kSize]) {
  static_assert(kSize <= sizeof(record.iface_name), "");
  return std::memcmp(record.iface_name, name, kSize) == 0;
}

mox::wwan::MobileapManager::VlanConfig FromVendor(const qcmap_msgr_vlan_config_v01& record) {
  mox::wwan::MobileapManager::VlanConfig vlan;  // no profile
  vlan.tethering_mode = IsNamed(record, "rndis0") ? 1
                        : IsNamed(record, "ecm0") ? 2
                        : IsNamed(record, "eth0") ? 3
                                                  : kUnknownMode;
  vlan.vlan_id = record.vlan_id;
  return vlan;
}

bool IsUsable(int32_t vlan_id) {
  return vlan_id >= kMinVlanId && vlan_id <= kMaxVlanId;
}

}  // namespace

bool QcmapWrapper::SetVlanConfig(mox::wwan::MobileapManager::VlanConfig& vlan) {
  if (!Connect()) return false;

  qcmap_msgr_vlan_config_v01 record = {};
  if (!IsUsable(vlan.vlan_id)) {
    SYSLOG(LOG_ERR, "Invalid vlan id [%d] remind vlan 0,1 and 4095 are reserved\n", vlan.vlan_id);
    return false;
  }
  record.vlan_id = static_cast<int16_t>(vlan.vlan_id);
  const char* const interface = ToVendor(vlan.tethering_mode);
  if (interface == nullptr) {
    SYSLOG(LOG_ERR, "Cannot support tethering mode %d\n", vlan.tethering_mode);
    return false;
  }
  std::strncpy(record.iface_name, interface, sizeof(record.iface_name) - 1);

  qmi_error_type_v01 error = QMI_ERR_NONE_V01;
  bool unused_flag = false;
  if (!client_->SetVLANConfig(record, &error, &unused_flag)) {
    SYSLOG(LOG_ERR, "QCMAP_Client::SetVLANConfig error %d[0x%x]\n", error, error);
    return false;
  }
  return true;
}

bool QcmapWrapper::DeleteVlanConfig(mox::wwan::MobileapManager::VlanConfig& vlan) {
  if (!Connect()) return false;

  qcmap_msgr_vlan_config_v01 record = {};
  if (!IsUsable(vlan.vlan_id)) {
    SYSLOG(LOG_ERR, "Invalid vlan id [%d], please remind vlan 0,1 and 4095 are reserved\n",
           vlan.vlan_id);
    return false;
  }
  record.vlan_id = static_cast<int16_t>(vlan.vlan_id);
  const char* const interface = ToVendor(vlan.tethering_mode);
  if (interface == nullptr) {
    SYSLOG(LOG_ERR, "Cannot support tethering mode %d\n", vlan.tethering_mode);
    return false;
  }
  std::strncpy(record.iface_name, interface, sizeof(record.iface_name) - 1);

  qmi_error_type_v01 error = QMI_ERR_NONE_V01;
  if (!client_->DeleteVLANConfig(record, &error)) {
    SYSLOG(LOG_ERR, "QCMAP_Client::DeleteVLANConfig error %d[0x%x]\n", error, error);
    return false;
  }
  return true;
}

bool QcmapWrapper::GetVlanConfigs(std::vector<mox::wwan::MobileapManager::VlanConfig>& vlans) {
  if (!Connect()) return false;

  qcmap_msgr_vlan_conf_t list = {};
  qmi_error_type_v01 error = QMI_ERR_NONE_V01;
  if (!client_->GetVLANConfig(&list, &error)) {
    SYSLOG(LOG_ERR, "QCMAP_Client::GetVLANConfig error %d[0x%x]\n", error, error);
    return error == QMI_ERR_NONE_V01;
  }
  const size_t count = std::min<size_t>(list.vlan_config_len, QCMAP_MSGR_MAX_VLAN_ENTRIES_V01);
  vlans.reserve(vlans.size() + count);
  for (size_t i = 0; i < count; ++i) vlans.push_back(FromVendor(list.vlan_config[i]));
  return true;
}

}  // namespace mox::vendor::qcom::qcmap
