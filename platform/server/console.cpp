/// Waits for lines on standard input and runs them one after the other.
#include "server/console.h"

#include <unistd.h>

#include <cstdio>

namespace sim {
namespace {

constexpr size_t kMaxLineBytes = 4096;

}  // namespace

// The descriptor is a copy. It stays in blocking mode, because other programs may share that mode,
// and so it is only read when there is something to read.
Console::Console(asio::io_context& io, ConsoleCommands& commands)
    : io_(io), commands_(commands), input_(io), pause_(io) {
  const int fd = ::dup(STDIN_FILENO);
  if (fd >= 0) input_.assign(fd);
}

void Console::Stop() {
  paused_ = true;
  input_.close();
}

void Console::WaitForInput() {
  if (!input_.is_open()) return;
  input_.async_wait(asio::posix::stream_descriptor::wait_read,
                    [this](const asio::error_code& error) {
                      // A plain file cannot be waited for, but it can always be read.
                      if (!error || error == asio::error::operation_not_supported) ReadInput();
                    });
}

void Console::ReadInput() {
  char bytes[1024];
  const ssize_t size = ::read(input_.native_handle(), bytes, sizeof bytes);
  if (size > 0) {
    unread_.append(bytes, static_cast<size_t>(size));
  } else {
    input_.close();
    if (!unread_.empty()) unread_ += '\n';
  }
  RunLines();
}

void Console::RunLines() {
  size_t end;
  while (!paused_ && (end = unread_.find('\n')) != std::string::npos) {
    const std::string line = unread_.substr(0, end);
    unread_.erase(0, end + 1);
    ++line_number_;
    RunLine(line);
  }
  if (paused_) return;
  if (unread_.size() > kMaxLineBytes) {
    std::fprintf(stderr, "console: line %u is too long, no more is read\n", line_number_ + 1);
    input_.close();
  }
  WaitForInput();
}

void Console::RunLine(const std::string& line) {
  const CommandResult result = commands_.Run(line);
  if (!result.error.empty())
    std::fprintf(stderr, "console: line %u: %s\n", line_number_, result.error.c_str());
  std::fputs(result.output.c_str(), stdout);
  std::fflush(stdout);
  if (result.pause) Sleep(*result.pause);
  if (result.quits) {
    Stop();
    io_.stop();
  }
}

void Console::Sleep(Milliseconds time) {
  paused_ = true;
  pause_.expires_after(time);
  pause_.async_wait([this](const asio::error_code& stopped) {
    if (stopped) return;
    paused_ = false;
    RunLines();
  });
}

}  // namespace sim
