/// A LAN's IPv4 subnet and its DHCP range. All addresses are numbers in host byte order.
#pragma once

#include <cstdint>
#include <optional>

namespace sim {

struct Ipv4Range {
  uint32_t first, last;

  bool Has(uint32_t address) const { return first <= address && address <= last; }
};

struct Ipv4Subnet {
  uint32_t gateway;
  /// The addresses that hosts may have. The gateway is one of them.
  Ipv4Range hosts;

  /// Empty when the netmask has gaps or leaves no room for a second host, or when the gateway has
  /// the address of the network or of its broadcasts.
  static std::optional<Ipv4Subnet> Of(uint32_t gateway, uint32_t netmask) {
    const uint32_t host_bits = ~netmask;
    const bool has_gaps = (host_bits & (host_bits + 1)) != 0;
    if (netmask == 0 || has_gaps || host_bits < 3) return std::nullopt;
    const Ipv4Range hosts{(gateway & netmask) + 1, (gateway | host_bits) - 1};
    if (!hosts.Has(gateway)) return std::nullopt;
    return Ipv4Subnet{gateway, hosts};
  }

  /// The addresses above the gateway or those below it, whichever are more.
  Ipv4Range DhcpRange() const {
    const bool above = hosts.last - gateway >= gateway - hosts.first;
    return above ? Ipv4Range{gateway + 1, hosts.last} : Ipv4Range{hosts.first, gateway - 1};
  }

  /// Whether a DHCP server may hand out all addresses of `range`.
  bool AllowsDhcpRange(const Ipv4Range& range) const {
    return range.first <= range.last && hosts.Has(range.first) && hosts.Has(range.last) &&
           !range.Has(gateway);
  }
};

}  // namespace sim
