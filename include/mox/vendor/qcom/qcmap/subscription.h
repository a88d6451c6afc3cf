/// Receiving the events of data calls.
#pragma once

#include <cstdint>
#include <functional>

#include "mox/vendor/qcom/qcmap/qcmap_wrapper.h"

namespace mox {
namespace vendor {
namespace qcom {
namespace qcmap {

/// `event_` of the dictionaries that subscribers receive. Each carries IP_VERSION, and
/// PROFILE_HANDLE when the server named the profile.
enum EventCode : uint32_t {
  /// Outcome of this program's own ConnectBackhaul.
  BRING_UP_CONNECTED = 0x200,
  BRING_UP_CONNECTION_FAILED = 0x201,
  /// Outcome of this program's own DisconnectBackhaul.
  TEAR_DOWN_DISCONNECTED = 0x202,
  TEAR_DOWN_DISCONNECTION_FAILED = 0x203,
  /// A call has changed its state, whoever asked for it.
  WWAN_CONNECTED = 0x204,
  WWAN_DISCONNECTED = 0x205,
};

/// Has `callback` receive every event from now on. `subscriber` identifies it, and its value
/// decides the order among subscribers, lowest first; an earlier callback of the same subscriber is
/// replaced. An empty callback receives nothing. Throws only std::bad_alloc; the earlier callback
/// then stays.
///
/// Callbacks run on the client's indication thread, one event at a time, and all get the same
/// dictionary: a change that one makes is seen by the next. They must not throw. They may call any
/// operation but GetWwanPolicies and GetNetworkConfig, which take a mutex of their own: no thread
/// may hold two. Subscribing and unsubscribing from within a callback changes nothing and is logged
/// (LOG_ERR).
///
/// Both functions wait for a delivery under way: never hold, while calling them, a lock that a
/// callback takes too. Any thread.
MVQ_QCMAP_EXPORT void Subscribe(QcmapWrapper& wrapper, void* subscriber,
                                std::function<void(mox::util::EventDic&)> callback);

/// Ends what Subscribe began; does nothing for an unknown subscriber. After its return no callback
/// of that subscriber runs or will run, so what it uses may go. Any thread, as for Subscribe.
MVQ_QCMAP_EXPORT void Unsubscribe(QcmapWrapper& wrapper, void* subscriber);

}  // namespace qcmap
}  // namespace qcom
}  // namespace vendor
}  // namespace mox
