/// Plays a recording to the program.
#pragma once

#include <unistd.h>

#include <condition_variable>
#include <functional>
#include <mutex>
#include <vector>

#include "recording.h"
#include "records/reader.h"

namespace trace {

/// If the recorded calls came one after the other, everything happens in the recorded order: a call
/// waits for the indications before it. Otherwise a call takes the next recorded one of the same
/// name and arguments, and an indication comes after as many calls as were recorded before it.
class Replay {
 public:
  /// If `fast`, nothing waits because time passed when it was recorded. `on_difference` is called
  /// when the program makes a call that was not recorded. All calls fail from then on.
  Replay(Recording recording, bool fast, std::function<void()> on_difference);

  /// A forked child has neither the threads nor the session of its parent.
  bool IsOwnProcess() const { return ::getpid() == process_; }

  /// Answers a call as it was answered. `answers` makes the tuple of what is filled in.
  template <typename Answers>
  void Answer(Event& call, const seam::Request& names, const std::string& arguments,
              const Answers& answers) {
    const RecordedEvent* const recorded = IsOwnProcess() ? Take(call, arguments) : nullptr;
    call.ok = recorded != nullptr && recorded->ok;
    call.error = recorded != nullptr ? recorded->error : QMI_ERR_INTERNAL_V01;
    if (!call.ok) return;
    seam::Reader reader(recorded->answers);
    reader.Expect("{");
    reader.Members(names.answers, answers());
  }

  /// Waits for the next indication of the client. Null once `stopping` is true.
  const RecordedEvent* BeginIndication(unsigned client, const bool& stopping);
  /// To be called on the same thread, when the callback has returned.
  void EndIndication();
  /// Ends the wait of a client. Its other indications are left out.
  void Stop(unsigned client, bool& stopping);

 private:
  struct Step {
    RecordedEvent event;
    /// How many came before it.
    unsigned calls, indications;
    bool is_taken = false;
  };
  using Lock = std::unique_lock<std::mutex>;

  const RecordedEvent* Take(const Event& call, const std::string& arguments);
  Step* Find(const Event& call, const std::string& arguments);
  void SkipIndications();
  void AwaitIndications(Lock& lock, IndicationCount count);
  Clock::time_point DueTime(const Event& indication) const;
  void Differ(const Event& call, const std::string& arguments);

  const pid_t process_ = ::getpid();
  const std::unique_ptr<const std::string> text_;
  const bool fast_;
  const std::function<void()> on_difference_;
  bool one_by_one_ = true, one_thread_ = true;

  /// Guards what follows.
  std::mutex mutex_;
  std::condition_variable changed_;
  std::vector<Step> calls_, indications_;
  unsigned answered_ = 0;
  IndicationCount count_{};
  /// How many calls wait for an indication.
  unsigned waiting_ = 0;
  bool differs_ = false;
  /// When something last happened, and when the recording then would have begun.
  Clock::time_point last_ = Clock::now(), beginning_ = last_;
};

}  // namespace trace
