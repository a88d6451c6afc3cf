/// Checks and derives the addresses of a LAN configuration.
#include "mox/util/network_manager.h"

#include <arpa/inet.h>

#include <cctype>
#include <cstdint>

namespace mox::util {
namespace {

/// A number in host byte order from a strict dotted quad: four decimal parts without leading zeros,
/// blanks or short forms (what inet_pton accepts, and inet_addr does not insist on).
bool Parse(const std::string& text, uint32_t& address) {
  in_addr parsed;
  if (text.find('\0') != std::string::npos) return false;
  if (::inet_pton(AF_INET, text.c_str(), &parsed) != 1) return false;
  address = ntohl(parsed.s_addr);
  return true;
}

std::string ToText(uint32_t address) {
  char text[INET_ADDRSTRLEN];
  const in_addr in_network_order{htonl(address)};
  return ::inet_ntop(AF_INET, &in_network_order, text, sizeof text);
}

/// The addresses that hosts of a subnet may have; the gateway is one of them.
struct Subnet {
  uint32_t gateway, first, last;

  bool Has(uint32_t address) const { return first <= address && address <= last; }
};

bool Parse(const std::string& gateway, const std::string& netmask, Subnet& subnet) {
  uint32_t mask;
  if (!Parse(gateway, subnet.gateway) || !Parse(netmask, mask)) return false;
  const uint32_t host_bits = ~mask;
  if (mask == 0 || (host_bits & (host_bits + 1)) != 0 || host_bits < 3) return false;
  subnet.first = (subnet.gateway & mask) + 1;
  subnet.last = (subnet.gateway | host_bits) - 1;
  return subnet.Has(subnet.gateway);
}

}  // namespace

bool NetworkManager::IsValidAddress(std::string address, bool /*flag*/) {
  uint32_t parsed;
  return Parse(address, parsed);
}

// The longer of the two stretches that the gateway's address leaves.
bool NetworkManager::GetIpv4DhcpRange(std::string gateway, std::string netmask, std::string& start,
                                      std::string& end) {
  Subnet subnet;
  if (!Parse(gateway, netmask, subnet)) return false;
  const bool above = subnet.last - subnet.gateway >= subnet.gateway - subnet.first;
  start = ToText(above ? subnet.gateway + 1 : subnet.first);
  end = ToText(above ? subnet.last : subnet.gateway - 1);
  return true;
}

bool NetworkManager::CheckIpv4DhcpRangeValidation(std::string gateway, std::string netmask,
                                                  std::string start, std::string end) {
  Subnet subnet;
  uint32_t from, to;
  if (!Parse(gateway, netmask, subnet) || !Parse(start, from) || !Parse(end, to)) return false;
  const bool spares_gateway = subnet.gateway < from || to < subnet.gateway;
  return subnet.Has(from) && subnet.Has(to) && from <= to && spares_gateway;
}

// Six pairs of hexadecimal digits, all parted by colons or all by dashes.
bool NetworkManager::CheckIpv4MacValidation(std::string text) {
  if (text.size() != 17 || (text[2] != ':' && text[2] != '-')) return false;
  for (size_t i = 0; i < text.size(); ++i) {
    const auto c = static_cast<unsigned char>(text[i]);
    if (i % 3 == 2 ? text[i] != text[2] : std::isxdigit(c) == 0) return false;
  }
  return true;
}

}  // namespace mox::util
