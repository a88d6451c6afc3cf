/// IP passthrough, which hands the WWAN address through to one host.
#include "mox/vendor/qcom/qcmap/qcmap_wrapper.h"

#include <cstring>
#include <string_view>

#include <mox/util/network_manager.h>
#include <qcmap_client.h>

#include "core/first_step.h"
#include "core/log.h"

namespace mox::vendor::qcom::qcmap {

namespace {

constexpr int kMaxNameLength = 100;

using DeviceType = mox::wwan::MobileapManager::DeviceType;

/// A record for a USB host called `name`, which must fit. Only what precedes a zero byte is copied.
qcmap_msgr_ip_passthrough_config_v01 ToVendor(const std::string& name) {
  static_assert(kMaxNameLength < sizeof(qcmap_msgr_ip_passthrough_config_v01::device_name), "");
  qcmap_msgr_ip_passthrough_config_v01 record = {};
  record.device_type = QCMAP_MSGR_PASSTHROUGH_DEVICE_TYPE_USB_V01;
  std::memcpy(record.device_name, name.c_str(), std::strlen(name.c_str()));
  return record;
}

/// The name in `record`, whose field may lack a terminator.
std::string_view FromVendor(const qcmap_msgr_ip_passthrough_config_v01& record) {
  return {record.device_name, ::strnlen(record.device_name, sizeof(record.device_name))};
}

}  // namespace

bool QcmapWrapper::SetIpPassthrough(bool enable,
                                    mox::wwan::MobileapManager::IpPassthroughConfig& config) {
  if (!Connect()) return false;

  qcmap_msgr_ip_passthrough_config_v01 record = {};
  if (enable) {
    if (config.device_type != DeviceType::USB_HOST) return false;
    if (mox::util::NetworkManager::CheckIpv4MacValidation(config.host_device_name)) {
      SYSLOG(LOG_ERR, "USB host needs host name information instead of mac address");
      return false;
    }
    if (config.host_device_name.size() > kMaxNameLength) {
      SYSLOG(LOG_ERR, "host_device_name length should be equal or less than %d\n", kMaxNameLength);
      return false;
    }
    record = ToVendor(config.host_device_name);
  }

  const auto mode = enable ? QCMAP_MSGR_IP_PASSTHROUGH_MODE_ENABLE_V01
                           : QCMAP_MSGR_IP_PASSTHROUGH_MODE_DISABLE_V01;
  qmi_error_type_v01 error = QMI_ERR_NONE_V01;
  if (!client_->SetIPPassthroughConfig(mode, true, &record, &error)) {
    SYSLOG(LOG_ERR, "QCMAP_Client::SetIPPassthroughConfig error %d[0x%x]\n", error, error);
    return false;
  }
  return true;
}

bool QcmapWrapper::GetIpPassthrough(bool& enabled,
                                    mox::wwan::MobileapManager::IpPassthroughConfig& config) {
  if (!Connect()) return false;

  qcmap_msgr_ip_passthrough_mode_enum_v01 mode = QCMAP_MSGR_IP_PASSTHROUGH_MODE_DISABLE_V01;
  qcmap_msgr_ip_passthrough_config_v01 record = {};
  qmi_error_type_v01 error = QMI_ERR_NONE_V01;
  if (!client_->GetIPPassthroughConfig(&mode, &record, &error)) {
    SYSLOG(LOG_ERR, "QCMAP_Client::GetIPPassthroughConfig error %d[0x%x]\n", error, error);
    return false;
  }
  enabled = mode == QCMAP_MSGR_IP_PASSTHROUGH_MODE_ENABLE_V01;
  SYSLOG(LOG_DEBUG, "enabled %d pt_mode 0x%x\n", enabled, mode);

  if (record.device_type == QCMAP_MSGR_PASSTHROUGH_DEVICE_TYPE_USB_V01) {
    config.device_type = DeviceType::USB_HOST;
    config.host_device_name = FromVendor(record);
  } else if (enabled) {
    SYSLOG(LOG_DEBUG, "device_type [0x%x] is not supported : TODO supports other device types\n",
           record.device_type);
    return false;
  }

  if (!client_->GetIPPassthroughState(&config.pt_state, &error)) {
    SYSLOG(LOG_ERR, "QCMAP_Client::GetIPPassthroughState error %d[0x%x]\n", error, error);
    return false;
  }
  return true;
}

}  // namespace mox::vendor::qcom::qcmap
