/// Access to members that several threads use without a lock.
#pragma once

namespace mox::vendor::qcom::qcmap {

template <typename Member>
[[nodiscard]] Member Load(const Member& member) {
  return __atomic_load_n(&member, __ATOMIC_ACQUIRE);
}

/// A thread whose Load returns `value` also sees everything written before this Store.
template <typename Member, typename Value>
void Store(Member& member, Value value) {
  __atomic_store_n(&member, value, __ATOMIC_RELEASE);
}

}  // namespace mox::vendor::qcom::qcmap
