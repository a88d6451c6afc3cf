/// Whether subscribers' callbacks are running on a thread.
#pragma once

namespace mox::vendor::qcom::qcmap {

/// Marks its thread, for as long as it lives, as the one on which an event is delivered.
class Delivery {
 public:
  Delivery();
  ~Delivery();
  Delivery(const Delivery&) = delete;
  Delivery& operator=(const Delivery&) = delete;

  [[nodiscard]] static bool RunsOnThisThread();
};

}  // namespace mox::vendor::qcom::qcmap
