/// map: which profile's call carries the traffic of a VLAN (PDN-to-VLAN mapping).
#pragma once

#include "command_line.h"

namespace qcmapctl {

void AddMap(CommandLine& line);

}  // namespace qcmapctl
