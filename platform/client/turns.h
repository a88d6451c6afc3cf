/// Lets threads use something one at a time.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace sim {

/// Serves callers in the order in which they came. A caller whose deadline passes leaves the queue.
/// So does one whose thread is cancelled. If it has just been given its turn, it passes it on.
class Turns {
 public:
  using Deadline = std::chrono::steady_clock::time_point;

  /// Waits for the caller's turn. Returns false when the deadline passes first.
  [[nodiscard]] bool Take(Deadline deadline);
  /// Ends the caller's turn and begins the turn of whoever has waited longest.
  void Pass();

 private:
  /// A waiting caller, in its own stack frame.
  struct Waiter {
    std::condition_variable changed;
    bool has_turn = false;
    Waiter* next = nullptr;
  };
  /// These need the mutex.
  void PassToFirst();
  void Leave(const Waiter& waiter);
  /// The link of the queue that leads to `waiter`. The last link leads to null.
  Waiter** LinkTo(const Waiter* waiter);

  /// Guards all members and the waiters. It is not held during a turn, because a second caller
  /// could then not give up when its own deadline passes. A std::timed_mutex could be held that
  /// long, but it knows no order, and the ThreadSanitizer of GCC 12 does not see its timed lock and
  /// reports races that do not exist.
  std::mutex mutex_;
  bool taken_ = false;
  Waiter* first_ = nullptr;
};

/// A turn, which ends with its scope.
class Turn {
 public:
  Turn(Turns& turns, Turns::Deadline deadline) : turns_(turns), taken_(turns.Take(deadline)) {}
  ~Turn() {
    if (taken_) turns_.Pass();
  }
  Turn(const Turn&) = delete;
  Turn& operator=(const Turn&) = delete;

  explicit operator bool() const { return taken_; }

 private:
  Turns& turns_;
  const bool taken_;
};

}  // namespace sim
