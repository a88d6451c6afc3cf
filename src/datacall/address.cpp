/// The addresses of a profile's data call.
#include "mox/vendor/qcom/qcmap/qcmap_wrapper.h"

#include <arpa/inet.h>

#include <mutex>
#include <optional>

#include <qcmap_client.h>

#include "core/dotted_quad.h"
#include "core/first_step.h"
#include "core/log.h"

namespace mox::vendor::qcom::qcmap {

namespace {

using mox::util::IPFamily;

/// Empty for NONE and IPV4V6: addresses are read one family at a time.
std::optional<qcmap_msgr_ip_family_enum_v01> ToVendor(IPFamily family) {
  if (family == IPFamily::IPV4) return QCMAP_MSGR_IP_FAMILY_V4_V01;
  if (family == IPFamily::IPV6) return QCMAP_MSGR_IP_FAMILY_V6_V01;
  return std::nullopt;
}

void FromVendorV4(const qcmap_nw_params_t& params, mox::wwan::DataManager::NetworkConfig& config) {
  config.ip_family = IPFamily::IPV4;
  config.address_1 = ToDottedQuad(params.v4[0]).text;
  config.address_2 = ToDottedQuad(params.v4[1]).text;
  config.address_3 = ToDottedQuad(params.v4[2]).text;
}

/// An address that cannot be converted leaves its text unchanged.
void FromVendorV6(const qcmap_nw_params_t& params, mox::wwan::DataManager::NetworkConfig& config) {
  config.ip_family = IPFamily::IPV6;
  char text[INET6_ADDRSTRLEN] = {};
  if (::inet_ntop(AF_INET6, params.v6[0], text, sizeof(text)) != nullptr) config.address_1 = text;
  if (::inet_ntop(AF_INET6, params.v6[1], text, sizeof(text)) != nullptr) config.address_2 = text;
  if (::inet_ntop(AF_INET6, params.v6[2], text, sizeof(text)) != nullptr) config.address_3 = text;
}

}  // namespace

mox::Result QcmapWrapper::GetNetworkConfig(uint32_t index, mox::util::IPFamily family,
                                           mox::wwan::DataManager::NetworkConfig& config) {
  const std::lock_guard<Mutex> lock(op_mutex_);
  config.ip_family = IPFamily::NONE;
  if (!Select(index)) return mox::Result::FAILURE;

  const auto vendor_family = ToVendor(family);
  if (!vendor_family) return mox::Result::FAILURE;

  // Parentheses clear the whole union; braces would clear its first member only.
  auto params = qcmap_nw_params_t();
  qmi_error_type_v01 error = QMI_ERR_NONE_V01;
  if (!client_->GetNetworkConfiguration(*vendor_family, &params, &error)) {
    SYSLOG(LOG_ERR, "QCMAP_Client::GetNetworkConfiguration error %d[0x%x]\n", error, error);
    return error == QMI_ERR_NO_NETWORK_FOUND_V01 ? mox::Result::NO_NETWORK : mox::Result::FAILURE;
  }
  if (family == IPFamily::IPV4) {
    FromVendorV4(params, config);
  } else {
    FromVendorV6(params, config);
  }
  return mox::Result::SUCCESS;
}

}  // namespace mox::vendor::qcom::qcmap
