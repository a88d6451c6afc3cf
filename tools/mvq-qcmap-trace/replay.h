/// Plays a recording to the program.
#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "recording.h"

namespace trace {

/// If the recorded calls came one after the other, everything happens in the recorded order.
/// Otherwise a call takes the next recorded one of the same name and arguments, and an indication
/// comes after as many calls as were recorded before it.
class Replay {
 public:
  /// If `fast`, nothing waits because time passed when it was recorded. `on_difference` is called
  /// when the program makes a call that was not recorded. All calls fail from then on. `deliver`
  /// gets the indications, each in its turn, on a thread that inherits which signals are blocked.
  Replay(const std::string& path, bool fast, std::function<void()> on_difference,
         std::function<void(const Event&, uint32_t number)> deliver);

  bool has_host_names() const { return recording_.has_host_names; }
  const std::vector<Event>& events() const { return recording_.events; }
  /// A forked child has neither the threads nor the session of its parent.
  bool IsOwnProcess() const { return ::getpid() == process_; }

  /// Waits until it is a call's turn, and returns what was recorded of it, or null.
  const Event* Take(const Event& call);
  /// Waits while an indication of this client is being delivered.
  void AwaitEnd(unsigned client);

 private:
  struct Step {
    const Event* event;
    /// How many turns come before it begins, and before it ends.
    unsigned begin, end;
    bool is_taken = false;
  };
  using Lock = std::unique_lock<std::mutex>;

  Step* Find(const Event& call);
  /// Returns false for a call that is out of order, whose turn does not come.
  bool AwaitTurn(Lock& lock, const Event& call, unsigned turn);
  void Differ(const Event& call);
  void DeliverAll();
  int64_t DueTime(const Event& indication) const;

  const pid_t process_ = ::getpid();
  const Recording recording_;
  const bool fast_;
  const std::function<void()> on_difference_;
  const std::function<void(const Event&, uint32_t number)> deliver_;
  bool one_by_one_ = true, one_thread_ = true;
  /// Whether several threads send requests beside those that receive indications.
  bool several_threads_ = false;

  /// Guards what follows.
  std::mutex mutex_;
  std::condition_variable changed_;
  std::vector<Step> calls_, indications_;
  /// Counts the calls that were answered and, one by one, the indications that have come.
  unsigned turn_ = 0;
  /// The indication that is being delivered, by which thread, and when that began.
  const Event* in_progress_ = nullptr;
  std::thread::id thread_;
  int64_t began_us_ = 0;
  /// How many calls wait for an indication.
  unsigned waiting_ = 0;
  bool differs_ = false;
  /// When something last happened, and how much later that was than in the recording.
  int64_t last_us_ = Now(), delay_us_ = 0;
};

}  // namespace trace
