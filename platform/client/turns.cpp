/// A queue of waiting threads.
#include "client/turns.h"

namespace sim {

bool Turns::Take(Deadline deadline) {
  std::unique_lock<std::mutex> lock(mutex_);
  if (!taken_) return taken_ = true;
  Waiter self;
  *LinkTo(nullptr) = &self;
  try {
    if (self.changed.wait_until(lock, deadline, [&] { return self.has_turn; })) return true;
  } catch (...) {  // The thread is cancelled, and the mutex is held again.
    Leave(self);
    throw;
  }
  Leave(self);
  return false;
}

void Turns::Pass() {
  const std::lock_guard<std::mutex> lock(mutex_);
  PassToFirst();
}

void Turns::PassToFirst() {
  if (first_ == nullptr) {
    taken_ = false;
    return;
  }
  Waiter& next = *first_;
  first_ = next.next;
  next.has_turn = true;
  next.changed.notify_one();  // with the mutex held, since the waiter leaves its frame after that
}

void Turns::Leave(const Waiter& waiter) {
  if (waiter.has_turn) return PassToFirst();
  *LinkTo(&waiter) = waiter.next;
}

Turns::Waiter** Turns::LinkTo(const Waiter* waiter) {
  Waiter** link = &first_;
  while (*link != waiter) link = &(*link)->next;
  return link;
}

}  // namespace sim
