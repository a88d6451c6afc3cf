/// Stops or ends the server at a chosen step of a request, so that tests see what clients do then.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>

namespace sim {

enum class Step {
  /// A connection has been accepted, and nothing has been read from it.
  kAccepted,
  /// A session is open, and its second connection is not.
  kOpened,
  /// A request has been read.
  kRead,
  /// A request has been carried out, and the reply has not been sent.
  kCarriedOut,
  /// The reply has been sent.
  kReplied,
};

/// Acts once, as the environment variable QCMAP_TEST_STEP asks: STEP:ACTION[:REQUEST[:COUNT]].
/// STEP is accepted, opened, read, carried-out or replied. ACTION is stop, kill, exit or close (the
/// connection). Without REQUEST, any request but OpenSession counts. With COUNT, the hook acts when
/// the step is reached for the COUNT-th time.
class StepHook {
 public:
  /// Null when the variable is not set. Throws std::runtime_error when it is not valid.
  static std::unique_ptr<StepHook> FromEnvironment();

  /// Acts if it is time to. Returns true when the caller is to close the connection.
  bool Reach(Step step, uint32_t request);

 private:
  enum class Action { kStop, kKill, kExit, kClose };

  Step step_{};
  Action action_{};
  std::optional<uint32_t> request_;
  uint64_t times_left_ = 1;
};

}  // namespace sim
