/// The objects of the command line. Each is in the source that bears its name.
#pragma once

#include "command_line.h"

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
void AddExplain(CommandLine& line);

}  // namespace qcmapctl
