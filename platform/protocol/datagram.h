/// The datagrams between client and server: a header and the record that follows it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string>

namespace sim {

struct Header {
  /// A MessageId, or the id of an indication.
  uint32_t id;
  /// Chosen by the client, repeated in the reply. 0 in an indication.
  uint32_t transaction;
  /// A qmi_error_type_v01 in a reply, otherwise 0.
  int32_t error;
  /// Bytes of the record.
  uint32_t length;
};

inline std::string MakeDatagram(uint32_t id, uint32_t transaction, int32_t error,
                                const std::string& record) {
  const Header header{id, transaction, error, static_cast<uint32_t>(record.size())};
  return std::string(reinterpret_cast<const char*>(&header), sizeof header) + record;
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
