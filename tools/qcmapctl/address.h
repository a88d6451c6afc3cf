/// address: the addresses of a profile's call.
#pragma once

#include "command_line.h"

namespace qcmapctl {

void AddAddress(CommandLine& line);

}  // namespace qcmapctl
