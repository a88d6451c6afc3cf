/// IP family of a policy, a data call or a counter.
#pragma once

#include <cstdint>

namespace mox {
namespace util {

enum class IPFamily : int32_t {
  /// Unknown, or not read yet.
  NONE = 0,
  IPV4 = 1,
  IPV6 = 2,
  IPV4V6 = 3,
};

}  // namespace util
}  // namespace mox
