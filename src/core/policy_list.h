/// How many entries of the server's policy list there are, and may be read.
#pragma once

#include <algorithm>
#include <cstdint>

#include <qcmap_client.h>

namespace mox::vendor::qcom::qcmap {

constexpr uint32_t kMaxPolicies = QCMAP_MSGR_MAX_WWAN_POLICY_V01;

/// The server's count, which may exceed the capacity; 0 if its response carries no list.
[[nodiscard]] inline uint32_t ReportedCount(const qcmap_msgr_wwan_policy_list_resp_msg_v01& list) {
  return list.policy_list_valid != 0 ? list.policy_list_len : 0;
}

/// The number of entries that may be read: never more than the capacity.
[[nodiscard]] inline uint32_t ReadableCount(const qcmap_msgr_wwan_policy_list_resp_msg_v01& list) {
  return std::min(ReportedCount(list), kMaxPolicies);
}

/// The number of entries that VLAN mappings may read. Mappings ignore the list-present flag and
/// take the count as signed: a negative one means no entries.
[[nodiscard]] inline int32_t ReadableSignedCount(
    const qcmap_msgr_wwan_policy_list_resp_msg_v01& list) {
  const auto count = static_cast<int32_t>(list.policy_list_len);
  return std::clamp(count, 0, static_cast<int32_t>(kMaxPolicies));
}

}  // namespace mox::vendor::qcom::qcmap
