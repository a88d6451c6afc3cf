/// Keeps the IPv4 call of a profile up.
#pragma once

#include <mox/vendor/qcom/qcmap/subscription.h>

#include <chrono>
#include <condition_variable>
#include <mutex>

class Uplink {
  using Qcmap = mox::vendor::qcom::qcmap::QcmapWrapper;

 public:
  explicit Uplink(int profile) : profile_(profile) {
    Subscribe(qcmap_, this, [this](mox::util::EventDic& event) { OnEvent(event.event_); });
  }
  ~Uplink() { Unsubscribe(qcmap_, this); }

  /// Returns false when the call is refused, or when there is no server.
  bool Start() {
    return qcmap_.ConnectBackhaul(profile_, mox::util::IPFamily::IPV4) == mox::Result::SUCCESS;
  }
  /// Waits until the call has come up so many times. Returns false when that takes too long.
  bool WaitFor(int times) {
    std::unique_lock<std::mutex> lock(mutex_);
    return changed_.wait_for(lock, std::chrono::seconds(2), [&] { return times_up_ >= times; });
  }
  bool IsUp() {
    using Status = mox::wwan::DataManager::ConnectStatus;
    Status v4, v6;
    return qcmap_.GetWwanConnectStatus(profile_, v4, v6) && v4 == Status::CONNECTED;
  }

 private:
  void OnEvent(uint32_t event) {
    if (event == mox::vendor::qcom::qcmap::WWAN_DISCONNECTED) Start();
    if (event != mox::vendor::qcom::qcmap::WWAN_CONNECTED) return;
    const std::lock_guard<std::mutex> lock(mutex_);
    ++times_up_;
    changed_.notify_all();
  }

  const int profile_;
  Qcmap& qcmap_ = *Qcmap::GetInstance();
  std::mutex mutex_;
  std::condition_variable changed_;
  int times_up_ = 0;
};
