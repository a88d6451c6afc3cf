/// Decodes an indication's elements into its record.
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "protocol/indication.h"
#include "qcmap_client.h"
#include "qmi_client.h"

namespace {

enum DecodeResult : int { kDecoded = 0, kUnknownMessage = 1, kWrongRecordSize = 2, kMalformed = 3 };

// All records begin with the Mobile AP handle and the status. Those of data calls also name a
// profile.
using CallRecord = qcmap_msgr_tear_down_wwan_ind_msg_v01;
constexpr size_t kHandle = 0, kStatus = 4, kProfile = offsetof(CallRecord, profile_handle);
static_assert(offsetof(CallRecord, mobile_ap_handle) == kHandle, "");
static_assert(offsetof(CallRecord, conn_status) == kStatus, "");
static_assert(offsetof(qcmap_msgr_status_ind_msg_v01, status) == kStatus, "");

/// Returns 0 for an unknown message.
size_t RecordSize(unsigned int message_id) {
  switch (message_id) {
    case QMI_QCMAP_MSGR_BRING_UP_WWAN_IND_V01:
    case QMI_QCMAP_MSGR_WWAN_STATUS_IND_V01:
      return sizeof(qcmap_msgr_bring_up_wwan_ind_msg_v01);
    case QMI_QCMAP_MSGR_TEAR_DOWN_WWAN_IND_V01:
      return sizeof(CallRecord);
    case QMI_QCMAP_MSGR_MOBILE_AP_STATUS_IND_V01:
    case QMI_QCMAP_MSGR_STATION_MODE_STATUS_IND_V01:
      return sizeof(qcmap_msgr_status_ind_msg_v01);
    default:
      return 0;
  }
}

}  // namespace

extern "C" int qmi_client_message_decode(qmi_client_type /*client*/, int message_type,
                                         unsigned int message_id, const void* bytes,
                                         unsigned int length, void* record,
                                         unsigned int record_size) {
  const size_t size = RecordSize(message_id);
  if (message_type != QMI_IDL_INDICATION || size == 0) return kUnknownMessage;
  // A larger record is refused as well: its size does not belong to this message, so the caller has
  // confused two messages and would read members that nobody wrote.
  if (record == nullptr || record_size != size) return kWrongRecordSize;
  if (bytes == nullptr && length != 0) return kMalformed;

  auto* const out = static_cast<unsigned char*>(record);
  std::memset(out, 0, size);
  bool has_handle = false, has_status = false;
  const auto* in = static_cast<const unsigned char*>(bytes);
  for (size_t left = length; left != 0;) {
    if (left < sim::kElementHeadBytes) return kMalformed;
    const uint8_t type = in[0];
    const size_t value_size = in[1] | static_cast<size_t>(in[2]) << 8;
    in += sim::kElementHeadBytes;
    left -= sim::kElementHeadBytes;
    if (value_size > left) return kMalformed;

    const bool is_profile = type == sim::kProfileHandleElement && size >= sizeof(CallRecord);
    const bool is_handle = type == sim::kMobileApHandleElement;
    const bool is_status = type == sim::kStatusElement;
    if (is_profile || is_handle || is_status) {
      if (value_size != sizeof(uint32_t)) return kMalformed;
      uint32_t value = 0;
      for (size_t i = 0; i < sizeof value; ++i) value |= static_cast<uint32_t>(in[i]) << 8 * i;
      std::memcpy(out + (is_profile  ? kProfile
                         : is_status ? kStatus
                                     : kHandle),
                  &value, sizeof value);
      if (is_profile) out[offsetof(CallRecord, profile_handle_valid)] = 1;
      has_handle |= is_handle;
      has_status |= is_status;
    }
    in += value_size;
    left -= value_size;
  }
  return has_handle && has_status ? kDecoded : kMalformed;
}
