/// Decodes the elements of an indication into its record.
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "protocol/indication_elements.h"
#include "qcmap_client.h"
#include "qmi_client.h"

namespace {

enum DecodeResult : int { kDecoded = 0, kUnknownMessage = 1, kWrongRecordSize = 2, kMalformed = 3 };

using CallRecord = qcmap_msgr_tear_down_wwan_ind_msg_v01;

/// Where a record keeps its fields; the tear-down's layout is how all data-call records begin.
struct Layout {
  unsigned int record_size;
  size_t handle, status;
  bool names_profile;
};

bool FindLayout(unsigned int message_id, Layout& layout) {
  switch (message_id) {
    case QMI_QCMAP_MSGR_BRING_UP_WWAN_IND_V01:
    case QMI_QCMAP_MSGR_WWAN_STATUS_IND_V01:
    case QMI_QCMAP_MSGR_TEAR_DOWN_WWAN_IND_V01:
      layout = {message_id == QMI_QCMAP_MSGR_TEAR_DOWN_WWAN_IND_V01
                    ? unsigned{sizeof(CallRecord)}
                    : unsigned{sizeof(qcmap_msgr_bring_up_wwan_ind_msg_v01)},
                offsetof(CallRecord, mobile_ap_handle), offsetof(CallRecord, conn_status), true};
      return true;
    case QMI_QCMAP_MSGR_MOBILE_AP_STATUS_IND_V01:
    case QMI_QCMAP_MSGR_STATION_MODE_STATUS_IND_V01:
      layout = {sizeof(qcmap_msgr_status_ind_msg_v01), 0,
                offsetof(qcmap_msgr_status_ind_msg_v01, status), false};
      return true;
    default:
      return false;
  }
}

}  // namespace

extern "C" int qmi_client_message_decode(qmi_client_type /*client*/, int message_type,
                                         unsigned int message_id, const void* bytes,
                                         unsigned int length, void* record,
                                         unsigned int record_size) {
  Layout layout;
  if (message_type != QMI_IDL_INDICATION || !FindLayout(message_id, layout)) return kUnknownMessage;
  if (record == nullptr || record_size != layout.record_size) return kWrongRecordSize;
  if (bytes == nullptr && length != 0) return kMalformed;

  auto* const out = static_cast<unsigned char*>(record);
  std::memset(out, 0, record_size);
  bool has_handle = false, has_status = false;
  const auto* in = static_cast<const unsigned char*>(bytes);
  for (size_t left = length; left != 0;) {
    if (left < sim::kElementHeadBytes) return kMalformed;
    const uint8_t type = in[0];
    const size_t size = in[1] | static_cast<size_t>(in[2]) << 8;
    in += sim::kElementHeadBytes;
    left -= sim::kElementHeadBytes;
    if (size > left) return kMalformed;

    const bool names_profile = type == sim::kProfileHandleElement && layout.names_profile;
    if (type == sim::kMobileApHandleElement || type == sim::kStatusElement || names_profile) {
      if (size != sizeof(uint32_t)) return kMalformed;
      const uint32_t value = in[0] | static_cast<uint32_t>(in[1]) << 8 |
                             static_cast<uint32_t>(in[2]) << 16 |
                             static_cast<uint32_t>(in[3]) << 24;
      has_handle |= type == sim::kMobileApHandleElement;
      has_status |= type == sim::kStatusElement;
      if (names_profile) out[offsetof(CallRecord, profile_handle_valid)] = 1;
      std::memcpy(out + (type == sim::kMobileApHandleElement ? layout.handle
                         : type == sim::kStatusElement       ? layout.status
                                                       : offsetof(CallRecord, profile_handle)),
                  &value, sizeof value);
    }
    in += size;
    left -= size;
  }
  return has_handle && has_status ? kDecoded : kMalformed;
}
