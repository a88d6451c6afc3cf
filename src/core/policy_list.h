/// The server's policy list, as the selection of a profile and the readout of policies see it.
#pragma once

#include <algorithm>
#include <cstdint>

#include <qcmap_client.h>

namespace mox::vendor::qcom::qcmap {

constexpr uint32_t kMaxPolicies = QCMAP_MSGR_MAX_WWAN_POLICY_V01;

/// The count that the server gave; 0 when its response carries no list. May exceed the capacity.
[[nodiscard]] inline uint32_t ReportedCount(const qcmap_msgr_wwan_policy_list_resp_msg_v01& list) {
  return list.policy_list_valid != 0 ? list.policy_list_len : 0;
}

/// The number of entries that may be read.
[[nodiscard]] inline uint32_t ReadableCount(const qcmap_msgr_wwan_policy_list_resp_msg_v01& list) {
  return std::min(ReportedCount(list), kMaxPolicies);
}

/// The same for mappings, which go by the count alone: the list need not be marked as present, and
/// a count that is negative as a signed number means none.
[[nodiscard]] inline int32_t ReadableSignedCount(
    const qcmap_msgr_wwan_policy_list_resp_msg_v01& list) {
  const auto count = static_cast<int32_t>(list.policy_list_len);
  return std::clamp(count, 0, static_cast<int32_t>(kMaxPolicies));
}

}  // namespace mox::vendor::qcom::qcmap
