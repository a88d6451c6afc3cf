/// Indications: datagrams whose record is a list of elements. An element is a type (8 bits), a
/// length (16 bits, little-endian) and a value. The server makes them, and the QMI client library
/// decodes them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "protocol/datagram.h"

namespace sim {

constexpr size_t kElementHeadBytes = 3;
/// Each known value is a 32-bit number, little-endian. The first two are mandatory.
constexpr uint8_t kMobileApHandleElement = 0x01;
constexpr uint8_t kStatusElement = 0x02;
constexpr uint8_t kProfileHandleElement = 0x10;

struct Indication {
  uint32_t id;
  int32_t status;
  std::optional<uint32_t> profile_handle{};
  /// The receiving client's own unless given.
  std::optional<uint32_t> mobile_ap_handle{};
};

inline void AppendElement(std::string& elements, uint8_t type, uint32_t value) {
  elements.push_back(static_cast<char>(type));
  elements.push_back(sizeof value);
  elements.push_back(0);
  for (unsigned shift = 0; shift < 32; shift += 8)
    elements.push_back(static_cast<char>(value >> shift & 0xFF));
}

/// The datagram with these elements, which need not be valid.
inline std::string MakeIndication(uint32_t id, const std::string& elements) {
  return MakeDatagram(id, 0, 0, elements);
}

/// The datagram for the client with handle `receiver`.
inline std::string MakeIndication(const Indication& indication, uint32_t receiver) {
  std::string elements;
  AppendElement(elements, kMobileApHandleElement, indication.mobile_ap_handle.value_or(receiver));
  AppendElement(elements, kStatusElement, static_cast<uint32_t>(indication.status));
  if (indication.profile_handle)
    AppendElement(elements, kProfileHandleElement, *indication.profile_handle);
  return MakeIndication(indication.id, elements);
}

}  // namespace sim
