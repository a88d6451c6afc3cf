/// Decoding the server's indications and delivering events.
#include "mox/vendor/qcom/qcmap/qcmap_wrapper.h"

#include <cstdlib>
#include <memory>
#include <mutex>
#include <string>

#include <qcmap_client.h>
#include <qmi_client.h>

#include "core/log.h"
#include "core/unlocked.h"
#include "events/delivery.h"
#include "mox/vendor/qcom/qcmap/subscription.h"

namespace mox::vendor::qcom::qcmap {

namespace {

constexpr uint32_t kNoEvent = 0;

constexpr uint32_t kBringUp = QMI_QCMAP_MSGR_BRING_UP_WWAN_IND_V01;
constexpr uint32_t kTearDown = QMI_QCMAP_MSGR_TEAR_DOWN_WWAN_IND_V01;
constexpr uint32_t kWwanStatus = QMI_QCMAP_MSGR_WWAN_STATUS_IND_V01;
constexpr uint32_t kMobileApStatus = QMI_QCMAP_MSGR_MOBILE_AP_STATUS_IND_V01;
constexpr uint32_t kStationModeStatus = QMI_QCMAP_MSGR_STATION_MODE_STATUS_IND_V01;

/// States of the Mobile AP; the last two occur in station mode only.
constexpr uint32_t kConnected = QCMAP_MSGR_MOBILE_AP_STATUS_CONNECTED_V01;
constexpr uint32_t kDisconnected = QCMAP_MSGR_MOBILE_AP_STATUS_DISCONNECTED_V01;
constexpr uint32_t kAssociationFailed = 3;
constexpr uint32_t kAddressAssignmentFailed = 4;

/// The log text of a call's status, and the event that it means in each kind of indication. Only
/// some pairs of indication and status are events.
struct CallStatus {
  int32_t status;
  const char* text;
  char ip_version;
  uint32_t bring_up_event;
  uint32_t tear_down_event;
  uint32_t wwan_event;
};

constexpr CallStatus kCallStatuses[] = {
    {QCMAP_MSGR_WWAN_STATUS_CONNECTED_V01, "V4 CONNECTED", '4', BRING_UP_CONNECTED, kNoEvent,
     WWAN_CONNECTED},
    {QCMAP_MSGR_WWAN_STATUS_CONNECTING_FAIL_V01, "V4 CONNECTION FAILED", '4',
     BRING_UP_CONNECTION_FAILED, kNoEvent, kNoEvent},
    {QCMAP_MSGR_WWAN_STATUS_DISCONNECTED_V01, "V4 DISCONNECTED", '4', kNoEvent,
     TEAR_DOWN_DISCONNECTED, WWAN_DISCONNECTED},
    {QCMAP_MSGR_WWAN_STATUS_DISCONNECTING_FAIL_V01, "V4 DISCONNECTION FAILED", '4', kNoEvent,
     TEAR_DOWN_DISCONNECTION_FAILED, kNoEvent},
    {QCMAP_MSGR_WWAN_STATUS_IPV6_CONNECTED_V01, "V6 CONNECTED", '6', BRING_UP_CONNECTED, kNoEvent,
     WWAN_CONNECTED},
    {QCMAP_MSGR_WWAN_STATUS_IPV6_CONNECTING_FAIL_V01, "V6 CONNECTION FAILED", '6',
     BRING_UP_CONNECTION_FAILED, kNoEvent, kNoEvent},
    {QCMAP_MSGR_WWAN_STATUS_IPV6_DISCONNECTED_V01, "V6 DISCONNECTED", '6', kNoEvent,
     TEAR_DOWN_DISCONNECTED, WWAN_DISCONNECTED},
    {QCMAP_MSGR_WWAN_STATUS_IPV6_DISCONNECTING_FAIL_V01, "V6 DISCONNECTION FAILED", '6', kNoEvent,
     TEAR_DOWN_DISCONNECTION_FAILED, kNoEvent},
};

/// A call indication. All three kinds begin with the members of the smallest one.
using CallRecord = qcmap_msgr_tear_down_wwan_ind_msg_v01;

struct Free {
  void operator()(CallRecord* record) const { std::free(record); }
};

const CallStatus* Find(int32_t status) {
  for (const auto& known : kCallStatuses) {
    if (known.status == status) return &known;
  }
  return nullptr;
}

/// Makes the event of an indication. `known` describes its status and is null for an unknown one.
/// The event's code is kNoEvent if the indication is only logged.
mox::util::EventDic ToEvent(uint32_t message_id, const CallRecord& record,
                            const CallStatus* known) {
  mox::util::EventDic event;
  if (record.profile_handle_valid != 0) {
    event.AddParam(mox::util::EventDic::PROFILE_HANDLE, std::to_string(record.profile_handle));
  }
  if (known == nullptr) return event;

  const uint32_t code = message_id == kBringUp    ? known->bring_up_event
                        : message_id == kTearDown ? known->tear_down_event
                                                  : known->wwan_event;
  if (code != kNoEvent) {
    event.event_ = code;
    event.AddParam(mox::util::EventDic::IP_VERSION, std::string(1, known->ip_version));
  }
  return event;
}

const char* KindOf(uint32_t message_id) {
  return message_id == kBringUp    ? "[BRING_UP]"
         : message_id == kTearDown ? "[TEAR_DOWN]"
                                   : "[WWAN_INDICATION]";
}

}  // namespace

// Longer than other functions, because every line must carry the signature of this one.
void QcmapWrapper::EvtCb(qmi_client_type client, uint32_t message_id, void* bytes, uint32_t length,
                         void*) {
  SYSLOG(LOG_DEBUG, "h %p msg_id 0x%x len %d\n", static_cast<void*>(client), message_id, length);

  if (message_id == kMobileApStatus || message_id == kStationModeStatus) {
    qcmap_msgr_status_ind_msg_v01 record = {};
    const int result = qmi_client_message_decode(client, QMI_IDL_INDICATION, message_id, bytes,
                                                 length, &record, sizeof(record));
    if (result != 0) {
      SYSLOG(LOG_ERR, "qmi_client_message_decode error %d\n", result);
    } else if (message_id == kMobileApStatus) {
      if (record.status == kConnected) SYSLOG(LOG_DEBUG, "Mobile AP ConnectBackhauled...\n");
      if (record.status == kDisconnected) SYSLOG(LOG_DEBUG, "Mobile AP Disconnected...\n");
    } else if (record.status == kConnected) {
      SYSLOG(LOG_DEBUG, "Mobile AP Station mode ConnectBackhauled...\n");
    } else if (record.status == kDisconnected) {
      SYSLOG(LOG_DEBUG, "Mobile AP Station mode Disconnected...\n");
    } else if (record.status == kAssociationFailed) {
      SYSLOG(LOG_DEBUG,
             "Mobile AP Station mode Association Failed. Going back to AP+STA Router Mode\n");
    } else if (record.status == kAddressAssignmentFailed) {
      // Unformatted, so that the text stays whole on the line after the call.
      // clang-format off
      SYSLOG(LOG_DEBUG,
             "Mobile AP Station mode IP Assignment via DHCP Failed. Will switch to Static IP if available\n");
      // clang-format on
    }
    return;
  }
  if (message_id != kBringUp && message_id != kTearDown && message_id != kWwanStatus) return;

  // There is no instance during the first attempt to connect, and no client after a failed one.
  QcmapWrapper* const wrapper = Load(s_ins_);
  if (wrapper == nullptr) return;
  const QCMAP_Client* const own_client = Load(wrapper->client_);
  const bool is_answer = message_id != kWwanStatus;
  if (is_answer && own_client == nullptr) return;

  // The decoder accepts a record of exactly its message's size, so each kind is decoded into its
  // own size, although only the common beginning is read. One large record for all would be
  // refused.
  const auto size =
      static_cast<uint32_t>(message_id == kTearDown ? sizeof(qcmap_msgr_tear_down_wwan_ind_msg_v01)
                                                    : sizeof(qcmap_msgr_bring_up_wwan_ind_msg_v01));
  const std::unique_ptr<CallRecord, Free> record(static_cast<CallRecord*>(std::calloc(1, size)));
  if (record == nullptr) return;
  if (qmi_client_message_decode(client, QMI_IDL_INDICATION, message_id, bytes, length, record.get(),
                                size) != 0) {
    return;
  }
  if (is_answer && record->mobile_ap_handle != own_client->mobile_ap_handle) {
    SYSLOG(LOG_ERR, "ind handle [%u] mobile ap handle [%u] mismatch\n", record->mobile_ap_handle,
           own_client->mobile_ap_handle);
    return;
  }

  const CallStatus* const known = Find(record->conn_status);
  const char* const text = known != nullptr ? known->text : "";
  mox::util::EventDic event = ToEvent(message_id, *record, known);
  if (record->profile_handle_valid != 0) {
    SYSLOG(LOG_DEBUG, "%s profile_handle: %u %s\n", KindOf(message_id), record->profile_handle,
           text);
  } else {
    SYSLOG(LOG_DEBUG, "%s %s\n", KindOf(message_id), text);
  }
  if (event.event_ == kNoEvent) return;

  const Delivery delivery;
  const std::lock_guard<Mutex> lock(wrapper->event_callbacks_mutex_);
  for (const auto& [subscriber, callback] : wrapper->event_callbacks_) {
    if (callback) callback(event);
  }
}

}  // namespace mox::vendor::qcom::qcmap
