/// What a test and a program that is short of memory share.
#pragma once

#include <atomic>

/// Names the file in which the program finds an AllocationFailure.
constexpr char kAllocationFailureVariable[] = "ALLOCATION_FAILURE";

struct AllocationFailure {
  /// The allocation with this number fails, counted from 1; 0: none.
  std::atomic<int> countdown;
  /// Whether the allocations after it fail as well.
  std::atomic<bool> lasts;
  std::atomic<bool> has_happened;
};
