/// Takes the place of syslog and keeps what was logged.
#pragma once

#include <string>
#include <vector>

/// A log line as TakeLog gives it: "PRIORITY SIGNATURE: TEXT". An '@' in `signature` stands for the
/// wrapper class's qualified name.
std::string Line(int priority, std::string signature, const std::string& text);

/// What all threads have logged since the last call. Fails the test when a line does not begin as
/// every line must, or when its number is not that of a SYSLOG( with its text as one literal.
std::vector<std::string> TakeLog();
