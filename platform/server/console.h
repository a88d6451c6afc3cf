/// Reads commands from standard input.
#pragma once

#include <string>

#include "server/alarm.h"
#include "server/complaints.h"
#include "server/console_commands.h"
#include "server/readiness.h"

namespace sim {

/// Carries out one command for each line. An error goes to stderr, with the number of its line. A
/// `sleep` holds back the lines after it, but not the server, which also runs on when the input
/// ends.
class Console : public Activity {
 public:
  Console(asio::io_context& io, ConsoleCommands& commands, Output& output, Complaints& complaints);
  ~Console();
  Console(const Console&) = delete;
  Console& operator=(const Console&) = delete;

  void Arm() override;

 private:
  void Read();
  /// Discards what has been read of a line that is too long. The rest of it is discarded as well
  /// when it comes.
  void DiscardLongLine();
  void RunLines();
  void RunLine(size_t end);
  void Run(const std::string& line);
  void Complain(std::string_view what) noexcept;

  asio::io_context& io_;
  ConsoleCommands& commands_;
  Output& output_;
  Complaints& complaints_;
  const int own_fd_;
  Readiness input_;
  bool has_ended_ = false;
  /// Rings when the next line is to be carried out.
  Alarm next_line_;
  Clock::time_point next_line_at_{};
  /// Its memory is reserved at the start, so reading needs none.
  std::string unread_;
  bool discards_line_ = false;
  unsigned line_number_ = 1;
};

}  // namespace sim
