/// Texts from clients and scripts in a form that a terminal can show.
#pragma once

#include <cstdio>
#include <string>
#include <string_view>

namespace sim {

/// `text` with each byte that is not printable ASCII, and each backslash, written as \xNN.
inline std::string Printable(std::string_view text) {
  std::string printable;
  for (const char c : text) {
    char escaped[sizeof "\\x12"] = {c};
    if (c < ' ' || c > '~' || c == '\\')
      std::snprintf(escaped, sizeof escaped, "\\x%02x", static_cast<unsigned char>(c));
    printable += escaped;
  }
  return printable;
}

}  // namespace sim
