/// WWAN policies, which define the data profiles.
#include "mox/vendor/qcom/qcmap/qcmap_wrapper.h"

#include <mutex>

#include <qcmap_client.h>

#include "core/first_step.h"
#include "core/log.h"
#include "core/policy_list.h"

namespace mox::vendor::qcom::qcmap {

namespace {

using mox::util::IPFamily;
using mox::wwan::DataManager;
using mox::wwan::Tech;

constexpr int kMinProfile = 1;
constexpr int kMaxProfile = 24;
/// Stands for the handle of a policy that was read singly. The server does not report one.
constexpr profile_handle_type_v01 kNoHandle = UINT32_MAX;

uint64_t ToVendor(Tech tech) {
  switch (tech) {
    case Tech::TECH_3GPP2:
      return QCMAP_MSGR_TECH_PREF_3GPP2_V01;
    case Tech::TECH_3GPP:
      return QCMAP_MSGR_TECH_PREF_3GPP_V01;
    case Tech::ANY:
      break;
  }
  return 0;
}

qcmap_msgr_ip_family_enum_v01 ToVendor(IPFamily family) {
  switch (family) {
    case IPFamily::IPV6:
      return QCMAP_MSGR_IP_FAMILY_V6_V01;
    case IPFamily::IPV4V6:
      return QCMAP_MSGR_IP_FAMILY_V4V6_V01;
    case IPFamily::NONE:
    case IPFamily::IPV4:
      break;
  }
  return QCMAP_MSGR_IP_FAMILY_V4_V01;
}

qcmap_msgr_net_policy_info_v01 ToVendor(Tech tech, IPFamily family, uint8_t v4_number,
                                        uint8_t v6_number) {
  qcmap_msgr_net_policy_info_v01 record = {};
  record.tech_pref = ToVendor(tech);
  record.ip_family = ToVendor(family);
  record.v4_profile_id[0] = record.v4_profile_id[1] = v4_number;
  record.v6_profile_id[0] = record.v6_profile_id[1] = v6_number;
  return record;
}

DataManager::WwanPolicy FromVendor(const qcmap_msgr_net_policy_info_v01& record,
                                   profile_handle_type_v01 handle) {
  DataManager::WwanPolicy policy;
  policy.profile_v4 = record.v4_profile_id[1];
  policy.profile_v6 = record.v6_profile_id[1];
  policy.tech = QcmapWrapper::ConvertToTech(record.tech_pref);
  policy.ip_family = QcmapWrapper::ConvertToIPFamily(record.ip_family);
  policy.profile_handle = handle;
  return policy;
}

qcmap_msgr_update_profile_enum_v01 UpdateRequest(bool v4_differs, bool v6_differs) {
  if (v4_differs && v6_differs) return QCMAP_MSGR_UPDATE_PROFILE_V4V6_V01;
  if (v4_differs) return QCMAP_MSGR_UPDATE_PROFILE_V4_V01;
  if (v6_differs) return QCMAP_MSGR_UPDATE_PROFILE_V6_V01;
  return QCMAP_MSGR_UPDATE_PROFILE_NONE_V01;
}

}  // namespace

bool QcmapWrapper::SetWwanPolicy(uint32_t index, mox::wwan::Tech tech, mox::util::IPFamily family,
                                 int profile_1, int profile_2) {
  if (!Select(index)) return false;

  qcmap_msgr_net_policy_info_v01 record = {};
  qmi_error_type_v01 error = QMI_ERR_NONE_V01;
  if (!client_->GetWWANPolicy(&record, &error)) {
    SYSLOG(LOG_ERR, "QCMAP_Client::GetWWANPolicy error %d[0x%x]\n", error, error);
    return false;
  }
  int v4_number = record.v4_profile_id[1];
  int v6_number = record.v6_profile_id[1];
  SYSLOG(LOG_DEBUG, "profile_v4 %d profile_v6 %d profile_1 %d profile_2 %d\n", v4_number, v6_number,
         profile_1, profile_2);

  // Compared regardless of the family: even a profile_2 that will not be sent counts as a change.
  const auto update = UpdateRequest(profile_1 != v4_number, profile_2 != v6_number);

  if (family == IPFamily::IPV4 || family == IPFamily::IPV4V6) {
    v4_number = profile_1;
  }
  if (family == IPFamily::IPV6) v6_number = profile_1;
  if (family == IPFamily::IPV4V6) v6_number = profile_2;

  for (const int number : {v4_number, v6_number}) {
    if (number < kMinProfile || number > kMaxProfile) {
      SYSLOG(LOG_ERR, "profile [%d] should be between %d and %d\n", number, kMinProfile,
             kMaxProfile);
      return false;
    }
  }
  record = ToVendor(tech, family, static_cast<uint8_t>(v4_number), static_cast<uint8_t>(v6_number));

  SYSLOG(LOG_DEBUG, "index %u ip_family %d update_req %d\n", index, static_cast<int>(family),
         update);
  if (update == QCMAP_MSGR_UPDATE_PROFILE_NONE_V01) {
    SYSLOG(LOG_DEBUG, "\n");
    return true;
  }

  bool granted = false;
  if (index == 0) {
    granted = client_->SetWWANPolicy(record, &error);
  } else {
    granted = client_->UpdateWWANPolicy(update, record, &error) &&
              client_->UpdateWWANPolicy(QCMAP_MSGR_UPDATE_PROFILE_POLICY_V01, record, &error);
  }
  if (!granted) {
    SYSLOG(LOG_ERR, "QCMAP_Client::SetWWANPolicy error %d[0x%x]\n", error, error);
    return false;
  }
  return true;
}

bool QcmapWrapper::CreateWwanPolicy(mox::wwan::Tech tech, mox::util::IPFamily family,
                                    uint8_t profile_1, uint8_t profile_2) {
  if (!Connect()) return false;

  const auto record = ToVendor(tech, family, profile_1, profile_2);
  qmi_error_type_v01 error = QMI_ERR_NONE_V01;
  if (!client_->CreateWWANPolicy(record, &error)) {
    SYSLOG(LOG_ERR, "QCMAP_Client::CreateWWANPolicy error %d[0x%x]\n", error, error);
    return false;
  }
  return true;
}

bool QcmapWrapper::DeleteWwanPolicy(uint8_t index) {
  if (!Select(index)) return false;

  qmi_error_type_v01 error = QMI_ERR_NONE_V01;
  if (!client_->DeleteWWANPolicy(&error)) {
    SYSLOG(LOG_ERR, "QCMAP_Client::DeleteWWANPolicy error %d[0x%x]\n", error, error);
    return false;
  }
  return true;
}

bool QcmapWrapper::GetWwanPolicy(uint32_t index, mox::wwan::DataManager::WwanPolicy& policy) {
  if (!Select(index)) return false;

  qcmap_msgr_net_policy_info_v01 record = {};
  qmi_error_type_v01 error = QMI_ERR_NONE_V01;
  if (!client_->GetWWANPolicy(&record, &error)) {
    SYSLOG(LOG_ERR, "QCMAP_Client::GetWWANPolicy error %d[%x]\n", error, error);
    return false;
  }
  policy = FromVendor(record, kNoHandle);
  return true;
}

bool QcmapWrapper::GetWwanPolicies(std::vector<mox::wwan::DataManager::WwanPolicy>& policies) {
  const std::lock_guard<Mutex> lock(op_mutex_);
  policies.clear();
  if (!Connect()) return false;

  qcmap_msgr_wwan_policy_list_resp_msg_v01 list = {};
  qmi_error_type_v01 error = QMI_ERR_NONE_V01;
  if (!client_->GetWWANPolicyList(&list, &error)) {
    SYSLOG(LOG_ERR, "QCMAP_Client::GetWWANPolicyList error %d[0x%x]\n", error, error);
    return false;
  }
  const uint32_t count = ReadableCount(list);
  policies.reserve(count);
  for (uint32_t index = 0; index < count; ++index) {
    const auto& entry = list.policy_list[index];
    policies.push_back(FromVendor(entry.policy, entry.profile_handle));
  }
  return true;
}

mox::wwan::Tech QcmapWrapper::ConvertToTech(unsigned long long tech_preference) {
  if ((tech_preference & QCMAP_MSGR_TECH_PREF_3GPP_V01) != 0) return Tech::TECH_3GPP;
  if ((tech_preference & QCMAP_MSGR_TECH_PREF_3GPP2_V01) != 0) return Tech::TECH_3GPP2;
  return Tech::ANY;
}

mox::util::IPFamily QcmapWrapper::ConvertToIPFamily(qcmap_msgr_ip_family_enum_v01 family) {
  switch (family) {
    case QCMAP_MSGR_IP_FAMILY_V4_V01:
      return IPFamily::IPV4;
    case QCMAP_MSGR_IP_FAMILY_V6_V01:
      return IPFamily::IPV6;
    case QCMAP_MSGR_IP_FAMILY_V4V6_V01:
      return IPFamily::IPV4V6;
    default:
      return IPFamily::NONE;
  }
}

}  // namespace mox::vendor::qcom::qcmap
