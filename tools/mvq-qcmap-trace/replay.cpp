/// Plays a recording to the program.
#include "replay.h"

#include <algorithm>

namespace trace {
namespace {

/// How long the program must be quiet before an indication comes for which no call waits. What it
/// does after a call is then done, and its log lines are in the same order every time.
constexpr std::chrono::milliseconds kQuiet{20};

thread_local bool is_in_callback = false;

}  // namespace

Replay::Replay(Recording recording, bool fast, std::function<void()> on_difference)
    : text_(std::move(recording.text)), fast_(fast), on_difference_(std::move(on_difference)) {
  Clock::time_point end{};
  for (RecordedEvent& event : recording.events) {
    const bool is_call = event.name != kIndication.name;
    if (is_call) {
      one_by_one_ = one_by_one_ && event.start >= end;
      one_thread_ = one_thread_ && (calls_.empty() || event.thread == calls_[0].event.thread);
      end = event.start + event.took;
    }
    const auto calls = static_cast<unsigned>(calls_.size());
    const auto indications = static_cast<unsigned>(indications_.size());
    (is_call ? calls_ : indications_).push_back({event, calls, indications});
  }
}

Replay::Step* Replay::Find(const Event& call, const std::string& arguments) {
  for (Step& step : calls_) {
    if (step.is_taken) continue;
    if (step.event.name == call.name && step.event.client == call.client &&
        step.event.arguments == arguments) {
      return &step;
    }
    if (one_thread_) break;
  }
  return nullptr;
}

const RecordedEvent* Replay::Take(const Event& call, const std::string& arguments) {
  Lock lock(mutex_);
  Step* const step = differs_ ? nullptr : Find(call, arguments);
  if (step == nullptr) {
    // Not every device shows when a client ends.
    if (!differs_ && call.name != kDestructor.name) Differ(call, arguments);
    return nullptr;
  }
  step->is_taken = true;
  const RecordedEvent& event = step->event;
  AwaitIndications(lock, event.before);
  if (!fast_) changed_.wait_until(lock, Clock::now() + event.took, [] { return false; });
  // The thread that delivers indications starts when the client has been constructed.
  if (call.name != kConstructor.name)
    AwaitIndications(lock, {step->indications, event.returned_at_end});
  ++answered_;
  last_ = Clock::now();
  beginning_ = last_ - (event.start - Clock::time_point()) - event.took;
  changed_.notify_all();
  return &event;
}

void Replay::AwaitIndications(Lock& lock, IndicationCount count) {
  if (!one_by_one_) return;
  ++waiting_;
  changed_.notify_all();
  changed_.wait(lock,
                [&] { return count_.come >= count.come && count_.returned >= count.returned; });
  --waiting_;
  // A callback that was still running may itself wait for this thread, so not for long.
  changed_.wait_for(lock, kQuiet, [&] { return count_.returned + is_in_callback >= count_.come; });
}

Clock::time_point Replay::DueTime(const Event& indication) const {
  const auto recorded = fast_ ? last_ : beginning_ + (indication.start - Clock::time_point());
  return waiting_ > 0 ? recorded : std::max(recorded, last_ + kQuiet);
}

const RecordedEvent* Replay::BeginIndication(unsigned client, const bool& stopping) {
  Lock lock(mutex_);
  while (!stopping) {
    const Step* const next =
        count_.come < indications_.size() ? &indications_[count_.come] : nullptr;
    if (next == nullptr || next->event.client != client || next->calls > answered_) {
      changed_.wait(lock);
    } else if (const auto due = DueTime(next->event); Clock::now() < due) {
      changed_.wait_until(lock, due);
    } else {
      ++count_.come;
      SkipIndications();
      is_in_callback = true;
      changed_.notify_all();
      return &next->event;
    }
  }
  return nullptr;
}

void Replay::EndIndication() {
  const Lock lock(mutex_);
  ++count_.returned;
  last_ = Clock::now();
  is_in_callback = false;
  changed_.notify_all();
}

void Replay::Stop(unsigned client, bool& stopping) {
  const Lock lock(mutex_);
  stopping = true;
  for (Step& step : indications_) step.is_taken |= step.event.client == client;
  SkipIndications();
  changed_.notify_all();
}

void Replay::SkipIndications() {
  for (; count_.come < indications_.size() && indications_[count_.come].is_taken; ++count_.come)
    ++count_.returned;
}

void Replay::Differ(const Event& call, const std::string& arguments) {
  differs_ = true;
  const auto next =
      std::find_if(calls_.begin(), calls_.end(), [](const Step& step) { return !step.is_taken; });
  const Unnoticed unnoticed;
  std::string recorded = "no more calls";
  if (next != calls_.end()) {
    recorded = std::string(next->event.name) + std::string(next->event.arguments) + " in line " +
               std::to_string(next->event.line);
  }
  Complain("the program makes a call that was not recorded\n  recorded: " + recorded +
           "\n  asked: " + std::string(call.name) + arguments);
  on_difference_();
}

}  // namespace trace
