/// The server's policy list, as the selection of a profile and the readout of policies see it.
#pragma once

#include <algorithm>
#include <cstdint>

#include <qcmap_client.h>

namespace mox {
namespace vendor {
namespace qcom {
namespace qcmap {

constexpr uint32_t kMaxPolicies = QCMAP_MSGR_MAX_WWAN_POLICY_V01;

/// The count that the server gave; 0 when its response carries no list. May exceed the capacity.
[[nodiscard]] inline uint32_t ReportedCount(const qcmap_msgr_wwan_policy_list_resp_msg_v01& list) {
  return list.policy_list_valid != 0 ? list.policy_list_len : 0;
}

/// The number of entries that may be read.
[[nodiscard]] inline uint32_t ReadableCount(const qcmap_msgr_wwan_policy_list_resp_msg_v01& list) {
  return std::min(ReportedCount(list), kMaxPolicies);
}

}  // namespace qcmap
}  // namespace qcom
}  // namespace vendor
}  // namespace mox
