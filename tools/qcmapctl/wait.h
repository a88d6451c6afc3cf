/// wait: waits until a profile's call is in a state.
#pragma once

#include "command_line.h"

namespace qcmapctl {

void AddWait(CommandLine& line);

}  // namespace qcmapctl
