/// How an indication is encoded: elements of a type (8 bits), a length (16 bits, little-endian) and
/// a value. The server writes them, the QMI client library's decoder reads them.
#pragma once

#include <cstddef>
#include <cstdint>

namespace sim {

constexpr size_t kElementHeadBytes = 3;
/// Each known value is a 32-bit number, little-endian. The first two are mandatory.
constexpr uint8_t kMobileApHandleElement = 0x01;
constexpr uint8_t kStatusElement = 0x02;
constexpr uint8_t kProfileHandleElement = 0x10;

}  // namespace sim
