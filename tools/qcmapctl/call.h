/// call: a profile's data call, one family at a time.
#pragma once

#include "command_line.h"

namespace qcmapctl {

void AddCall(CommandLine& line);

}  // namespace qcmapctl
