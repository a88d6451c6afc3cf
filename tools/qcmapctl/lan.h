/// lan: the gateway address of the LAN and its DHCP server.
#pragma once

#include "command_line.h"
#include "output.h"
#include "router.h"

namespace qcmapctl {

void AddLan(CommandLine& line);

Report ShowLan(Router& router);

}  // namespace qcmapctl
