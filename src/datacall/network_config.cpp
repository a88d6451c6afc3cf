/// Addresses of a profile's data call.
#include "mox/vendor/qcom/qcmap/qcmap_wrapper.h"

#include <arpa/inet.h>

#include <mutex>

#include <qcmap_client.h>

#include "core/dotted_quad.h"
#include "core/log.h"

namespace mox {
namespace vendor {
namespace qcom {
namespace qcmap {

namespace {

void FromVendorV4(const qcmap_nw_params_t& params, mox::wwan::DataManager::NetworkConfig& config) {
  config.ip_family = mox::util::IPFamily::IPV4;
  config.address_1 = ToDottedQuad(params.v4[0]);
  config.address_2 = ToDottedQuad(params.v4[1]);
  config.address_3 = ToDottedQuad(params.v4[2]);
}

/// A field whose address has no text keeps its old one.
void FromVendorV6(const qcmap_nw_params_t& params, mox::wwan::DataManager::NetworkConfig& config) {
  config.ip_family = mox::util::IPFamily::IPV6;
  char text[INET6_ADDRSTRLEN] = {};
  if (::inet_ntop(AF_INET6, params.v6[0], text, sizeof(text)) != nullptr) config.address_1 = text;
  if (::inet_ntop(AF_INET6, params.v6[1], text, sizeof(text)) != nullptr) config.address_2 = text;
  if (::inet_ntop(AF_INET6, params.v6[2], text, sizeof(text)) != nullptr) config.address_3 = text;
}

}  // namespace

mox::Result QcmapWrapper::GetNetworkConfig(uint32_t index, mox::util::IPFamily family,
                                           mox::wwan::DataManager::NetworkConfig& config) {
  const std::lock_guard<Mutex> lock(op_mutex_);
  config.ip_family = mox::util::IPFamily::NONE;
  if (!ConnectToQcmapIfNeeded() || !ChangeWwanProfile(index)) return mox::Result::FAILURE;

  const bool is_v6 = family == mox::util::IPFamily::IPV6;
  if (!is_v6 && family != mox::util::IPFamily::IPV4) return mox::Result::FAILURE;

  qcmap_nw_params_t params = {};
  qmi_error_type_v01 error = QMI_ERR_NONE_V01;
  if (!client_->GetNetworkConfiguration(
          is_v6 ? QCMAP_MSGR_IP_FAMILY_V6_V01 : QCMAP_MSGR_IP_FAMILY_V4_V01, &params, &error)) {
    SYSLOG(LOG_ERR, "QCMAP_Client::GetNetworkConfiguration error %d[0x%x]\n", error, error);
    return error == QMI_ERR_NO_NETWORK_FOUND_V01 ? mox::Result::NO_NETWORK : mox::Result::FAILURE;
  }
  if (is_v6) {
    FromVendorV6(params, config);
  } else {
    FromVendorV4(params, config);
  }
  return mox::Result::SUCCESS;
}

}  // namespace qcmap
}  // namespace qcom
}  // namespace vendor
}  // namespace mox
