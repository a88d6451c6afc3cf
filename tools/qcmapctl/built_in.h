/// Files that are built into the program, so that what it says of itself cannot differ from them.
#pragma once

namespace qcmapctl {

/// docs/log-lines.md
extern const char kLogPage[];
/// qcmapctl.schema.json
extern const char kSchema[];

}  // namespace qcmapctl
