/// Subscribing to the events of data calls.
#pragma once

#include <cstdint>
#include <functional>

#include "mox/vendor/qcom/qcmap/qcmap_wrapper.h"

namespace mox {
namespace vendor {
namespace qcom {
namespace qcmap {

/// The codes in `event_` of the dictionaries that subscribers receive. Each dictionary carries
/// IP_VERSION, and PROFILE_HANDLE if the server named the profile.
enum EventCode : uint32_t {
  /// The outcome of this program's own ConnectBackhaul.
  BRING_UP_CONNECTED = 0x200,
  BRING_UP_CONNECTION_FAILED = 0x201,
  /// The outcome of this program's own DisconnectBackhaul.
  TEAR_DOWN_DISCONNECTED = 0x202,
  TEAR_DOWN_DISCONNECTION_FAILED = 0x203,
  /// A call came up or went down, whichever program or network event caused it.
  WWAN_CONNECTED = 0x204,
  WWAN_DISCONNECTED = 0x205,
};

/// Registers `callback` for every event from now on. To miss nothing, subscribe before reading the
/// state (see Events in qcmap_wrapper.h).
///
/// `subscriber` identifies the callback and is never dereferenced. A new callback replaces the
/// earlier one of the same subscriber. Callbacks run in the order of their subscribers' addresses,
/// lowest first. An empty callback receives nothing. If this throws std::bad_alloc, the earlier
/// callback stays.
///
/// Callbacks run on the client's indication thread, one event at a time. All of them get the same
/// dictionary, so a change made by one is seen by the next. A callback must not throw. It may call
/// any operation except GetWwanPolicies and GetNetworkConfig: these take a second mutex, and no
/// thread may hold two. Calling Subscribe or Unsubscribe from a callback changes nothing and is
/// logged (LOG_ERR).
///
/// Both functions may be called from any other thread. They wait for a delivery in progress, so
/// never call them while holding a lock that a callback also takes.
MVQ_QCMAP_EXPORT void Subscribe(QcmapWrapper& wrapper, void* subscriber,
                                std::function<void(mox::util::EventDic&)> callback);

/// Removes the subscriber's callback; does nothing for an unknown subscriber. Once it has returned,
/// no callback of that subscriber runs or will run, so anything it uses may be destroyed.
MVQ_QCMAP_EXPORT void Unsubscribe(QcmapWrapper& wrapper, void* subscriber);

}  // namespace qcmap
}  // namespace qcom
}  // namespace vendor
}  // namespace mox
