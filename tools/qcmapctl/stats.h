/// stats: the traffic counters of a profile's call.
#pragma once

#include "command_line.h"

namespace qcmapctl {

void AddStats(CommandLine& line);

}  // namespace qcmapctl
