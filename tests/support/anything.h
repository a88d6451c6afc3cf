/// An argument for whatever a function writes, when a test does not look at it.
#pragma once

#include <qcmap_client.h>

/// Converts to a reference to any value, which is then a new one, and to a pointer to any records.
/// There is room for as many records as the longest list of the server can have.
struct Anything {
  template <typename Value>
  operator Value&() const {
    static thread_local Value value;
    return value = Value();
  }
  template <typename Record>
  operator Record*() const {
    static thread_local Record records[QCMAP_MSGR_MAX_MAPPINGS_V01];
    return records;
  }
};
constexpr Anything kAnything;
