/// What a client writes to the system log when it loses its server or does not trust it.
#include <sys/socket.h>
#include <sys/un.h>
#include <syslog.h>
#include <unistd.h>

#include <cstdarg>

#include "every_request.h"
#include "simulated_server.h"

namespace {

std::mutex mutex;
std::vector<std::string> lines;

/// Keeps a line of the client. The library's lines do not begin with this name.
[[gnu::format(printf, 2, 0)]] void Keep(int priority, const char* format, va_list arguments) {
  char text[512];
  std::vsnprintf(text, sizeof text, format, arguments);
  const std::lock_guard<std::mutex> lock(mutex);
  if (std::string(text).rfind("QCMAP_Client: ", 0) == 0)
    lines.push_back(std::to_string(priority) + " " + text);
}

}  // namespace

// These take the place of syslog, also for the client's library. A fortified build calls the
// second.
extern "C" __attribute__((visibility("default"), format(printf, 2, 3))) void syslog(
    int priority, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  Keep(priority, format, arguments);
  va_end(arguments);
}
extern "C" __attribute__((visibility("default"), format(printf, 3, 4))) void __syslog_chk(
    int priority, int, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  Keep(priority, format, arguments);
  va_end(arguments);
}

namespace {

class Loss : public SimulatedServer {
 protected:
  Loss() { TakeLines(); }
  static std::vector<std::string> TakeLines() {
    const std::lock_guard<std::mutex> lock(mutex);
    return std::exchange(lines, {});
  }
  static bool HasLine() {
    const std::lock_guard<std::mutex> lock(mutex);
    return !lines.empty();
  }
  static constexpr auto kIgnore = [](auto...) {};
};

TEST_F(Loss, IsLoggedOnceWhenItHappensAndNotAtTheEndOfTheSession) {
  const std::vector<std::string> lost = {
      std::to_string(LOG_ERR) +
      " QCMAP_Client: lost the server, every request fails from now on\n"};
  ::setenv("QCMAP_TEST_STEP", "carried-out:close:ActivateLAN", 1);
  Start();
  ::unsetenv("QCMAP_TEST_STEP");
  {
    const QCMAP_Client ended(kIgnore);
    QCMAP_Client cut_off(kIgnore);
    EXPECT_FALSE(cut_off.ActivateLAN(kAnything));
    EXPECT_TRUE(Eventually(HasLine));
  }
  EXPECT_EQ(TakeLines(), lost) << "of the client that was cut off";
  QCMAP_Client left_alone(kIgnore);
  EXPECT_TRUE(left_alone.ActivateLAN(kAnything));
  server_.reset();
  EXPECT_TRUE(Eventually(HasLine)) << "without a request";
  EXPECT_FALSE(left_alone.ActivateLAN(kAnything));
  EXPECT_EQ(TakeLines(), lost);
}

TEST_F(Loss, ServerOfAnotherUserIsNamedInTheLog) {
  constexpr uid_t kNobody = 65534;
  if (::geteuid() != 0) GTEST_SKIP() << "only root can listen as another user";
  std::filesystem::create_directory(directory_ + "/made");
  sockaddr_un address{AF_UNIX, {}};
  path_.copy(address.sun_path, sizeof address.sun_path - 1);
  const int fd = ::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0);
  ASSERT_EQ(::bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
  ASSERT_EQ(::seteuid(kNobody), 0);
  EXPECT_EQ(::listen(fd, 1), 0);
  ASSERT_EQ(::seteuid(0), 0);
  EXPECT_EQ(QCMAP_Client(kIgnore).mobile_ap_handle, 0u);
  ::close(fd);
  EXPECT_EQ(TakeLines(),
            std::vector<std::string>{std::to_string(LOG_ERR) + " QCMAP_Client: the server at " +
                                     path_ + " belongs to user 65534 and is not used\n"});
}

}  // namespace
