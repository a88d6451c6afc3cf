/// Tells what is wrong with a command line, and what was probably meant.
#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace qcmapctl {

/// The object or verb that was recognised last.
const CLI::App* InnermostOf(const CLI::App& app);

/// The names of `command` and of what it belongs to, as a user writes them.
std::string PathOf(const CLI::App* command);

/// Throws CommandFailed for an error that the parser of `app` has found.
[[noreturn]] void FailUsage(const CLI::App& app, const CLI::ParseError& error);

}  // namespace qcmapctl
