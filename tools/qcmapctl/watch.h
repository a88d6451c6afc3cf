/// watch: the present state of all calls, then their events as they come.
#pragma once

#include "command_line.h"

namespace qcmapctl {

void AddWatch(CommandLine& line);

}  // namespace qcmapctl
