/// Finds the names of fields in the schema of the documents.
#pragma once

#include <string>
#include <vector>

namespace qcmapctl {

/// The fields that `command`, such as "call show", prints, as -K and -g name them. In them, N
/// stands for a position in a list.
std::vector<std::string> FieldNamesOf(std::string command);

/// Throws CommandFailed unless `command` prints a field, or a list of values, of that name.
void RequireField(const std::string& command, const std::string& name);

}  // namespace qcmapctl
