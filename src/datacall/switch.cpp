/// The on/off settings of each data profile.
#include "mox/vendor/qcom/qcmap/qcmap_wrapper.h"

#include <qcmap_client.h>

#include "core/first_step.h"
#include "core/log.h"

namespace mox::vendor::qcom::qcmap {

// The log texts differ in small ways. Engineers search for them as they are, so none is built from
// a pattern.

// The reading operations pass the caller's own flag to the client, which writes 0 or 1 into it.
static_assert(sizeof(bool) == sizeof(unsigned char), "");

bool QcmapWrapper::SetAutoConnect(uint32_t index, bool enable) {
  if (!Select(index)) return false;

  qmi_error_type_v01 error = QMI_ERR_NONE_V01;
  if (!client_->SetAutoconnect(enable ? 1 : 0, &error)) {
    SYSLOG(LOG_ERR, "QCMAP_Client::SetAutoConnect error %d[0x%x]\n", error, error);
    return false;
  }
  return true;
}

bool QcmapWrapper::GetAutoConnect(uint32_t index, bool& enabled) {
  if (!Select(index)) return false;

  qmi_error_type_v01 error = QMI_ERR_NONE_V01;
  if (!client_->GetAutoconnect(reinterpret_cast<unsigned char*>(&enabled), &error)) {
    SYSLOG(LOG_ERR, "QCMAP_Client::GetAutoConnect error %d[0x%x]\n", error, error);
    return false;
  }
  return true;
}

bool QcmapWrapper::SetRoaming(uint32_t index, bool enable) {
  if (!Select(index)) return false;

  qmi_error_type_v01 error = QMI_ERR_NONE_V01;
  if (!client_->SetRoaming(enable ? 1 : 0, &error)) {
    SYSLOG(LOG_ERR, "QCMAP_Client::SetRoaming error %d[0x%x]\n", error, error);
    return false;
  }
  return true;
}

bool QcmapWrapper::GetRoaming(uint32_t index, bool& enabled) {
  if (!Select(index)) return false;

  qmi_error_type_v01 error = QMI_ERR_NONE_V01;
  if (!client_->GetRoaming(reinterpret_cast<unsigned char*>(&enabled), &error)) {
    SYSLOG(LOG_ERR, "QCMAP_ClientGetRoaming error %d[0x%x]\n", error, error);
    return false;
  }
  return true;
}

bool QcmapWrapper::EnableIpv4(uint32_t index) {
  if (!Select(index)) return false;

  qmi_error_type_v01 error = QMI_ERR_NONE_V01;
  if (!client_->EnableIPV4(&error)) {
    SYSLOG(LOG_ERR, "QCMAP_Client::EnableIPV4 error %d[0x%x]\n", error, error);
    return false;
  }
  return true;
}

bool QcmapWrapper::DisableIpv4(uint32_t index) {
  if (!Select(index)) return false;

  qmi_error_type_v01 error = QMI_ERR_NONE_V01;
  if (!client_->DisableIPV4(&error)) {
    SYSLOG(LOG_ERR, "QCMAP_Client::DisableIPV4 error %d[0x%x]\n", error, error);
    return false;
  }
  return true;
}

bool QcmapWrapper::EnableIpv6(uint32_t index) {
  if (!Select(index)) return false;

  qmi_error_type_v01 error = QMI_ERR_NONE_V01;
  if (!client_->EnableIPV6(&error)) {
    SYSLOG(LOG_ERR, "QCMAP_Client::EnableIPV6 error %d[0x%x]\n", error, error);
    return false;
  }
  return true;
}

bool QcmapWrapper::DisableIpv6(uint32_t index) {
  if (!Select(index)) return false;

  qmi_error_type_v01 error = QMI_ERR_NONE_V01;
  if (!client_->DisableIPV6(&error)) {
    SYSLOG(LOG_ERR, "QCMAP_Client::DisableIPV6 error %d[0x%x]\n", error, error);
    return false;
  }
  return true;
}

bool QcmapWrapper::GetIpv4State(uint32_t index, bool& enabled) {
  if (!Select(index)) return false;

  qmi_error_type_v01 error = QMI_ERR_NONE_V01;
  if (!client_->GetIPv4State(reinterpret_cast<unsigned char*>(&enabled), &error)) {
    SYSLOG(LOG_ERR, "QCMAP_Client::GetIPv4State  error %d[0x%x]\n", error, error);
    return false;
  }
  return true;
}

bool QcmapWrapper::GetIpv6State(uint32_t index, bool& enabled) {
  if (!Select(index)) return false;

  qmi_error_type_v01 error = QMI_ERR_NONE_V01;
  if (!client_->GetIPv6State(reinterpret_cast<unsigned char*>(&enabled), &error)) {
    SYSLOG(LOG_ERR, "QCMAP_Client::GetIPv6State  error %d[0x%x]\n", error, error);
    return false;
  }
  return true;
}

}  // namespace mox::vendor::qcom::qcmap
