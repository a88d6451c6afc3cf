/// The one instance: what its first call does, allocations that fail, what its end releases.
#include <memory>
#include <new>

#include "session.h"

namespace {

TEST(Lifecycle, OnlyTheFirstCallAttempts) {
  for (const int pid : {4711, -1}) {
    Script script(pid);
    QcmapWrapper* const instance = QcmapWrapper::GetInstance();
    const std::unique_ptr<QcmapWrapper> owner(instance);
    EXPECT_EQ(QcmapWrapper::GetInstance(), instance);
    EXPECT_EQ(QcmapWrapper::s_ins_, instance);
    EXPECT_EQ(script.utility_calls.size(), 1u) << "probes";
    EXPECT_EQ(script.live_clients, pid > 0 ? 1 : 0);
    QcmapWrapper::s_ins_ = nullptr;
  }
  TakeLog();
}

TEST(Lifecycle, FailedAllocationLeavesNothingBehind) {
  for (const bool and_after : {false, true}) {
    int n = 1;
    for (bool failed = true; failed; ++n) {
      SCOPED_TRACE("allocation " + std::to_string(n));
      Script script;
      try {
        const Allocations allocations(n, and_after);
        failed = false;
        QcmapWrapper::GetInstance();
      } catch (const std::bad_alloc&) {
        failed = true;
        EXPECT_EQ(QcmapWrapper::s_ins_, nullptr);
        EXPECT_EQ(script.live_clients, 0);
      }
      EXPECT_TRUE(QcmapWrapper::GetInstance()->ActivateLan());
      delete QcmapWrapper::s_ins_;
      QcmapWrapper::s_ins_ = nullptr;
    }
    EXPECT_GE(n, 5) << "object, name of the server and client were to fail";
  }
  TakeLog();
}

TEST(Lifecycle, EndReleasesTheClientThenTheSubscribers) {
  Script script;
  auto wrapper = std::make_unique<QcmapWrapper>();
  QcmapWrapper* const before = QcmapWrapper::s_ins_ = wrapper.get();
  int live = -1;
  const auto note = [&](int*) { live = script.live_clients; };
  Subscribe(*wrapper, &live, [owned = std::shared_ptr<int>(&live, note)](EventDic&) {});
  EXPECT_EQ(live, -1);
  wrapper.reset();
  EXPECT_EQ(live, 0) << "clients left when the subscriber went";
  EXPECT_EQ(QcmapWrapper::s_ins_, before);
  QcmapWrapper::s_ins_ = nullptr;
  TakeLog();
}

}  // namespace
