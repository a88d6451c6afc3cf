/// status: everything on one screen.
#pragma once

#include "command_line.h"
#include "output.h"
#include "router.h"

namespace qcmapctl {

void AddStatus(CommandLine& line);

Report ShowStatus(Router& router);

}  // namespace qcmapctl
