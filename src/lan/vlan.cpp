/// The VLANs of the tethering interfaces.
#include "mox/vendor/qcom/qcmap/qcmap_wrapper.h"

#include <algorithm>
#include <cstring>

#include <qcmap_client.h>

#include "core/log.h"

namespace mox::vendor::qcom::qcmap {

namespace {

constexpr int kMinVlanId = 2;
constexpr int kMaxVlanId = 4094;

struct TetheringInterface {
  int32_t mode;
  char name[sizeof(qcmap_msgr_vlan_config_v01::iface_name)];
};

constexpr TetheringInterface kTetheringInterfaces[] = {{1, "rndis0"}, {2, "ecm0"}, {3, "eth0"}};

/// Writes the interface's name into `record`. Returns false if the mode has no interface.
[[nodiscard]] bool ToVendor(int32_t tethering_mode, qcmap_msgr_vlan_config_v01& record) {
  for (const auto& interface : kTetheringInterfaces) {
    if (interface.mode != tethering_mode) continue;
    std::memcpy(record.iface_name, interface.name, sizeof(record.iface_name));
    return true;
  }
  return false;
}

mox::wwan::MobileapManager::VlanConfig FromVendor(const qcmap_msgr_vlan_config_v01& record) {
  mox::wwan::MobileapManager::VlanConfig vlan;  // defaults: unknown interface, no profile
  for (const auto& interface : kTetheringInterfaces) {
    if (std::strncmp(record.iface_name, interface.name, sizeof(record.iface_name)) == 0) {
      vlan.tethering_mode = interface.mode;
    }
  }
  vlan.vlan_id = record.vlan_id;
  return vlan;
}

bool IsUsable(int32_t vlan_id) {
  return vlan_id >= kMinVlanId && vlan_id <= kMaxVlanId;
}

}  // namespace

bool QcmapWrapper::SetVlanConfig(mox::wwan::MobileapManager::VlanConfig& vlan) {
  if (!ConnectToQcmapIfNeeded()) return false;

  qcmap_msgr_vlan_config_v01 record = {};
  if (!IsUsable(vlan.vlan_id)) {
    SYSLOG(LOG_ERR, "Invalid vlan id [%d] remind vlan 0,1 and 4095 are reserved\n", vlan.vlan_id);
    return false;
  }
  record.vlan_id = static_cast<int16_t>(vlan.vlan_id);
  if (!ToVendor(vlan.tethering_mode, record)) {
    SYSLOG(LOG_ERR, "Cannot support tethering mode %d\n", vlan.tethering_mode);
    return false;
  }

  qmi_error_type_v01 error = QMI_ERR_NONE_V01;
  bool unused_flag = false;
  if (!client_->SetVLANConfig(record, &error, &unused_flag)) {
    SYSLOG(LOG_ERR, "QCMAP_Client::SetVLANConfig error %d[0x%x]\n", error, error);
    return false;
  }
  return true;
}

bool QcmapWrapper::DeleteVlanConfig(mox::wwan::MobileapManager::VlanConfig& vlan) {
  if (!ConnectToQcmapIfNeeded()) return false;

  qcmap_msgr_vlan_config_v01 record = {};
  if (!IsUsable(vlan.vlan_id)) {
    SYSLOG(LOG_ERR, "Invalid vlan id [%d], please remind vlan 0,1 and 4095 are reserved\n",
           vlan.vlan_id);
    return false;
  }
  record.vlan_id = static_cast<int16_t>(vlan.vlan_id);
  if (!ToVendor(vlan.tethering_mode, record)) {
    SYSLOG(LOG_ERR, "Cannot support tethering mode %d\n", vlan.tethering_mode);
    return false;
  }

  qmi_error_type_v01 error = QMI_ERR_NONE_V01;
  if (!client_->DeleteVLANConfig(record, &error)) {
    SYSLOG(LOG_ERR, "QCMAP_Client::DeleteVLANConfig error %d[0x%x]\n", error, error);
    return false;
  }
  return true;
}

bool QcmapWrapper::GetVlanConfigs(std::vector<mox::wwan::MobileapManager::VlanConfig>& vlans) {
  if (!ConnectToQcmapIfNeeded()) return false;

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
