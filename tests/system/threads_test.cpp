/// What the threads and children of a program share: one session with the server.
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <future>

#include "client/turns.h"
#include "every_request.h"
#include "simulated_server.h"

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

using Threads = SimulatedServer;

TEST_F(Threads, AreServedInTheOrderOfTheirCalls) {
  constexpr uint8_t kThreads = 8;
  Start({"--profiles", "0"});
  ::setenv("QCMAP_TIMEOUT_MS", std::to_string(milliseconds(kPatience).count()).c_str(), 1);
  const auto client = std::make_unique<QCMAP_Client>(nullptr);
  ::unsetenv("QCMAP_TIMEOUT_MS");
  server_->Signal(SIGSTOP);
  std::vector<std::future<void>> threads;
  for (uint8_t number = 1; number <= kThreads; ++number) {
    std::atomic<pid_t> id{0};
    threads.push_back(std::async(std::launch::async, [&client, &id, number] {
      id = ::gettid();
      // Whoever asks again does so behind those that are waiting.
      for (const uint8_t of_round : {number, static_cast<uint8_t>(number + kThreads)})
        EXPECT_TRUE(client->CreateWWANPolicy({1, kFamily4, {of_round, of_round}, {}}, nullptr));
    }));
    ASSERT_TRUE(Eventually([&] { return id != 0 && IsAsleep(id); }));
  }
  server_->Signal(SIGCONT);
  for (auto& thread : threads) thread.get();
  qcmap_msgr_wwan_policy_list_resp_msg_v01 list{};
  ASSERT_TRUE(client->GetWWANPolicyList(&list, kAnything));
  ASSERT_EQ(list.policy_list_len, 2u * kThreads);
  for (uint8_t i = 0; i < kThreads; ++i)
    EXPECT_EQ(list.policy_list[i].policy.v4_profile_id[0], i + 1) << "served as number " << i + 1;
}

/// What a forked child reports by its exit status.
enum Child : int { kAsDocumented = 0, kRequestDidNotFail, kWrongError, kTooSlow };

Child UseInChild(std::unique_ptr<QCMAP_Client>& client) {
  const auto start = steady_clock::now();
  for (const Request& request : kEveryRequest) {
    qmi_error_type_v01 error{};
    if (request.send(*client, &error)) return kRequestDidNotFail;
    if (error != QMI_ERR_INTERNAL_V01) return kWrongError;
  }
  client.reset();
  return steady_clock::now() - start > std::chrono::seconds(1) ? kTooSlow : kAsDocumented;
}

TEST_F(Threads, AreUnharmedByForkedChildrenThatUseTheSession) {
  Start({"--console"});
  static std::atomic<int> received{0};
  auto client = std::make_unique<QCMAP_Client>([](auto...) { ++received; });
  std::atomic<bool> forking{true};
  std::atomic<int> failures{0}, requests{0};
  std::vector<std::future<void>> threads;
  for (int i = 0; i < 4; ++i)
    threads.push_back(std::async(std::launch::async, [&] {
      for (; forking; ++requests)
        if (!client->ActivateLAN(nullptr)) ++failures;
    }));
  for (int round = 1; round <= 100 && !HasFailure(); ++round) {
    const int before = requests;
    const pid_t child = ::fork();
    if (child == 0 && round % 2 == 0)  // fails if the program inherits a connection
      ::execl("/bin/sh", "sh", "-c", "! ls -l /proc/self/fd | grep socket:", nullptr);
    if (child == 0) ::_exit(UseInChild(client));
    int status = -1;
    if (!Eventually([&] { return ::waitpid(child, &status, WNOHANG) == child; })) {
      ::kill(child, SIGKILL);
      ::waitpid(child, &status, 0);
    }
    EXPECT_EQ(WIFEXITED(status) ? WEXITSTATUS(status) : -status, kAsDocumented)
        << "round " << round;
    EXPECT_TRUE(Eventually([&] { return requests > before; })) << "round " << round;
  }
  forking = false;
  for (auto& thread : threads) thread.get();
  EXPECT_EQ(failures, 0);
  Console("indicate 0x5e 1");
  EXPECT_TRUE(Eventually([&] { return received == 1; }));
}

TEST(Turns, CallerWhoseDeadlinePassesOrThreadIsCancelledLeavesTheQueue) {
  sim::Turns turns;
  const auto later = steady_clock::now() + kPatience;
  ASSERT_TRUE(turns.Take(later));
  auto patient = std::async(std::launch::async, [&] { return bool(sim::Turn(turns, later)); });
  EXPECT_FALSE(turns.Take(steady_clock::now() + milliseconds(20)));
  turns.Pass();
  EXPECT_TRUE(patient.get());
#ifdef __SANITIZE_ADDRESS__
  return;  // AddressSanitizer cannot follow the unwinding of a cancelled thread.
#endif
  for (int round = 0; round < 100; ++round) {
    ASSERT_TRUE(turns.Take(later)) << "round " << round;
    std::atomic<pid_t> id{0};
    std::thread cancelled([&] {
      id = ::gettid();
      const sim::Turn turn(turns, later);
    });
    Eventually([&] { return id != 0 && IsAsleep(id); });
    ::pthread_cancel(cancelled.native_handle());
    turns.Pass();  // maybe to the thread that is cancelled
    cancelled.join();
  }
  EXPECT_TRUE(turns.Take(later));
}

TEST_F(Threads, AndCallbacksUseTheLibraryAtTheSameTime) {
  Start({"--call-time", "1"});
  QcmapWrapper& wrapper = *QcmapWrapper::GetInstance();
  std::atomic<int> failed{0};
  Events events(wrapper, [&] {
    mox::wwan::DataManager::ConnectStatus v4, v6;
    if (!wrapper.GetWwanConnectStatus(0, v4, v6) || !wrapper.EnableIpv4(0)) ++failed;
  });
  std::thread other([&] {
    for (int round = 0; round < 200; ++round) failed += !wrapper.ActivateLan();
  });
  for (size_t round = 1; round <= 10; ++round) {
    EXPECT_EQ(wrapper.ConnectBackhaul(0, IPFamily::IPV4), Result::SUCCESS);
    EXPECT_EQ(events.WaitFor(4 * round - 2).size(), 4 * round - 2);
    EXPECT_EQ(wrapper.DisconnectBackhaul(0, IPFamily::IPV4), Result::SUCCESS);
    EXPECT_EQ(events.WaitFor(4 * round).size(), 4 * round);
  }
  other.join();
  EXPECT_EQ(failed, 0);
}

}  // namespace
