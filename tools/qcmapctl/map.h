/// map: the profile through whose call a VLAN's traffic goes (PDN-to-VLAN mapping).
#pragma once

#include "command_line.h"

namespace qcmapctl {

void AddMap(CommandLine& line);

}  // namespace qcmapctl
