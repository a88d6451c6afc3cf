/// Counts what a thread allocates with operator new, and lets allocations fail.
#pragma once

/// Watches the calling thread's allocations while it lives; one at a time per thread.
class Allocations {
 public:
  /// Allocation number `fail_at` (from 1) throws std::bad_alloc; 0 lets all succeed.
  explicit Allocations(int fail_at = 0);
  ~Allocations();
  Allocations(const Allocations&) = delete;
  Allocations& operator=(const Allocations&) = delete;

  int count() const;
};

/// Leaves what a double allocates for itself out of the count.
class Untracked {
 public:
  Untracked();
  ~Untracked();
  Untracked(const Untracked&) = delete;
  Untracked& operator=(const Untracked&) = delete;
};

/// While set, calloc fails on this thread.
extern thread_local bool fail_calloc;
