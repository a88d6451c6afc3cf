/// The server's standard output and standard error.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "server/event_loop.h"
#include "server/readiness.h"

namespace sim {

/// Writes lines to a descriptor and never waits for its reader. What the reader has not taken is
/// kept up to a limit. Lines beyond it are left out, and their number is printed in their place.
class Output : public Activity {
 public:
  Output(asio::io_context& io, int fd);

  /// `lines` are whole lines.
  void Print(std::string_view lines) noexcept;
  /// Gives the reader a moment to take what is left. For use when the server ends.
  void Finish() noexcept;
  void Arm() override;

 private:
  void Flush() noexcept;
  /// Returns -1 with errno EAGAIN where write(2) would block.
  ssize_t WriteSome();

  const int fd_;
  /// A descriptor of this process alone for the same pipe or terminal, if there is one.
  const Descriptor own_fd_;
  Readiness writable_;
  /// Its memory is reserved at the start, so printing needs none.
  std::string unsent_;
  unsigned lines_left_out_ = 0;
};

}  // namespace sim
