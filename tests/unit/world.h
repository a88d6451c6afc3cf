/// A wrapper in front of scripted libraries.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <tuple>
#include <vector>

#include "allocation.h"
#include "enumerator_name.h"
#include "log_capture.h"
#include "mox/vendor/qcom/qcmap/subscription.h"
#include "scripted_client.h"

// Failed comparisons show names, not numbers.
namespace mox {
inline void PrintTo(Result result, std::ostream* out) {
  *out << NameOf(result);
}
namespace wwan {
inline void PrintTo(DataManager::ConnectStatus status, std::ostream* out) {
  *out << NameOf(status);
}
}  // namespace wwan
}  // namespace mox

using mox::Result;
using mox::util::EventDic;
using mox::util::IPFamily;
using mox::vendor::qcom::qcmap::QcmapWrapper;
using mox::wwan::DataManager;
using mox::wwan::MobileapManager;
using mox::wwan::Tech;

using Lines = std::vector<std::string>;

constexpr char kSelection[] = "bool @ChangeWwanProfile(uint32_t)";
const Lines kSelectSecond = {"GetWWANPolicyList", "SetWWANProfileHandlePreference 22"};

/// The wrapper is connected unless `server_pid` is negative, which means that no server runs. What
/// connecting requested and logged has been discarded.
struct World {
  explicit World(int server_pid = 4711) : script(server_pid) {
    QcmapWrapper::s_ins_ = &wrapper;
    Forget();
  }
  ~World() { QcmapWrapper::s_ins_ = nullptr; }

  Lines Sent() { return script.TakeRequests(); }

  void Forget() {
    Sent();
    script.utility_calls.clear();
    TakeLog();
  }

  Script script;
  QcmapWrapper wrapper;
};
