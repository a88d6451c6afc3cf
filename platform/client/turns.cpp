/// A queue of waiting threads.
#include "client/turns.h"

namespace sim {

bool Turns::Take(Deadline deadline) {
  std::unique_lock<std::mutex> lock(mutex_);
  if (!taken_) return taken_ = true;
  Waiter self;
  *LinkTo(nullptr) = &self;
  if (self.changed.wait_until(lock, deadline, [&] { return self.has_turn; })) return true;
  *LinkTo(&self) = self.next;
  return false;
}

void Turns::Pass() {
  const std::lock_guard<std::mutex> lock(mutex_);
  if (first_ == nullptr) {
    taken_ = false;
    return;
  }
  Waiter& next = *first_;
  first_ = next.next;
  next.has_turn = true;
  next.changed.notify_one();  // with the mutex held, since the waiter leaves its frame after that
}

Turns::Waiter** Turns::LinkTo(const Waiter* waiter) {
  Waiter** link = &first_;
  while (*link != waiter) link = &(*link)->next;
  return link;
}

}  // namespace sim
