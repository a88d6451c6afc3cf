/// Reads commands from standard input or from a file.
#pragma once

#include <string>
#include <string_view>

#include "server/alarm.h"
#include "server/commands.h"
#include "server/complaints.h"
#include "server/readiness.h"

namespace sim {

/// Carries out one command for each line. An error goes to stderr, with the number of its line. A
/// `sleep` or `advance` holds back the lines after it, but not the server, which also runs on when
/// the input ends.
class Console : public Activity {
 public:
  /// Reads from `fd`, which it does not close.
  Console(asio::io_context& io, int fd, Commands& commands, Output& output, Complaints& complaints);

  void Arm() override;
  /// Carries out the lines up to the first one that has to wait. The program at the other end of a
  /// pipe is waited for. Throws WrongCommand at the first line that is wrong.
  void RunFirstLines();

 private:
  bool HasLine() const { return unread_.find('\n') != std::string::npos; }
  bool MayRun() const { return next_line_at_ <= Clock::now() && commands_.HasReached(awaited_); }
  void Read(int fd);
  /// Discards what has been read of a line that is too long. The rest of it is discarded as well
  /// when it comes.
  void DiscardLongLine();
  void RunLines();
  void RunLine();
  void Run(const std::string& line);
  void Complain(std::string_view what);

  asio::io_context& io_;
  Commands& commands_;
  Output& output_;
  Complaints& complaints_;
  const int fd_;
  /// A descriptor of this process alone for the same pipe or terminal, if there is one.
  const Descriptor own_fd_;
  Readiness input_;
  bool has_ended_ = false;
  /// Rings when the next line is to be carried out.
  Alarm next_line_;
  Clock::time_point next_line_at_{};
  Timeline::Time awaited_{};
  /// Whether a complaint is thrown instead.
  bool throws_ = false;
  /// Its memory is reserved at the start, so reading needs none.
  std::string unread_;
  bool discards_line_ = false;
  unsigned line_number_ = 1;
};

}  // namespace sim
