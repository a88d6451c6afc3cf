/// The datagrams between client and server: a header and the record that follows it.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string>

namespace sim {

/// A time of CLOCK_MONOTONIC in nanoseconds, which means the same to both ends on one machine.
using MonotonicTime = uint64_t;
constexpr MonotonicTime kNoDeadline = UINT64_MAX;

inline MonotonicTime ToMonotonicTime(std::chrono::steady_clock::time_point time) {
  return static_cast<MonotonicTime>(std::chrono::nanoseconds(time.time_since_epoch()).count());
}

struct Header {
  /// A MessageId, or the id of an indication.
  uint32_t id;
  /// Chosen by the client, repeated in the reply. 0 in an indication.
  uint32_t transaction;
  /// A qmi_error_type_v01 in a reply, otherwise 0.
  int32_t error;
  /// Bytes of the record.
  uint32_t length;
  /// In a request, the time at which its caller gives up. After that the server does not carry it
  /// out. kNoDeadline in replies and indications.
  MonotonicTime deadline;
  /// In a request, handle of the profile that the server last confirmed to this client. 0 if there
  /// was no profile yet; the server then takes the first one. In a reply, the one to name in the
  /// next request. 0 in an indication.
  uint32_t profile;
  uint32_t reserved;
};
static_assert(sizeof(Header) == 32, "32-bit programs use the same layout");

inline std::string MakeDatagram(uint32_t id, uint32_t transaction, int32_t error,
                                const std::string& record, uint32_t profile = 0) {
  const auto length = static_cast<uint32_t>(record.size());
  const Header header{id, transaction, error, length, kNoDeadline, profile, 0};
  std::string datagram;
  datagram.reserve(sizeof header + record.size());
  datagram.append(reinterpret_cast<const char*>(&header), sizeof header).append(record);
  return datagram;
}

/// A datagram as it was received. `record` points into the buffer that was parsed.
struct Datagram {
  Header header;
  unsigned char* record;
  size_t record_size;

  /// Whether the header gives the size that was received.
  bool IsWhole() const { return header.length == record_size; }
};

/// Empty when there are too few bytes for a header.
inline std::optional<Datagram> ParseDatagram(unsigned char* bytes, size_t size) {
  if (size < sizeof(Header)) return std::nullopt;
  Datagram datagram{{}, bytes + sizeof(Header), size - sizeof(Header)};
  std::memcpy(&datagram.header, bytes, sizeof(Header));
  return datagram;
}

}  // namespace sim
