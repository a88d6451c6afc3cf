/// Any bytes as the elements of an indication, decoded into a record of any known size.
#include <cstring>
#include <iterator>
#include <vector>

#include "fuzz.h"
#include "protocol/indication.h"
#include "qcmap_client.h"

namespace {

using Record = std::vector<unsigned char>;
using CallRecord = qcmap_msgr_tear_down_wwan_ind_msg_v01;

constexpr struct {
  uint32_t id;
  size_t record_size;
} kMessages[] = {
    {QMI_QCMAP_MSGR_BRING_UP_WWAN_IND_V01, sizeof(qcmap_msgr_bring_up_wwan_ind_msg_v01)},
    {QMI_QCMAP_MSGR_TEAR_DOWN_WWAN_IND_V01, sizeof(CallRecord)},
    {QMI_QCMAP_MSGR_WWAN_STATUS_IND_V01, sizeof(qcmap_msgr_bring_up_wwan_ind_msg_v01)},
    {QMI_QCMAP_MSGR_MOBILE_AP_STATUS_IND_V01, sizeof(qcmap_msgr_status_ind_msg_v01)},
    {QMI_QCMAP_MSGR_STATION_MODE_STATUS_IND_V01, sizeof(qcmap_msgr_status_ind_msg_v01)},
    {0, 0},
};

int Decode(uint32_t id, const std::string& elements, Record& record) {
  return qmi_client_message_decode(nullptr, QMI_IDL_INDICATION, id, elements.data(),
                                   static_cast<unsigned>(elements.size()), record.data(),
                                   static_cast<unsigned>(record.size()));
}

/// The elements from which the server would have made this record.
std::string Encode(const Record& record) {
  CallRecord call{};
  std::memcpy(&call, record.data(), std::min(record.size(), sizeof call));
  std::string elements;
  sim::AppendElement(elements, sim::kMobileApHandleElement, call.mobile_ap_handle);
  sim::AppendElement(elements, sim::kStatusElement, static_cast<uint32_t>(call.conn_status));
  if (call.profile_handle_valid != 0)
    sim::AppendElement(elements, sim::kProfileHandleElement, call.profile_handle);
  return elements;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Input input(data, size);
  const auto& message = kMessages[input.TakeByte() % std::size(kMessages)];
  Record record(kMessages[input.TakeByte() % std::size(kMessages)].record_size, 0xA5);
  if (Decode(message.id, input.TakeRest(), record) != 0) return 0;

  Require(record.size() == message.record_size, "a record of another size is refused");
  Record again(record.size(), 0xA5);
  Require(Decode(message.id, Encode(record), again) == 0 && again == record,
          "a record holds its elements and is zero elsewhere");
  return 0;
}
