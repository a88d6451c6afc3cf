/// The LAN side of the simulated modem.
#pragma once

#include <vector>

#include "protocol/messages.h"

namespace sim {

/// Holds what requests have set. They check it before they store it.
struct Lan {
  qcmap_msgr_lan_config_v01 config{0xC0A80A01, 0xFFFFFF00, 1, 0xC0A80A14, 0xC0A80AC8, 86400};
  bool active = false;
  std::vector<qcmap_msgr_vlan_config_v01> vlans;
  std::vector<qcmap_msgr_pdn_to_vlan_mapping_v01> mappings;
  Passthrough passthrough{};
};

}  // namespace sim
