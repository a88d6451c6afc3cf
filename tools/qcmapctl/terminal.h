/// Fits text to the terminal that shows it.
#pragma once

#include <optional>
#include <string>

namespace qcmapctl {

/// AUTO is the usual one.
enum class Colour { AUTO, ALWAYS, NEVER };

/// `text` with each control character replaced by '?', so that it cannot affect a terminal.
std::string Printable(std::string text);

/// Marks `text` to be shown in colour if it says that something is up, down or half up.
std::string Colourful(const std::string& text);

/// How many columns `text` takes. Marks take none.
size_t ColumnsOf(const std::string& text);

/// `text` as it is written to the descriptor `fd`: lines that are too long are wrapped at words,
/// and marks become colours or vanish. What is no terminal has 80 columns.
std::string Fit(const std::string& text, int fd, std::optional<Colour> colour = std::nullopt);

}  // namespace qcmapctl
