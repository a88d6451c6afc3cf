/// Takes the place of syslog and keeps what was logged.
#pragma once

#include <string>
#include <vector>

/// A log line as TakeLog gives it: "PRIORITY SIGNATURE: TEXT". An '@' in `signature` stands for the
/// wrapper class's qualified name.
std::string Line(int priority, std::string signature, const std::string& text);

/// What all threads have logged since the last call. A line that does not begin as every line must
/// fails the test.
std::vector<std::string> TakeLog();
