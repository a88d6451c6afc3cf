/// Completes command lines for shells.
#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <string>
#include <vector>

namespace qcmapctl {

class Router;

/// The words that an option or a positional argument can take. May ask the server.
using Candidates = std::function<std::vector<std::string>(Router&)>;
void SetCandidates(const CLI::Option* option, Candidates candidates);

/// The words that can take the place of the last one of `words`, one on each line. Without a
/// server, those that only it knows are missing.
std::string Complete(const CLI::App& app, const std::vector<std::string>& words);

}  // namespace qcmapctl
