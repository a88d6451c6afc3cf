/// The event dictionary that subscribers receive.
#pragma once

#include <cstdint>
#include <map>
#include <string>

namespace mox {
namespace util {

/// One event: its code, and its parameters as text. A copy shares nothing with the original.
class EventDic {
 public:
  enum Param : int32_t {
    /// "4" or "6".
    IP_VERSION = 12,
    /// The server's profile handle, in unsigned decimal.
    PROFILE_HANDLE = 13,
  };

  /// Stores `value` under `param`. Returns false, and keeps the old value, when `param` already has
  /// one. Not synchronised. Throws only std::bad_alloc.
  bool AddParam(Param param, std::string value);

  /// The event's code (EventCode in subscription.h for data calls); 0 means no event.
  uint32_t event_ = 0;
  std::map<Param, std::string> params_;
  /// Unused by data calls, whose events leave it 0.
  uint32_t extra_ = 0;
};

}  // namespace util
}  // namespace mox
