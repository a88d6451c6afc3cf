/// mvq-qcmap-sim ctl: sends commands to a running server.
#pragma once

#include <string>
#include <vector>

/// Sends the command that the words form. With "-" as its only word, sends each line of standard
/// input, and stops at the first that is wrong. Prints the answers. Returns the exit status.
int SendCommands(const std::vector<std::string>& words);
