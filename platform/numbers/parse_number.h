/// Numbers in what people type: options, console lines and environment variables.
#pragma once

#include <charconv>
#include <cstdint>
#include <string>

namespace sim {

/// Parses a decimal number, or a hexadecimal one after "0x". Returns false when `text` is anything
/// else, blanks and signs included, or when the number is above `max`; `number` is then
/// unspecified.
inline bool ParseNumber(const std::string& text, uint64_t max, uint64_t& number) {
  const bool is_hex = text.compare(0, 2, "0x") == 0;
  const char* const end = text.data() + text.size();
  const auto [rest, error] =
      std::from_chars(text.data() + (is_hex ? 2 : 0), end, number, is_hex ? 16 : 10);
  return error == std::errc() && rest == end && number <= max;
}

}  // namespace sim
