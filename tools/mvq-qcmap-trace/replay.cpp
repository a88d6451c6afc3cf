/// Plays a recording to the program.
#include "replay.h"

#include <algorithm>
#include <set>

namespace trace {
namespace {

/// So long after a call or a callback the program is taken to wait for what comes next.
constexpr int64_t kQuietUs = 20000;
/// A callback that takes longer may itself wait for a thread whose call waits for the callback. So
/// may one of several threads for another.
constexpr int64_t kPatienceUs = 200000;
/// A call that waits so much longer for its turn than in the recording is out of order.
constexpr int64_t kGiveUpUs = 10000000;

std::chrono::steady_clock::time_point TimePoint(int64_t us) {
  return std::chrono::steady_clock::time_point(std::chrono::microseconds(us));
}

}  // namespace

Replay::Replay(const std::string& path, bool fast, std::function<void()> on_difference,
               std::function<void(const Event&, uint32_t number)> deliver)
    : recording_(path),
      fast_(fast),
      on_difference_(std::move(on_difference)),
      deliver_(std::move(deliver)) {
  std::set<int> threads, callback_threads;
  for (const Event& event : recording_.events) {
    if (event.name == kIndication.name) callback_threads.insert(event.thread);
  }
  unsigned end = 0;
  for (const Event& event : recording_.events) {
    const auto turn = static_cast<unsigned>(calls_.size() + indications_.size());
    const bool is_call = event.name != kIndication.name;
    (is_call ? calls_ : indications_).push_back({&event, event.after, turn});
    if (!is_call) continue;
    one_by_one_ &= event.after >= end;
    one_thread_ &= event.thread == calls_.front().event->thread;
    if (callback_threads.count(event.thread) == 0) threads.insert(event.thread);
    end = turn + 1;
  }
  several_threads_ = threads.size() > 1;
  if (!recording_.events.empty()) delay_us_ = last_us_ - recording_.events.front().at_us;
  if (!one_by_one_) {
    for (Step& call : calls_) call.begin = call.end = 0;
    unsigned others = 0;
    for (Step& indication : indications_) indication.end -= others++;
  }
  const Lock lock(mutex_);
  std::thread thread([this] { DeliverAll(); });
  thread_ = thread.get_id();
  thread.detach();
}

Replay::Step* Replay::Find(const Event& call) {
  for (Step& step : calls_) {
    const Event& event = *step.event;
    if (step.is_taken) continue;
    // Clients of several threads may be made in another order.
    const bool is_same_client = event.client == call.client || several_threads_;
    if (event.name == call.name && is_same_client && event.arguments.text == call.arguments.text)
      return &step;
    if (one_thread_) break;
  }
  return nullptr;
}

const Event* Replay::Take(const Event& call) {
  Lock lock(mutex_);
  Step* const step = differs_ ? nullptr : Find(call);
  if (step == nullptr) {
    // Not every device shows when a client ends.
    if (!differs_ && call.name != kDestructor.name) Differ(call);
    return nullptr;
  }
  step->is_taken = true;
  const Event& event = *step->event;
  bool is_in_order = AwaitTurn(lock, event, step->begin);
  if (!fast_) changed_.wait_until(lock, TimePoint(Now() + event.took_us), [] { return false; });
  is_in_order = is_in_order && AwaitTurn(lock, event, step->end);
  if (!is_in_order) {
    if (!differs_) Differ(call);
    return nullptr;
  }
  ++turn_;
  last_us_ = Now();
  delay_us_ = last_us_ - (event.at_us + event.took_us);
  changed_.notify_all();
  return &event;
}

bool Replay::AwaitTurn(Lock& lock, const Event& call, unsigned turn) {
  if (!one_by_one_) return true;
  const int64_t gives_up_at =
      std::max(Now(), call.at_us + delay_us_) + (several_threads_ ? kPatienceUs : kGiveUpUs);
  ++waiting_;
  changed_.notify_all();
  for (;;) {
    const int64_t patience_ends = in_progress_ != nullptr && thread_ != std::this_thread::get_id()
                                      ? began_us_ + kPatienceUs
                                      : 0;
    const int64_t until = turn_ < turn ? gives_up_at : patience_ends;
    if (until <= Now()) break;
    changed_.wait_until(lock, TimePoint(until));
  }
  --waiting_;
  return turn_ >= turn || several_threads_;
}

int64_t Replay::DueTime(const Event& indication) const {
  const int64_t recorded = fast_ ? 0 : indication.at_us + delay_us_;
  return waiting_ > 0 ? recorded : std::max(recorded, last_us_ + kQuietUs);
}

void Replay::DeliverAll() {
  Lock lock(mutex_);
  for (const Step& step : indications_) {
    while (step.end > turn_) changed_.wait(lock);
    while (Now() < DueTime(*step.event)) changed_.wait_until(lock, TimePoint(DueTime(*step.event)));
    if (one_by_one_) ++turn_;
    in_progress_ = step.event;
    began_us_ = Now();
    changed_.notify_all();
    lock.unlock();
    deliver_(*step.event, static_cast<uint32_t>(step.event - recording_.events.data()));
    lock.lock();
    in_progress_ = nullptr;
    last_us_ = Now();
    changed_.notify_all();
  }
}

void Replay::AwaitEnd(unsigned client) {
  Lock lock(mutex_);
  changed_.wait(lock, [&] { return in_progress_ == nullptr || in_progress_->client != client; });
}

void Replay::Differ(const Event& call) {
  differs_ = true;
  const auto next =
      std::find_if(calls_.begin(), calls_.end(), [](const Step& step) { return !step.is_taken; });
  const auto describe = [](const Event& event) {
    return std::string(event.name) + std::string(event.arguments.text);
  };
  std::string recorded = "no more calls";
  if (next != calls_.end()) {
    const auto line = next->event - recording_.events.data() + 2;
    recorded = describe(*next->event) + " in line " + std::to_string(line);
  }
  const Unnoticed unnoticed;
  Complain("the program makes another call than was recorded\n  recorded: " + recorded +
           "\n  asked: " + describe(call));
  on_difference_();
}

}  // namespace trace
