/// What a client writes to the system log when it loses its server or does not trust it.
#include <fcntl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <syslog.h>
#include <unistd.h>

#include "every_request.h"
#include "simulated_server.h"

namespace {

const std::string kLost = "test: QCMAP_Client: lost the server, every request fails from now on\n";

/// Has syslog copy the lines of errors, and of nothing less, to a file.
class Loss : public SimulatedServer {
 protected:
  Loss() {
    const int file = ::open(log_.c_str(), O_CREAT | O_WRONLY | O_APPEND | O_CLOEXEC, 0600);
    ::dup2(file, STDERR_FILENO);
    ::close(file);
    ::openlog("test", LOG_PERROR, LOG_USER);
    ::setlogmask(LOG_MASK(LOG_ERR));
  }
  ~Loss() override {
    ::openlog("test", 0, LOG_USER);
    ::dup2(stderr_, STDERR_FILENO);
    ::close(stderr_);
  }
  std::string Log() const { return ReadFile(log_); }
  static constexpr auto kIgnore = [](auto...) {};

 private:
  const int stderr_ = ::fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 0);
};

TEST_F(Loss, IsLoggedOnceWhenItHappensAndNotAtTheEndOfTheSession) {
  Start();
  Control("die OpenSession before");
  EXPECT_EQ(QCMAP_Client(kIgnore).mobile_ap_handle, 0u);
  Start();
  for (int i = 0; i < 20; ++i) EXPECT_TRUE(QCMAP_Client(kIgnore).ActivateLAN(kAnything));
  QCMAP_Client asking(kIgnore), left_alone(kIgnore), without_thread(nullptr);
  EXPECT_EQ(Log(), "") << "of a client that opened no session and those that have ended theirs";
  Control("die ActivateLAN before");
  EXPECT_FALSE(asking.ActivateLAN(kAnything));
  EXPECT_TRUE(Eventually([&] { return Log() == kLost + kLost; })) << Log();
  for (auto* client : {&left_alone, &without_thread, &without_thread})
    EXPECT_FALSE(client->ActivateLAN(kAnything));
  EXPECT_EQ(Log(), kLost + kLost + kLost);
}

TEST_F(Loss, RootNamesAServerOfAnotherUserInTheLog) {
  constexpr uid_t kNobody = 65534;
  std::filesystem::create_directory(directory_ + "/made");
  sockaddr_un address{AF_UNIX, {}};
  path_.copy(address.sun_path, sizeof address.sun_path - 1);
  const int fd = ::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0);
  ASSERT_EQ(::bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
  if (::seteuid(kNobody) != 0) GTEST_SKIP() << "only root can listen as another user";
  EXPECT_EQ(::listen(fd, 1), 0);
  ASSERT_EQ(::seteuid(0), 0);
  EXPECT_EQ(QCMAP_Client(kIgnore).mobile_ap_handle, 0u);
  ::close(fd);
  EXPECT_EQ(Log(), "test: QCMAP_Client: the server at " + path_ +
                       " belongs to user 65534 and is not used\n");
}

}  // namespace
