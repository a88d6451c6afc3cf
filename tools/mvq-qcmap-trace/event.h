/// What passes the seam: a call of the program, or an indication.
#pragma once

#include <qcmap_client.h>
#include <unistd.h>

#include <chrono>
#include <string>
#include <string_view>

#include "records/printer.h"

namespace trace {

using Clock = std::chrono::steady_clock;

inline int64_t Microseconds(Clock::duration duration) {
  return std::chrono::duration_cast<std::chrono::microseconds>(duration).count();
}

/// Asking the system each time would be slow.
inline pid_t ThreadId() {
  thread_local const pid_t id = ::gettid();
  return id;
}

/// How many indications had come, and how many of their callbacks had returned.
struct IndicationCount {
  unsigned come;
  unsigned returned;
};

struct Event {
  std::string_view name;
  /// Counts the program's clients from 1 on. 0 for none.
  unsigned client;
  /// When it began.
  IndicationCount before;
  Clock::time_point start = Clock::now();
  Clock::duration took{};
  bool ok = true;
  qmi_error_type_v01 error = QMI_ERR_NONE_V01;
  pid_t thread = ThreadId();
};

/// The arguments and answers of an event, each as a JSON object or in the same form for people.
struct Texts {
  std::string arguments, answers;
};

/// An event's names in a trace and in a recording. Indications are described like calls: their
/// arguments are what the callback gets, their answers what the decoder makes of it.
inline constexpr seam::Request kIndication = {
    "indication", {"id", "handle", "length"}, {"decoded", "record"}};
inline constexpr seam::Request kConstructor = {"QCMAP_Client", {}, {"mobile_ap_handle"}};
inline constexpr seam::Request kDestructor = {"~QCMAP_Client", {}, {}};
inline constexpr seam::Request kProbe = {"GetPidByProcessName", {"name", "limit"}, {"pid"}};

/// Indications about a call and those about a status have different records.
union IndicationRecord {
  qcmap_msgr_tear_down_wwan_ind_msg_v01 call;
  qcmap_msgr_status_ind_msg_v01 status;
};

/// Calls `with` with the record of an indication of this kind, unless the kind is unknown.
template <typename Record, typename With>
void WithRecord(seam::IndicationId id, Record& record, const With& with) {
  switch (static_cast<uint32_t>(id)) {
    case QMI_QCMAP_MSGR_BRING_UP_WWAN_IND_V01:
    case QMI_QCMAP_MSGR_TEAR_DOWN_WWAN_IND_V01:
    case QMI_QCMAP_MSGR_WWAN_STATUS_IND_V01:
      return with(record.call);
    case QMI_QCMAP_MSGR_MOBILE_AP_STATUS_IND_V01:
    case QMI_QCMAP_MSGR_STATION_MODE_STATUS_IND_V01:
      return with(record.status);
    default:
      return;
  }
}

}  // namespace trace
