/// switch: what a profile's call is allowed to do.
#pragma once

#include "command_line.h"

namespace qcmapctl {

void AddSwitch(CommandLine& line);

}  // namespace qcmapctl
