/// vlan: VLANs on the tethering interfaces.
#pragma once

#include "command_line.h"
#include "output.h"
#include "router.h"

namespace qcmapctl {

void AddVlan(CommandLine& line);

/// All VLANs with the profiles that they are mapped to.
Report ListVlans(Router& router);

}  // namespace qcmapctl
