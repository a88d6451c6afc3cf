/// policy: the server's WWAN policies.
#pragma once

#include "command_line.h"
#include "output.h"
#include "router.h"

namespace qcmapctl {

void AddPolicy(CommandLine& line);

Json DescribePolicy(const Profile& profile);

}  // namespace qcmapctl
