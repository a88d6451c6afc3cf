/// Answers to the requests about the modem as a whole: the Mobile AP and the list of profiles.
#include "server/requests.h"

namespace sim {
namespace {

class ModemAnswers {
 public:
  ModemAnswers(Model& model, Caller& caller) : modem_(model.modem), caller_(caller) {}
  explicit operator bool() const { return true; }

  Error EnableMobileAP(const Nothing&, Nothing&) {
    modem_.EnableMobileAp();
    return kGranted;
  }
  Error GetMobileAPStatus(const Nothing&, qcmap_msgr_mobile_ap_status_enum_v01& status) {
    status = modem_.mobile_ap_enabled() ? QCMAP_MSGR_MOBILE_AP_STATUS_CONNECTED_V01
                                        : QCMAP_MSGR_MOBILE_AP_STATUS_DISCONNECTED_V01;
    return kGranted;
  }
  Error GetWWANPolicyList(const Nothing&, PolicyList& list) {
    list.policy_list_valid = 1;
    for (const Profile& profile : modem_.profiles())
      list.policy_list[list.policy_list_len++] = {profile.handle, profile.policy};
    return kGranted;
  }
  Error SetWWANProfileHandlePreference(const profile_handle_type_v01& handle, Nothing&) {
    if (modem_.Find(handle) == nullptr) return QMI_ERR_INVALID_HANDLE_V01;
    caller_.profile = handle;
    return kGranted;
  }
  Error CreateWWANPolicy(const qcmap_msgr_net_policy_info_v01& policy, Nothing&) {
    if (!IsValid(policy)) return QMI_ERR_INVALID_ARG_V01;
    if (modem_.profiles().size() == QCMAP_MSGR_MAX_WWAN_POLICY_V01)
      return QMI_ERR_NO_MEMORY_IN_LIST_V01;
    modem_.Add(policy);
    return kGranted;
  }

 private:
  Modem& modem_;
  Caller& caller_;
};

}  // namespace

AnswerFunction FindModemAnswer(uint32_t id) {
  switch (id) {
#define SIM_CASE(name, request, reply) \
  case message::name::kId:             \
    return AnswerWith<message::name, ModemAnswers, &ModemAnswers::name>;
    SIM_MODEM_MESSAGES(SIM_CASE)
#undef SIM_CASE
    default:
      return nullptr;
  }
}

}  // namespace sim
