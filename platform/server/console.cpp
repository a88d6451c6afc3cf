/// Waits for lines and runs them one after the other.
#include "server/console.h"

#include <fcntl.h>
#include <sys/epoll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace sim {
namespace {

constexpr size_t kReadBytes = 4096;
/// How long clients may have to wait for the lines of a script, apart from the last one.
constexpr Milliseconds kMaxTurn{1};
/// How often signals are looked for while the first line does not come.
constexpr Milliseconds kSignalPause{100};

}  // namespace

Console::Console(asio::io_context& io, int fd, Commands& commands, Output& output,
                 Complaints& complaints)
    : io_(io),
      commands_(commands),
      output_(output),
      complaints_(complaints),
      fd_(fd),
      own_fd_(ReopenWithoutBlocking(fd, O_RDONLY)),
      input_(io, fd, EPOLLIN),
      next_line_(io, [this] { RunLines(); }) {
  unread_.reserve(kMaxCommandBytes + kReadBytes + 1);
}

void Console::Arm() {
  if (HasLine()) {
    next_line_.Set(commands_.HasReached(awaited_) ? next_line_at_ : kNever);
  } else if (!has_ended_) {
    input_.Wait([this] {
      Read(own_fd_.IsOpen() ? own_fd_.Get() : fd_);
      RunLines();
    });
  }
}

void Console::Read(int fd) {
  char bytes[kReadBytes];
  const ssize_t size = ::read(fd, bytes, sizeof bytes);
  if (size < 0 && errno == EAGAIN) return;
  if (size > 0) {
    unread_.append(bytes, static_cast<size_t>(size));
  } else {
    has_ended_ = true;
    if (!unread_.empty() || discards_line_) unread_ += '\n';
  }
  DiscardLongLine();
}

void Console::DiscardLongLine() {
  const size_t end = unread_.find('\n');
  if (!discards_line_ && std::min(end, unread_.size()) > kMaxCommandBytes) {
    Complain("is too long");
    discards_line_ = true;
  }
  if (!discards_line_) return;
  discards_line_ = end == std::string::npos;
  if (!discards_line_) ++line_number_;
  unread_.erase(0, discards_line_ ? end : end + 1);
}

void Console::RunFirstLines() {
  throws_ = true;
  while (MayRun() && !io_.stopped() && (HasLine() || !has_ended_)) {
    if (HasLine()) {
      RunLine();
    } else {
      if (Poll(fd_, POLLIN, kSignalPause) != 0) Read(fd_);
      io_.poll();  // for signals
    }
  }
  throws_ = false;
}

void Console::RunLines() {
  const auto start = Clock::now();
  while (HasLine() && MayRun() && !io_.stopped() && Clock::now() - start < kMaxTurn) RunLine();
}

void Console::RunLine() {
  const size_t end = unread_.find('\n');
  try {
    Run(unread_.substr(0, end));
  } catch (const WrongCommand&) {
    throw;
  } catch (...) {
    Complain("could not be carried out");
  }
  ++line_number_;
  unread_.erase(0, end + 1);
}

void Console::Run(const std::string& line) {
  const CommandResult result = commands_.Run(line);
  if (!result.error.empty()) Complain(result.error);
  output_.Print(result.output);
  if (result.pause) next_line_at_ = Clock::now() + *result.pause;
  if (result.awaited) awaited_ = *result.awaited;
  if (result.quits) io_.stop();
}

void Console::Complain(std::string_view what) {
  if (throws_)
    throw WrongCommand("line " + std::to_string(line_number_) + ": " + std::string(what));
  try {
    complaints_.Add("line " + std::to_string(line_number_) + ": " + std::string(what));
  } catch (const std::bad_alloc&) {
    complaints_.Add("out of memory");
  }
}

}  // namespace sim
