/// How programs send commands to the server. A command is one datagram. Its answer is one or more,
/// and the first byte of each says what follows.
#pragma once

#include <cstdlib>
#include <string>

#include "protocol/socket_path.h"

namespace sim {

/// A part of the output, and more to come.
constexpr char kMoreFollows = '+';
/// The last part of the output of a command that has taken effect.
constexpr char kTookEffect = '=';
/// What is wrong with the command, which has changed nothing.
constexpr char kIsWrong = '!';

constexpr size_t kMaxCommandBytes = 4096;
constexpr size_t kMaxAnswerBytes = 32768;

/// Where the server whose socket is at `path` accepts commands.
inline std::string ControlPath(const std::string& path) {
  return path + ".control";
}
inline std::string DefaultControlPath() {
  const char* const path = std::getenv("QCMAP_CONTROL");
  return path != nullptr && *path != '\0' ? path : ControlPath(DefaultSocketPath());
}

}  // namespace sim
