/// Data as shell variables and as single fields.
#pragma once

#include <string>
#include <vector>

#include "report.h"

namespace qcmapctl {

/// One NAME=VALUE for each value, quoted for the shell and separated by `separator`.
std::string KeyValues(const Json& data, char separator);

/// The values of `names`, separated by tabs: one line for an object, or for each object of an
/// array. Throws CommandFailed if there is no such field.
std::string Fields(const Json& data, const std::vector<std::string>& names);

}  // namespace qcmapctl
