/// What passes the seam: a call of the program, or an indication.
#pragma once

#include <qcmap_client.h>
#include <unistd.h>

#include <chrono>
#include <tuple>

#include "records/printer.h"

namespace trace {

/// Microseconds of CLOCK_MONOTONIC.
inline int64_t Now() {
  const auto now = std::chrono::steady_clock::now().time_since_epoch();
  return std::chrono::duration_cast<std::chrono::microseconds>(now).count();
}

/// A line of a trace or of a recording.
struct Event {
  std::string_view name;
  /// Counts the program's clients from 1 on. 0 for none.
  unsigned client = 0;
  /// How many events had been recorded when it began.
  unsigned after = 0;
  int64_t at_us = Now(), took_us = 0;
  int thread = ::gettid();
  /// False for a call that threw, or whose thread was cancelled in it.
  bool returned = true;
  bool ok = true;
  qmi_error_type_v01 error = QMI_ERR_NONE_V01;
  seam::Json arguments{}, answer{};

  auto Members() {
    return std::tie(at_us, thread, client, name, arguments, took_us, returned, ok, error, answer,
                    after);
  }
};
constexpr const char* kEventNames[] = {"at_us",     "thread",  "client",   "name",
                                       "arguments", "took_us", "returned", "ok",
                                       "error",     "answer",  "after"};

/// The time of day, in UTC with milliseconds, when it was `at_us`.
std::string WallTime(int64_t at_us);

// Names of what is no request. Indications are described like requests: their arguments are what
// the callback gets, their answers what the decoder makes of it.
constexpr seam::Request kIndication = {
    "indication", {"id", "handle", "length"}, {"decoded", "record"}};
constexpr seam::Request kConstructor = {"QCMAP_Client", {}, {"mobile_ap_handle"}};
constexpr seam::Request kDestructor = {"~QCMAP_Client", {}, {}};
constexpr seam::Request kProbe = {"GetPidByProcessName", {"name", "limit"}, {"pid"}};

}  // namespace trace
