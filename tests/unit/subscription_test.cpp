/// Subscribers: their order, what happens from within a callback, and who waits for whom.
#include <future>
#include <memory>
#include <stdexcept>
#include <thread>

#include "session.h"

namespace {

using testing::ElementsAre;

constexpr char kIgnored[] = "called from within a callback, ignored\n";

void Deliver() {
  qcmap_msgr_bring_up_wwan_ind_msg_v01 connected = {{0, 3, {}, 0, 0}, {}};
  QcmapWrapper::EvtCb(nullptr, 0x25, &connected, sizeof connected, nullptr);
}

TEST(Subscription, DeliversOneDictionaryFromTheLowestSubscriberUp) {
  Session session;
  int keys[4];
  Lines calls;
  const auto note = [&calls](const std::string& name) {
    return
        [&calls, name](EventDic& event) { calls.push_back(name + std::to_string(event.extra_++)); };
  };
  Subscribe(session.wrapper, &keys[3], note("last "));
  Subscribe(session.wrapper, &keys[1], note("replaced "));
  Subscribe(session.wrapper, &keys[2], nullptr);
  Subscribe(session.wrapper, &keys[1], note("second "));
  Subscribe(session.wrapper, &keys[0], note("first "));
  Deliver();
  EXPECT_THAT(calls, ElementsAre("first 0", "second 1", "last 2"));
  Unsubscribe(session.wrapper, &keys[1]);
  Unsubscribe(session.wrapper, &calls);
  calls.clear();
  Deliver();
  EXPECT_THAT(calls, ElementsAre("first 0", "last 1"));
}

TEST(Subscription, ChangesNothingFromWithinACallback) {
  Session session;
  int calls = 0;
  int other = 0;
  Subscribe(session.wrapper, &calls, [&](EventDic&) {
    ++calls;
    Unsubscribe(session.wrapper, &calls);
    Subscribe(session.wrapper, &other, [&](EventDic&) { ++other; });
    EXPECT_TRUE(session.wrapper.ActivateLan()) << "operations may be called";
  });
  TakeLog();
  Deliver();
  Lines log = TakeLog();
  ASSERT_EQ(log.size(), 4u);
  const std::string space = "void mox::vendor::qcom::qcmap::";
  EXPECT_EQ(log[2], Line(3, space + "Unsubscribe(QcmapWrapper&, void*)", kIgnored));
  EXPECT_EQ(
      log[3],
      Line(3, space + "Subscribe(QcmapWrapper&, void*, std::function<void(mox::util::EventDic&)>)",
           kIgnored));
  Deliver();
  EXPECT_EQ(calls, 2);
  EXPECT_EQ(other, 0);
  Unsubscribe(session.wrapper, &calls);
  Deliver();
  EXPECT_EQ(calls, 2);
}

TEST(Subscription, ExceptionLeavesTheCallbackWithTheLockFree) {
  Session session;
  int keys[3];
  for (int thrower = 0; thrower < 3; ++thrower) {
    int calls = 0;
    bool throws = true;
    for (int i = 0; i < 3; ++i) {
      Subscribe(session.wrapper, &keys[i], [&, i](EventDic&) {
        ++calls;
        if (throws && i == thrower) throw std::runtime_error("subscriber");
      });
    }
    EXPECT_THROW(Deliver(), std::runtime_error);
    EXPECT_EQ(calls, thrower + 1);
    throws = false;
    Deliver();
    EXPECT_EQ(calls, thrower + 4);
  }
  TakeLog();
}

// What a callback owns may itself unsubscribe when it goes.
TEST(Subscription, DestroysCallbacksOutsideTheLock) {
  Session session;
  int key = 0;
  int gone = 0;
  const auto owner = [&] {
    return std::shared_ptr<int>(&gone, [&](int* count) {
      ++*count;
      Unsubscribe(session.wrapper, count);
    });
  };
  Subscribe(session.wrapper, &key, [owned = owner()](EventDic&) {});
  Subscribe(session.wrapper, &key, [owned = owner()](EventDic&) {});
  EXPECT_EQ(gone, 1);
  Unsubscribe(session.wrapper, &key);
  EXPECT_EQ(gone, 2);
}

TEST(ThreadsSubscription, UnsubscribeWaitsForADeliveryUnderWay) {
  Session session;
  std::promise<void> parked, release;
  bool finished = false;
  Subscribe(session.wrapper, &finished, [&](EventDic&) {
    parked.set_value();
    release.get_future().wait();
    finished = true;
  });
  std::thread delivery(Deliver);
  parked.get_future().wait();
  auto unsubscribed = std::async(std::launch::async, [&] {
    Unsubscribe(session.wrapper, &finished);
    return finished;
  });
  EXPECT_EQ(unsubscribed.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout);
  release.set_value();
  EXPECT_TRUE(unsubscribed.get());
  delivery.join();
}

TEST(ThreadsSubscription, NothingRunsAfterUnsubscribe) {
  Session session;
  std::atomic<bool> done{false};
  std::thread delivery([&] {
    while (!done) Deliver();
  });
  std::vector<std::future<void>> threads;
  for (int i = 0; i < 3; ++i) {
    threads.push_back(std::async(std::launch::async, [&] {
      for (int n = 0; n < 500; ++n) {
        auto calls = std::make_unique<int>(0);
        int* const counted = calls.get();
        Subscribe(session.wrapper, counted, [counted](EventDic&) { ++*counted; });
        Unsubscribe(session.wrapper, counted);
      }
    }));
  }
  for (auto& thread : threads) thread.get();
  done = true;
  delivery.join();
  TakeLog();
}

}  // namespace
