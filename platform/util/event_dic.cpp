/// The only member of the event dictionary that is not inline.
#include "mox/util/event_dic.h"

#include <utility>

namespace mox::util {

__attribute__((visibility("default"))) bool EventDic::AddParam(Param param, std::string value) {
  return params_.emplace(param, std::move(value)).second;
}

}  // namespace mox::util
