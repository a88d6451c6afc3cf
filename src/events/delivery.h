/// Tells whether the calling thread is running subscribers' callbacks.
#pragma once

namespace mox::vendor::qcom::qcmap {

/// While it lives, marks its thread as the one that delivers an event.
class Delivery {
 public:
  Delivery();
  ~Delivery();
  Delivery(const Delivery&) = delete;
  Delivery& operator=(const Delivery&) = delete;

  [[nodiscard]] static bool RunsOnThisThread();
};

}  // namespace mox::vendor::qcom::qcmap
