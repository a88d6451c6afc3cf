/// The data call of a profile: reading its state, bringing it up, taking it down.
#include "mox/vendor/qcom/qcmap/qcmap_wrapper.h"

#include <unistd.h>

#include <optional>

#include <qcmap_client.h>

#include "core/first_step.h"
#include "core/log.h"

namespace mox::vendor::qcom::qcmap {

namespace {

using ConnectStatus = mox::wwan::DataManager::ConnectStatus;
using mox::util::IPFamily;

/// The server has separate codes for IPv4 and IPv6; both map to one state.
ConnectStatus FromVendor(qcmap_msgr_wwan_status_enum_v01 status) {
  switch (status) {
    case QCMAP_MSGR_WWAN_STATUS_CONNECTING_V01:
    case QCMAP_MSGR_WWAN_STATUS_IPV6_CONNECTING_V01:
      return ConnectStatus::CONNECTING;
    case QCMAP_MSGR_WWAN_STATUS_CONNECTED_V01:
    case QCMAP_MSGR_WWAN_STATUS_IPV6_CONNECTED_V01:
      return ConnectStatus::CONNECTED;
    case QCMAP_MSGR_WWAN_STATUS_DISCONNECTING_V01:
    case QCMAP_MSGR_WWAN_STATUS_IPV6_DISCONNECTING_V01:
      return ConnectStatus::DISCONNECTING;
    case QCMAP_MSGR_WWAN_STATUS_DISCONNECTED_V01:
    case QCMAP_MSGR_WWAN_STATUS_IPV6_DISCONNECTED_V01:
      return ConnectStatus::DISCONNECTED;
    default:
      return ConnectStatus::UNKNOWN;
  }
}

/// Empty for NONE and IPV4V6: calls are started and stopped one family at a time.
std::optional<qcmap_msgr_wwan_call_type_v01> ToVendor(IPFamily family) {
  if (family == IPFamily::IPV4) return QCMAP_MSGR_WWAN_CALL_TYPE_V4_V01;
  if (family == IPFamily::IPV6) return QCMAP_MSGR_WWAN_CALL_TYPE_V6_V01;
  return std::nullopt;
}

}  // namespace

bool QcmapWrapper::GetWwanConnectStatus(uint32_t index,
                                        mox::wwan::DataManager::ConnectStatus& v4_status,
                                        mox::wwan::DataManager::ConnectStatus& v6_status) {
  if (!Select(index)) return false;

  qcmap_msgr_wwan_status_enum_v01 v4_code = {};
  qcmap_msgr_wwan_status_enum_v01 v6_code = {};
  qmi_error_type_v01 error = QMI_ERR_NONE_V01;
  if (!client_->GetWWANStatus(&v4_code, &v6_code, &error)) {
    SYSLOG(LOG_ERR, "QCMAP_Client::GetWWANStatus error %d[0x%x]", error, error);
    return false;
  }
  v4_status = FromVendor(v4_code);
  v6_status = FromVendor(v6_code);
  return true;
}

mox::Result QcmapWrapper::ConnectBackhaul(uint32_t index, mox::util::IPFamily family) {
  // Checked here, because the result of reading the state is ignored.
  if (!Connect()) return mox::Result::FAILURE;

  // If the state cannot be read, it counts as down and the call is requested.
  auto v4_status = ConnectStatus::DISCONNECTED;
  auto v6_status = ConnectStatus::DISCONNECTED;
  GetWwanConnectStatus(index, v4_status, v6_status);
  if ((family == IPFamily::IPV4 && v4_status == ConnectStatus::CONNECTED) ||
      (family == IPFamily::IPV6 && v6_status == ConnectStatus::CONNECTED)) {
    return mox::Result::SUCCESS;
  }

  // Not redundant: reading the state selected the profile too, but whether that worked was ignored.
  // Without this, a refused selection would bring up the call of the profile selected before.
  if (!Select(index)) return mox::Result::FAILURE;
  const auto call_type = ToVendor(family);
  if (!call_type) {
    SYSLOG(LOG_ERR, "unsupporetd IPFamily [%d]\n", static_cast<int>(family));
    return mox::Result::FAILURE;
  }

  SYSLOG(LOG_DEBUG, "ip_family [%d] call_type [0x%x]\n", static_cast<int>(family), *call_type);
  qmi_error_type_v01 error = QMI_ERR_NONE_V01;
  if (!client_->ConnectBackHaul(*call_type, &error)) {
    SYSLOG(LOG_ERR, "QCMAP_Client::ConnectBackhaul error %d[0x%x]\n", error, error);
    return mox::Result::FAILURE;
  }
  return mox::Result::SUCCESS;
}

mox::Result QcmapWrapper::DisconnectBackhaul(uint32_t index, mox::util::IPFamily family) {
  if (!Select(index)) return mox::Result::FAILURE;

  // If the state cannot be read, it counts as down and nothing is requested.
  auto v4_status = ConnectStatus::DISCONNECTED;
  auto v6_status = ConnectStatus::DISCONNECTED;
  GetWwanConnectStatus(index, v4_status, v6_status);
  if ((family == IPFamily::IPV4 && v4_status == ConnectStatus::DISCONNECTED) ||
      (family == IPFamily::IPV6 && v6_status == ConnectStatus::DISCONNECTED)) {
    return mox::Result::FAILURE;
  }

  const auto call_type = ToVendor(family);
  if (!call_type) {
    SYSLOG(LOG_ERR, "unsupporetd IPFamily [%d]\n", static_cast<int>(family));
    return mox::Result::FAILURE;
  }

  SYSLOG(LOG_DEBUG, "DisconnectBackhaul call_type [%d] pid [%d]\n", *call_type, ::getpid());
  qmi_error_type_v01 error = QMI_ERR_NONE_V01;
  const bool granted = client_->DisconnectBackHaul(*call_type, &error);
  if (!granted) {
    SYSLOG(LOG_ERR, "QCMAP_Client::DisconnectBackhaul error %d[0x%x]\n", error, error);
  }
  // Some servers report this error even when they grant the request.
  if (error == QMI_ERR_INCOMPATIBLE_STATE_V01) return mox::Result::INCOMPATIBLE_STATE;
  return granted ? mox::Result::SUCCESS : mox::Result::FAILURE;
}

}  // namespace mox::vendor::qcom::qcmap
