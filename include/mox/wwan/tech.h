/// The radio technology that a WWAN policy prefers.
#pragma once

#include <cstdint>

namespace mox {
namespace wwan {

enum class Tech : int32_t {
  TECH_3GPP2 = 1,
  TECH_3GPP = 2,
  /// No preference.
  ANY = 7,
};

}  // namespace wwan
}  // namespace mox
