/// Keeps the places of the standard streams.
#pragma once

#include <fcntl.h>
#include <unistd.h>

namespace sim {

/// Opens /dev/null in the place of each standard stream that is closed, so that no later descriptor
/// takes it.
inline void OpenStandardStreams() {
  for (const int fd : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    // A new descriptor takes the lowest place that is free, which is this one.
    if (::fcntl(fd, F_GETFD) < 0) ::open("/dev/null", O_RDWR);
  }
}

}  // namespace sim
