/// The event dictionary: what a subscriber receives.
#pragma once

#include <cstdint>
#include <map>
#include <string>

namespace mox {
namespace util {

/// One event: its code and its parameters as text. A copy owns all it holds.
class EventDic {
 public:
  enum Param : int32_t {
    /// "4" or "6".
    IP_VERSION = 12,
    /// The server's profile handle, in unsigned decimal.
    PROFILE_HANDLE = 13,
  };

  /// Stores `value` under `param`. Returns false when `param` already has a value, which stays.
  /// Not synchronised; throws only std::bad_alloc.
  bool AddParam(Param param, std::string value);

  /// The event's code; 0 means no event.
  uint32_t event_ = 0;
  std::map<Param, std::string> params_;
  /// Not used by events of data calls, where it is 0.
  uint32_t extra_ = 0;
};

}  // namespace util
}  // namespace mox
