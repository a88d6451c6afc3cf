/// The traffic counters of a profile's data call.
#include "mox/vendor/qcom/qcmap/qcmap_wrapper.h"

#include <optional>

#include <qcmap_client.h>

#include "core/first_step.h"
#include "core/log.h"

namespace mox::vendor::qcom::qcmap {

namespace {

using mox::util::IPFamily;

/// Empty for NONE, which has no counters.
std::optional<qcmap_msgr_ip_family_enum_v01> ToVendor(IPFamily family) {
  switch (family) {
    case IPFamily::IPV4:
      return QCMAP_MSGR_IP_FAMILY_V4_V01;
    case IPFamily::IPV6:
      return QCMAP_MSGR_IP_FAMILY_V6_V01;
    case IPFamily::IPV4V6:
      return QCMAP_MSGR_IP_FAMILY_V4V6_V01;
    case IPFamily::NONE:
      break;
  }
  return std::nullopt;
}

}  // namespace

mox::Result QcmapWrapper::GetWWANStatistics(uint32_t index, mox::util::IPFamily family,
                                            WWANStatics& statistics) {
  const auto vendor_family = ToVendor(family);
  if (!vendor_family) {
    SYSLOG(LOG_ERR, "QCMAP_Client::GetWWANStatistics invalid ip family %d",
           static_cast<int>(family));
    return mox::Result::INVALID_ARGUMENT;
  }
  if (!Select(index)) return mox::Result::FAILURE;

  qcmap_msgr_wwan_statistics_type_v01 record = {};
  qmi_error_type_v01 error = QMI_ERR_NONE_V01;
  if (!client_->GetWWANStatistics(*vendor_family, &record, &error)) {
    SYSLOG(LOG_ERR, "QCMAP_Client::GetWWANStatistics error %d", error);
    return mox::Result::FAILURE;
  }
  statistics.counter64_1 = record.bytes[0];
  statistics.counter64_2 = record.bytes[1];
  statistics.counter32_1 = record.packets[0];
  statistics.counter32_2 = record.packets[1];
  return mox::Result::SUCCESS;
}

mox::Result QcmapWrapper::ResetWWANStatistics(uint32_t index, mox::util::IPFamily family) {
  const auto vendor_family = ToVendor(family);
  if (!vendor_family) {
    SYSLOG(LOG_ERR, "QCMAP_Client::ResetWWANStatistics invalid ip family %d",
           static_cast<int>(family));
    return mox::Result::INVALID_ARGUMENT;
  }
  if (!Select(index)) return mox::Result::FAILURE;

  qmi_error_type_v01 error = QMI_ERR_NONE_V01;
  if (!client_->ResetWWANStatistics(*vendor_family, &error)) {
    SYSLOG(LOG_ERR, "QCMAP_Client::ResetWWANStatistics error %d", error);
    return mox::Result::FAILURE;
  }
  return mox::Result::SUCCESS;
}

}  // namespace mox::vendor::qcom::qcmap
