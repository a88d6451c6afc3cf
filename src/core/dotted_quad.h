/// IPv4 addresses as text.
#pragma once

#include <arpa/inet.h>

#include <cstdint>
#include <string>

namespace mox::vendor::qcom::qcmap {

/// The address in host byte order; all ones for a text that is not an address.
[[nodiscard]] inline uint32_t FromDottedQuad(const std::string& address) {
  return ntohl(::inet_addr(address.c_str()));
}

/// The text of an address.
struct DottedQuad {
  char text[INET_ADDRSTRLEN];
};

/// The text of an address in host byte order.
[[nodiscard]] inline DottedQuad ToDottedQuad(uint32_t address) {
  const in_addr network_order = {htonl(address)};
  DottedQuad quad = {};
  ::inet_ntop(AF_INET, &network_order, quad.text, sizeof(quad.text));
  return quad;
}

}  // namespace mox::vendor::qcom::qcmap
