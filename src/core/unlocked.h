/// Access to members that several threads use without a lock.
#pragma once

namespace mox::vendor::qcom::qcmap {

template <typename Member>
[[nodiscard]] Member Load(const Member& member) {
  return __atomic_load_n(&member, __ATOMIC_ACQUIRE);
}

/// What was written before is seen by a thread that loads `value`.
template <typename Member, typename Value>
void Store(Member& member, Value value) {
  __atomic_store_n(&member, value, __ATOMIC_RELEASE);
}

}  // namespace mox::vendor::qcom::qcmap
