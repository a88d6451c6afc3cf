/// Checks the addresses of a LAN configuration and works out its DHCP range.
#include "mox/util/network_manager.h"

#include <arpa/inet.h>

#include <cctype>
#include <cstdint>
#include <optional>

#include "numbers/ipv4_subnet.h"

namespace mox::util {
namespace {

/// Parses a strict dotted quad into a number in host byte order. inet_pton refuses leading zeros,
/// blanks and short forms, which inet_addr would accept.
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

std::optional<sim::Ipv4Subnet> ParseSubnet(const std::string& gateway, const std::string& netmask) {
  uint32_t address, mask;
  if (!Parse(gateway, address) || !Parse(netmask, mask)) return std::nullopt;
  return sim::Ipv4Subnet::Of(address, mask);
}

}  // namespace

bool NetworkManager::IsValidAddress(std::string address, bool /*flag*/) {
  uint32_t parsed;
  return Parse(address, parsed);
}

bool NetworkManager::GetIpv4DhcpRange(std::string gateway, std::string netmask, std::string& start,
                                      std::string& end) {
  const auto subnet = ParseSubnet(gateway, netmask);
  if (!subnet) return false;
  start = ToText(subnet->DhcpRange().first);
  end = ToText(subnet->DhcpRange().last);
  return true;
}

bool NetworkManager::CheckIpv4DhcpRangeValidation(std::string gateway, std::string netmask,
                                                  std::string start, std::string end) {
  const auto subnet = ParseSubnet(gateway, netmask);
  sim::Ipv4Range range;
  return subnet && Parse(start, range.first) && Parse(end, range.last) &&
         subnet->AllowsDhcpRange(range);
}

// Six pairs of hexadecimal digits, separated by colons only or by dashes only.
bool NetworkManager::CheckIpv4MacValidation(std::string text) {
  if (text.size() != 17 || (text[2] != ':' && text[2] != '-')) return false;
  for (size_t i = 0; i < text.size(); ++i) {
    const auto c = static_cast<unsigned char>(text[i]);
    if (i % 3 == 2 ? text[i] != text[2] : std::isxdigit(c) == 0) return false;
  }
  return true;
}

}  // namespace mox::util
