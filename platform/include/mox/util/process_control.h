/// The seam to the device software's process utilities.
#pragma once

#include <string>

namespace mox {
namespace util {

class __attribute__((visibility("default"))) ProcessControl {
 public:
  /// Returns the id of the process called `name`, or a negative number when there is none.
  /// `limit` belongs to the device's own library; the stand-in does not use it.
  static int GetPidByProcessName(std::string name, int limit);
};

}  // namespace util
}  // namespace mox
