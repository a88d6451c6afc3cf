/// passthrough: IP passthrough, which hands the WWAN address to a USB host.
#pragma once

#include "command_line.h"
#include "output.h"
#include "router.h"

namespace qcmapctl {

void AddPassthrough(CommandLine& line);

Report ShowPassthrough(Router& router);

}  // namespace qcmapctl
