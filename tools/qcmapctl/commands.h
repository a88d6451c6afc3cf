/// The tool's objects, each with all its verbs in one file.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "arguments.h"
#include "command_line.h"
#include "output.h"
#include "router.h"

namespace qcmapctl {

void AddStatus(CommandLine& line);
void AddPolicy(CommandLine& line);
void AddSwitch(CommandLine& line);
void AddCall(CommandLine& line);
void AddStats(CommandLine& line);
void AddAddress(CommandLine& line);
void AddLan(CommandLine& line);
void AddVlan(CommandLine& line);
void AddMap(CommandLine& line);
void AddPassthrough(CommandLine& line);
void AddWatch(CommandLine& line);
void AddWait(CommandLine& line);

/// The whole picture, which a bare qcmapctl shows.
void ShowStatus(Context& context);

/// Prints a command's result, unless -q asks for none.
void Finish(const Context& context, const Report& report);

// What the objects show of each other.

Report DescribeLan(Router& router);
Report DescribeVlans(Router& router);
Report DescribePassthrough(Router& router);
Json DescribePolicy(const Profile& profile);

}  // namespace qcmapctl
