/// The mapping of VLANs to data profiles (PDNs).
#include "mox/vendor/qcom/qcmap/qcmap_wrapper.h"

#include <algorithm>

#include <qcmap_client.h>

#include "core/first_step.h"
#include "core/log.h"
#include "core/policy_list.h"

namespace mox::vendor::qcom::qcmap {

namespace {

constexpr int32_t kMaxMappings = QCMAP_MSGR_MAX_MAPPINGS_V01;
constexpr int32_t kNoIndex = -1;

/// The index of the first policy with that handle, or kNoIndex.
int32_t IndexOf(profile_handle_type_v01 handle,
                const qcmap_msgr_wwan_policy_list_resp_msg_v01& list) {
  const auto* const begin = list.policy_list;
  const auto* const end = begin + ReadableSignedCount(list);
  const auto* const found = std::find_if(
      begin, end, [handle](const auto& entry) { return entry.profile_handle == handle; });
  return found != end ? static_cast<int32_t>(found - begin) : kNoIndex;
}

struct MappingList {
  qcmap_msgr_pdn_to_vlan_mapping_v01 entries[kMaxMappings] = {};
  int count = 0;

  [[nodiscard]] int ReadableCount() const { return std::clamp(count, 0, kMaxMappings); }
};

/// The profile of the VLAN's first mapping to a policy that exists, or kNoIndex.
int32_t IndexOfVlan(int32_t vlan_id, const MappingList& mappings,
                    const qcmap_msgr_wwan_policy_list_resp_msg_v01& list) {
  for (int i = 0; i < mappings.ReadableCount(); ++i) {
    const auto& mapping = mappings.entries[i];
    if (mapping.vlan_id != vlan_id) continue;
    const int32_t index = IndexOf(mapping.profile_handle, list);
    if (index != kNoIndex) return index;
  }
  return kNoIndex;
}

}  // namespace

bool QcmapWrapper::SetPdnToVlanMapping(mox::wwan::MobileapManager::VlanConfig& vlan) {
  if (!Connect()) return false;
  if (vlan.profile_index < 0) return false;

  qcmap_msgr_wwan_policy_list_resp_msg_v01 list = {};
  qmi_error_type_v01 error = QMI_ERR_NONE_V01;
  if (!client_->GetWWANPolicyList(&list, &error)) {
    SYSLOG(LOG_ERR, "QCMAP_Client::GetWWANPolicyList error %d[0x%x]\n", error, error);
    return false;
  }
  if (vlan.profile_index >= ReadableSignedCount(list)) return false;

  if (!client_->AddPDNToVLANMapping(static_cast<int16_t>(vlan.vlan_id),
                                    list.policy_list[vlan.profile_index].profile_handle, &error)) {
    SYSLOG(LOG_ERR, "QCMAP_Client::SetPDNtoVLANMapping error %d[0x%x]\n", error, error);
    return false;
  }
  return true;
}

bool QcmapWrapper::DeletePdnToVlanMapping(mox::wwan::MobileapManager::VlanConfig& vlan) {
  if (!Connect()) return false;

  qmi_error_type_v01 error = QMI_ERR_NONE_V01;
  int32_t index = vlan.profile_index;
  if (index < 0) {
    MappingList mappings;
    if (!client_->GetPDNtoVLANMappings(mappings.entries, &mappings.count, &error)) {
      SYSLOG(LOG_ERR, "QCMAP_Client::GetPDNtoVLANMappings error %d[0x%x]\n", error, error);
      return false;
    }
    qcmap_msgr_wwan_policy_list_resp_msg_v01 present = {};
    if (!client_->GetWWANPolicyList(&present, &error)) {
      SYSLOG(LOG_ERR, "QCMAP_Client::GetWWANPolicyList error %d[0x%x]\n", error, error);
      return false;
    }
    index = IndexOfVlan(vlan.vlan_id, mappings, present);
    if (index == kNoIndex) return false;
  }

  // Read again even if the profile was just looked up, so that the latest list counts.
  qcmap_msgr_wwan_policy_list_resp_msg_v01 list = {};
  if (!client_->GetWWANPolicyList(&list, &error)) {
    SYSLOG(LOG_ERR, "QCMAP_Client::GetWWANPolicyList error %d[0x%x]\n", error, error);
    return false;
  }
  if (index >= ReadableSignedCount(list)) return false;

  if (!client_->DeletePDNToVLANMapping(static_cast<int16_t>(vlan.vlan_id),
                                       list.policy_list[index].profile_handle, &error)) {
    SYSLOG(LOG_ERR, "QCMAP_Client::DeletePDNToVLANMapping error %d[0x%x]\n", error, error);
    return false;
  }
  return true;
}

bool QcmapWrapper::GetPdnToVlanMapping(
    std::vector<mox::wwan::MobileapManager::VlanMapping>& mappings) {
  if (!Connect()) return false;

  MappingList reported;
  qmi_error_type_v01 error = QMI_ERR_NONE_V01;
  if (!client_->GetPDNtoVLANMappings(reported.entries, &reported.count, &error)) {
    SYSLOG(LOG_ERR, "QCMAP_Client::GetPDNtoVLANMappings error %d[0x%x]\n", error, error);
    return false;
  }
  qcmap_msgr_wwan_policy_list_resp_msg_v01 list = {};
  if (!client_->GetWWANPolicyList(&list, &error)) {
    SYSLOG(LOG_ERR, "QCMAP_Client::GetWWANPolicyList error %d[0x%x]\n", error, error);
    return false;
  }
  const int count = reported.ReadableCount();
  mappings.reserve(mappings.size() + static_cast<size_t>(count));
  for (int i = 0; i < count; ++i) {
    mox::wwan::MobileapManager::VlanMapping mapping;
    mapping.vlan_id = reported.entries[i].vlan_id;
    mapping.profile_index = IndexOf(reported.entries[i].profile_handle, list);
    mappings.push_back(mapping);
  }
  return true;
}

}  // namespace mox::vendor::qcom::qcmap
