/// Selecting the data profile that requests act on.
#include "mox/vendor/qcom/qcmap/qcmap_wrapper.h"

#include <qcmap_client.h>

#include "core/first_step.h"
#include "core/log.h"
#include "core/policy_list.h"
#include "core/unlocked.h"

namespace mox::vendor::qcom::qcmap {

bool QcmapWrapper::ChangeWwanProfile(uint32_t index) {
  if (!Connect()) return false;
  if (index == Load(profile_index_)) return true;

  qcmap_msgr_wwan_policy_list_resp_msg_v01 list = {};
  qmi_error_type_v01 error = QMI_ERR_NONE_V01;
  if (!client_->GetWWANPolicyList(&list, &error)) {
    SYSLOG(LOG_ERR, "QCMAP_Client::GetWWANPolicyList error %d[0x%x]\n", error, error);
    return false;
  }
  if (index >= ReadableCount(list)) {
    SYSLOG(LOG_ERR, "Index should be less than %u or %d index %u\n", ReportedCount(list),
           static_cast<int>(kMaxPolicies), index);
    return false;
  }

  if (!client_->SetWWANProfileHandlePreference(list.policy_list[index].profile_handle, &error)) {
    SYSLOG(LOG_ERR, "QCMAP_Client::SetWWANProfileHandlePreference error %d[0x%x]\n", error, error);
    return false;
  }
  Store(profile_index_, index);
  return true;
}

bool QcmapWrapper::GetProfileHandle(uint32_t index, profile_handle_type_v01& handle) {
  if (!Select(index)) return false;

  qcmap_msgr_wwan_policy_list_resp_msg_v01 list = {};
  qmi_error_type_v01 error = QMI_ERR_NONE_V01;
  if (!client_->GetWWANPolicyList(&list, &error)) {
    SYSLOG(LOG_ERR, "QCMAP_Client::GetWWANPolicyList error %d[0x%x]\n", error, error);
    return false;
  }
  // The list may have got shorter since the index was selected.
  if (index >= ReadableCount(list)) return false;
  handle = list.policy_list[index].profile_handle;
  return true;
}

}  // namespace mox::vendor::qcom::qcmap
