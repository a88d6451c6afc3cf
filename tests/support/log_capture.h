/// Takes the place of syslog and keeps what was logged.
#pragma once

#include <string>
#include <vector>

/// A log line as TakeLog returns it: "PRIORITY SIGNATURE: TEXT". `signature` is spelled as GCC
/// spells it, with '@' for the wrapper class's qualified name. Clang spells types and scopes
/// differently, so in its builds both functions reduce a signature to the operation's name.
std::string Line(int priority, std::string signature, const std::string& text);

/// The lines that all threads have logged since the last call. Fails the test if a line lacks the
/// common head or if, in GCC's builds, the number in the head is not that of a SYSLOG( whose text
/// is one literal.
std::vector<std::string> TakeLog();
