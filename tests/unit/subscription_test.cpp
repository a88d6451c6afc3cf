/// Subscribers: their order, what happens from within a callback, and who waits for whom.
#include <unistd.h>

#include <memory>
#include <stdexcept>
#include <thread>

#include "process.h"
#include "world.h"

namespace {

void Deliver() {
  qcmap_msgr_bring_up_wwan_ind_msg_v01 connected = {
      {0, QCMAP_MSGR_WWAN_STATUS_CONNECTED_V01, {}, 0, 0}, {}};
  QcmapWrapper::EvtCb(nullptr, QMI_QCMAP_MSGR_WWAN_STATUS_IND_V01, &connected, sizeof connected,
                      nullptr);
}

TEST(Subscription, DeliversOneDictionaryFromTheLowestSubscriberUp) {
  World world;
  int keys[4];
  std::string calls;
  const auto note = [&](char name) {
    return [&calls, name](EventDic& event) { calls += name + std::to_string(event.extra_++); };
  };
  Subscribe(world.wrapper, &keys[3], note('d'));
  Subscribe(world.wrapper, &keys[1], note('x'));
  Subscribe(world.wrapper, &keys[2], nullptr);
  Subscribe(world.wrapper, &keys[1], note('b'));
  Subscribe(world.wrapper, &keys[0], note('a'));
  Deliver();
  EXPECT_EQ(calls, "a0b1d2");
  Unsubscribe(world.wrapper, &keys[1]);
  Unsubscribe(world.wrapper, &calls);
  Deliver();
  EXPECT_EQ(calls, "a0b1d2a0d1");
}

TEST(Subscription, ChangesNothingFromWithinACallback) {
  World world;
  int calls = 0, other = 0;
  Subscribe(world.wrapper, &calls, [&](EventDic&) {
    ++calls;
    Unsubscribe(world.wrapper, &calls);
    Subscribe(world.wrapper, &other, [&](EventDic&) { ++other; });
    EXPECT_TRUE(world.wrapper.ActivateLan()) << "operations may be called";
  });
  Deliver();
  const Lines log = TakeLog();
  const std::string space = "void mox::vendor::qcom::qcmap::",
                    text = "called from within a callback, ignored\n";
  EXPECT_EQ(log.at(2), Line(3, space + "Unsubscribe(QcmapWrapper&, void*)", text));
  EXPECT_EQ(
      log.at(3),
      Line(3, space + "Subscribe(QcmapWrapper&, void*, std::function<void(mox::util::EventDic&)>)",
           text));
  Deliver();
  Unsubscribe(world.wrapper, &calls);
  Deliver();
  EXPECT_EQ(calls, 2);
  EXPECT_EQ(other, 0);
}

TEST(Subscription, ExceptionLeavesTheCallbackWithTheLockFree) {
  World world;
  int keys[3], calls = 0;
  for (int& key : keys) {
    Subscribe(world.wrapper, &key, [&](EventDic&) {
      if (++calls == 2) throw std::runtime_error("subscriber");
    });
  }
  EXPECT_THROW(Deliver(), std::runtime_error);
  EXPECT_EQ(calls, 2) << "the third is not called";
  Deliver();
  EXPECT_EQ(calls, 5);
}

// What a callback owns may itself unsubscribe in its destructor.
TEST(Subscription, DestroysCallbacksOutsideTheLock) {
  World world;
  int key = 0, gone = 0;
  const auto unsubscribe = [&](int* count) {
    ++*count;
    Unsubscribe(world.wrapper, count);
  };
  for (int i = 0; i < 2; ++i) {
    Subscribe(world.wrapper, &key,
              [owned = std::shared_ptr<int>(&gone, unsubscribe)](EventDic&) {});
    EXPECT_EQ(gone, i);
  }
  Unsubscribe(world.wrapper, &key);
  EXPECT_EQ(gone, 2);
}

TEST(ThreadsSubscription, ChangesWaitForADeliveryUnderWay) {
  using Change = void (*)(World&, void*);
  const Change unsubscribe = [](World& world, void* key) { Unsubscribe(world.wrapper, key); };
  const Change replace = [](World& world, void* key) { Subscribe(world.wrapper, key, nullptr); };
  for (const Change change : {unsubscribe, replace}) {
    World world;
    bool delivered = false;
    std::atomic<pid_t> id{0};
    std::atomic<bool> changed{false};
    std::thread other;
    Subscribe(world.wrapper, &delivered, [&](EventDic&) {
      other = std::thread([&] {
        id = gettid();
        change(world, &delivered);
        EXPECT_TRUE(delivered) << (change == replace ? "Subscribe" : "Unsubscribe") << " is early";
        changed = true;
      });
      while (!changed && (id == 0 || !IsAsleep(id))) std::this_thread::yield();
      delivered = true;
    });
    Deliver();
    other.join();
  }
}

}  // namespace
