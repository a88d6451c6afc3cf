/// The connection: outcomes of an attempt, and attempts that race.
#include <future>
#include <new>
#include <thread>

#include "world.h"

namespace {

constexpr char kStep[] = "bool @ConnectToQcmapIfNeeded()";

TEST(Connection, AttemptsUntilOneSucceeds) {
  const Lines absent = {Line(4, kStep, "QCMAP server is not alive")};
  const Lines refused = {Line(4, kStep, "It's not connected delete it\n"),
                         Line(7, kStep, "Mobile AP is Disconnected\n")};
  const Lines connected = {Line(3, kStep, "MobileAP Enable failed err [59]\n"),
                           Line(7, kStep, "Mobile AP is Connected\n")};
  struct Row {
    int pid;
    std::string refused;
    int ap_status;
    Lines log;
  };
  constexpr int kNoServer = -1, kServer = 1, kLowestPid = 0;
  constexpr int kUp = QCMAP_MSGR_MOBILE_AP_STATUS_CONNECTED_V01;
  constexpr int kDown = QCMAP_MSGR_MOBILE_AP_STATUS_DISCONNECTED_V01;
  constexpr int kUnknown = -1;
  const Row rows[] = {{kNoServer, "", kUp, absent},
                      {kServer, "GetMobileAPStatus", kUp, refused},
                      {kServer, "", kDown, refused},
                      {kServer, "", kUnknown, refused},
                      {kLowestPid, "EnableMobileAP", kUp, connected}};
  for (const Row& row : rows) {
    SCOPED_TRACE(Join("pid", row.pid, "status", row.ap_status, "refused:", row.refused));
    World world(-1);
    world.script.pid = row.pid;
    world.script.ap_status = static_cast<qcmap_msgr_mobile_ap_status_enum_v01>(row.ap_status);
    world.script.Refuse(row.refused);
    const bool connects = row.log == connected;
    for (int attempt = 1; attempt <= 2; ++attempt) {
      world.Forget();
      EXPECT_EQ(world.wrapper.ConnectToQcmapIfNeeded(), connects);
      EXPECT_EQ(world.script.live_clients, connects);
      const bool made = attempt == 1 || !connects;
      Lines log = row.log;
      log.insert(log.begin(), Line(7, "bool @IsQcmapAlive()",
                                   Join("QCMAP_ConnectionManager pid", row.pid) + "\n"));
      EXPECT_EQ(TakeLog(), made ? log : Lines());
      EXPECT_EQ(world.script.utility_calls,
                made ? Lines{"GetPidByProcessName QCMAP_ConnectionManager 200"} : Lines());
      // The status is requested with the error value that the enable request left.
      const Lines sent = {"EnableMobileAP",
                          connects ? "GetMobileAPStatus (error 59)" : "GetMobileAPStatus"};
      EXPECT_EQ(world.Sent(), made && row.pid >= 0 ? sent : Lines());
    }
  }
}

TEST(Connection, ComesBeforeTheArguments) {
  MobileapManager::VlanConfig vlan = {9, 1, -1};
  MobileapManager::IpPassthroughConfig host;
  World world(-1);
  for (const auto operation : {&QcmapWrapper::SetPdnToVlanMapping, &QcmapWrapper::SetVlanConfig,
                               &QcmapWrapper::DeleteVlanConfig}) {
    EXPECT_FALSE((world.wrapper.*operation)(vlan));
    EXPECT_EQ(TakeLog().back(), Line(4, kStep, "QCMAP server is not alive"));
  }
  EXPECT_FALSE(world.wrapper.SetIpPassthrough(true, host));
  EXPECT_EQ(world.script.utility_calls.size(), 4u) << "probes alone";
}

TEST(Connection, AttemptThatThrowsLeavesNoClient) {
  for (const char* const request : {"EnableMobileAP", "GetMobileAPStatus"}) {
    World world(-1);
    world.script.pid = 1;
    world.script.before[request] = [] { throw std::bad_alloc(); };
    EXPECT_THROW(world.wrapper.ActivateLan(), std::bad_alloc);
    EXPECT_EQ(world.script.live_clients, 0);
    world.script.before.clear();
    EXPECT_TRUE(world.wrapper.ActivateLan());
  }
}

// The attempt waits before it has a client, then after.
TEST(ThreadsConnection, OneAttemptsAndTheOthersFailAtOnce) {
  for (const char* const step : {"GetPidByProcessName", "GetMobileAPStatus"}) {
    World world(-1);
    world.script.pid = 1;
    std::promise<void> parked, release;
    world.script.before[step] = [&] {
      parked.set_value();
      release.get_future().wait();
    };
    const auto operation = [&] { return world.wrapper.ActivateLan(); };
    auto attempt = std::async(std::launch::async, operation);
    parked.get_future().wait();
    TakeLog();
    std::vector<std::future<bool>> others;
    for (int i = 0; i < 8; ++i) others.push_back(std::async(std::launch::async, operation));
    for (auto& other : others) EXPECT_FALSE(other.get()) << step;
    EXPECT_EQ(TakeLog(), Lines()) << step;
    release.set_value();
    EXPECT_TRUE(attempt.get()) << step;
    EXPECT_EQ(world.script.clients_made, 1);
    EXPECT_EQ(world.script.utility_calls.size(), 1u) << "probes";
  }
}

// Attempts fail and succeed in turn while indications arrive all the time.
TEST(ThreadsConnection, LeavesOneClientOrNone) {
  const qcmap_msgr_bring_up_wwan_ind_msg_v01 connected = {
      {77, QCMAP_MSGR_WWAN_STATUS_CONNECTED_V01, {}, 1, 5}, {}};
  for (int round = 0; round < 100; ++round) {
    World world(-1);
    world.script.pid = 1;
    if (round % 2 == 0) world.script.Refuse("GetMobileAPStatus");
    std::atomic<bool> done{false};
    std::thread indications([&] {
      while (!done) world.script.Indicate(QMI_QCMAP_MSGR_BRING_UP_WWAN_IND_V01, connected);
    });
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) threads.emplace_back([&] { world.wrapper.ChangeWwanProfile(1); });
    for (auto& thread : threads) thread.join();
    done = true;
    indications.join();
    ASSERT_EQ(world.script.live_clients, round % 2);
  }
}

}  // namespace
