/// The connection: outcomes of an attempt, and attempts that race.
#include <future>
#include <thread>

#include "session.h"

namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;

constexpr char kStep[] = "bool @ConnectToQcmapIfNeeded()";

TEST(Connection, AttemptsUntilOneSucceeds) {
  struct {
    int pid;
    std::string refused;
    int ap_status;
    bool connected;
  } const rows[] = {{-1, "", 1, false},    {4711, "GetMobileAPStatus", 1, false},
                    {4711, "", 0, false},  {4711, "", 2, false},
                    {4711, "", -1, false}, {0, "EnableMobileAP", 1, true}};
  for (const auto& row : rows) {
    SCOPED_TRACE("pid " + std::to_string(row.pid) + " status " + std::to_string(row.ap_status));
    Session session(-1);
    session.script.pid = row.pid;
    session.script.ap_status = static_cast<qcmap_msgr_mobile_ap_status_enum_v01>(row.ap_status);
    if (!row.refused.empty()) session.script.Refuse(row.refused);
    for (int made = 1; made <= 2; ++made) {
      session.Forget();
      EXPECT_EQ(session.wrapper.ConnectToQcmapIfNeeded(), row.connected);
      EXPECT_EQ(session.script.live_clients, row.connected ? 1 : 0);
      if (row.connected && made == 2) {
        EXPECT_THAT(TakeLog(), ElementsAre()) << "nothing is done once connected";
        continue;
      }
      Lines log = {Line(7, "bool @IsQcmapAlive()",
                        "QCMAP_ConnectionManager pid " + std::to_string(row.pid) + "\n")};
      if (row.pid < 0) log.push_back(Line(4, kStep, "QCMAP server is not alive"));
      if (row.connected) {
        log.push_back(Line(3, kStep, "MobileAP Enable failed err [59]\n"));
        log.push_back(Line(7, kStep, "Mobile AP is Connected\n"));
      } else if (row.pid >= 0) {
        log.push_back(Line(4, kStep, "It's not connected delete it\n"));
        log.push_back(Line(7, kStep, "Mobile AP is Disconnected\n"));
      }
      EXPECT_THAT(TakeLog(), ElementsAreArray(log));
      EXPECT_THAT(session.script.utility_calls,
                  ElementsAre("GetPidByProcessName QCMAP_ConnectionManager 200"));
      EXPECT_EQ(session.script.clients_made, row.pid < 0 ? 0 : made);
      EXPECT_THAT(
          session.script.TakeRequests(),
          ElementsAreArray(row.pid < 0 ? Lines() : Lines{"EnableMobileAP", "GetMobileAPStatus"}));
    }
  }
}

TEST(ThreadsConnection, OneAttemptsAndTheOthersFailAtOnce) {
  Session session(-1);
  session.script.pid = 4711;
  std::promise<void> parked, release;
  session.script.before["GetMobileAPStatus"] = [&] {
    parked.set_value();
    release.get_future().wait();
  };
  auto attempt = std::async(std::launch::async, [&] { return session.wrapper.ActivateLan(); });
  parked.get_future().wait();
  TakeLog();
  std::vector<std::future<bool>> others;
  for (int i = 0; i < 8; ++i) {
    others.push_back(std::async(std::launch::async, [&] { return session.wrapper.ActivateLan(); }));
  }
  for (auto& other : others) EXPECT_FALSE(other.get());
  EXPECT_THAT(TakeLog(), ElementsAre());
  release.set_value();
  EXPECT_TRUE(attempt.get());
  EXPECT_EQ(session.script.clients_made, 1);
  EXPECT_EQ(session.script.utility_calls.size(), 1u) << "probes";
}

// Attempts fail and succeed in turn while indications arrive all the time.
TEST(ThreadsConnection, LeavesOneClientOrNone) {
  for (int round = 0; round < 200; ++round) {
    Session session(-1);
    session.script.pid = 4711;
    if (round % 2 == 0) session.script.Refuse("GetMobileAPStatus");
    std::atomic<bool> done{false};
    std::thread indications([&] {
      while (!done)
        session.script.Indicate(0x22, qcmap_msgr_bring_up_wwan_ind_msg_v01{{77, 3, {}, 1, 5}, {}});
    });
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) threads.emplace_back([&] { session.wrapper.ChangeWwanProfile(1); });
    for (auto& thread : threads) thread.join();
    done = true;
    indications.join();
    ASSERT_EQ(session.script.live_clients, round % 2);
    ASSERT_EQ(session.wrapper.ConnectToQcmapIfNeeded(), round % 2 == 1);
    TakeLog();
  }
}

TEST(ThreadsConnection, InstanceServesAllThreads) {
  Script script;
  QcmapWrapper* const instance = QcmapWrapper::GetInstance();
  std::vector<std::future<bool>> threads;
  for (uint32_t i = 0; i < 8; ++i) {
    threads.push_back(std::async(std::launch::async, [&, i] {
      std::vector<DataManager::WwanPolicy> policies;
      DataManager::NetworkConfig config;
      bool all = true;
      for (uint32_t n = 0; n < 50; ++n) {
        QcmapWrapper& wrapper = *QcmapWrapper::GetInstance();
        all &= &wrapper == instance && wrapper.GetWwanPolicies(policies) && policies.size() == 3 &&
               wrapper.GetNetworkConfig((i + n) % 3, IPFamily::IPV4, config) == Result::SUCCESS;
      }
      return all;
    }));
  }
  for (auto& thread : threads) EXPECT_TRUE(thread.get());
  delete instance;
  QcmapWrapper::s_ins_ = nullptr;
}

}  // namespace
