/// The one instance: what its first call does, allocations that fail, what its end releases.
#include <memory>
#include <new>
#include <thread>

#include "world.h"

namespace {

void DeleteInstance() {
  delete QcmapWrapper::s_ins_;
  QcmapWrapper::s_ins_ = nullptr;
}

TEST(Lifecycle, OnlyTheFirstCallAttempts) {
  for (const int pid : {1, -1}) {
    Script script(pid);
    QcmapWrapper* const instance = QcmapWrapper::GetInstance();
    EXPECT_EQ(QcmapWrapper::GetInstance(), instance);
    EXPECT_EQ(QcmapWrapper::s_ins_, instance);
    EXPECT_EQ(script.utility_calls.size(), 1u) << "probes";
    EXPECT_EQ(script.live_clients, pid > 0 ? 1 : 0);
    DeleteInstance();
  }
}

TEST(Lifecycle, FailedAllocationLeavesNothingBehind) {
  int n = 1;
  for (bool failed = true; failed && n <= 20; ++n) {
    SCOPED_TRACE("allocation " + std::to_string(n));
    Script script;
    try {
      const Allocations allocations(n);
      failed = false;
      QcmapWrapper::GetInstance();
    } catch (const std::bad_alloc&) {
      failed = true;
      EXPECT_EQ(QcmapWrapper::s_ins_, nullptr);
      EXPECT_EQ(script.live_clients, 0);
    }
    EXPECT_TRUE(QcmapWrapper::GetInstance()->ActivateLan());
    DeleteInstance();
  }
  EXPECT_LE(n, 20) << "an allocation fails each time";
  EXPECT_GE(n, 5) << "the object, the name of the server and the client are allocated";
}

TEST(Lifecycle, EndReleasesTheClientThenTheSubscribers) {
  Script script;
  QcmapWrapper* const instance = QcmapWrapper::GetInstance();
  int live = -1;
  const auto note = [&](int*) { live = script.live_clients; };
  Subscribe(*instance, &live, [owned = std::shared_ptr<int>(&live, note)](EventDic&) {});
  EXPECT_EQ(live, -1);
  delete instance;
  EXPECT_EQ(live, 0) << "clients when the subscriber is destroyed";
  EXPECT_EQ(QcmapWrapper::s_ins_, instance);
  QcmapWrapper::s_ins_ = nullptr;
}

TEST(ThreadsLifecycle, InstanceServesAllThreadsAndOneListOrConfigurationAtATime) {
  World world;
  std::atomic<int> running{0}, overlaps{0};
  for (const char* const request : {"GetWWANPolicyList", "GetNetworkConfiguration"}) {
    world.script.before[request] = [&] {
      overlaps += running++ != 0;
      std::this_thread::yield();
      --running;
    };
  }
  std::vector<std::thread> threads;
  for (int i = 0; i < 8; ++i) {
    threads.emplace_back([] {
      std::vector<DataManager::WwanPolicy> policies;
      DataManager::NetworkConfig config;
      QcmapWrapper& wrapper = *QcmapWrapper::GetInstance();
      for (int n = 0; n < 100; ++n) {
        EXPECT_TRUE(wrapper.ActivateLan());
        EXPECT_TRUE(wrapper.GetWwanPolicies(policies));
        EXPECT_EQ(wrapper.GetNetworkConfig(0, IPFamily::IPV4, config), Result::SUCCESS);
      }
    });
  }
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(overlaps, 0);
}

}  // namespace
