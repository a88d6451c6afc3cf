/// The indications of the recent past, from which each client is sent its own.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "protocol/control.h"
#include "protocol/indication.h"

namespace sim {

/// A ring that all clients share, so that slow ones cost no memory of their own. Its memory is
/// reserved at the start, and adding to it cannot fail. Each client remembers a position.
class IndicationLog {
 public:
  /// Bytes since the server began.
  using Position = uint64_t;
  static constexpr size_t kMaxElementBytes = kMaxCommandBytes;
  struct Entry {
    /// Handle of the client that the indication is for, or 0 for all clients.
    uint32_t receiver;
    Indication indication;
    /// Whether `elements`, unchecked, replace those of the indication. They have at most
    /// kMaxElementBytes.
    bool has_elements = false;
    std::string_view elements{};
  };

  /// Throws std::system_error when there is no memory.
  IndicationLog();
  ~IndicationLog();
  IndicationLog(const IndicationLog&) = delete;
  IndicationLog& operator=(const IndicationLog&) = delete;

  /// Overwrites the oldest entries when the ring is full.
  void Add(const Entry& entry) noexcept;
  /// Returns the entry at `position`, which must be before end(), and moves `position` past it. Its
  /// elements are valid until another entry is added.
  Entry Next(Position& position) const;
  Position end() const { return end_; }
  /// Whether the entry at `position` has been overwritten.
  bool IsLost(Position position) const { return end_ - position > kBytes; }

  /// Whether the entry at `position` will be overwritten before long.
  bool IsFarBehind(Position position) const { return end_ - position > kBytes / 4; }

  /// Whether so much of the ring is in use that Restart() is worthwhile.
  bool IsWorthRestarting() const { return end_ % kBytes > kBytes / 64; }
  /// Goes back to the start of the ring and returns its memory to the system until it is used
  /// again. All clients must have read everything, and their positions become end().
  void Restart() noexcept;

 private:
  /// More than a hundred thousand indications of an ordinary size.
  static constexpr size_t kBytes = size_t{4} << 20;

  /// Where the entry begins that follows one that ended at `end`. None is split at the end of the
  /// ring, so the longest must have room before it.
  static Position Place(Position end);

  char* const bytes_;
  Position end_ = 0;
};

}  // namespace sim
