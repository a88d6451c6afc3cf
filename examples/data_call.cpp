/// Brings both families of a profile's data call up and down, and prints what happens meanwhile.
#include <mox/vendor/qcom/qcmap/subscription.h>
#include <syslog.h>

#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <mutex>

using namespace mox::vendor::qcom::qcmap;
using mox::util::IPFamily;

int main() {
  openlog("data_call", LOG_PERROR, LOG_USER);  // has the library's lines on stderr too
  QcmapWrapper& qcmap = *QcmapWrapper::GetInstance();

  std::mutex mutex;
  std::condition_variable changed;
  int up = 0;
  Subscribe(qcmap, &mutex, [&](mox::util::EventDic& event) {
    const std::lock_guard<std::mutex> lock(mutex);
    std::printf("event 0x%x IPv%s\n", event.event_, event.params_[event.IP_VERSION].c_str());
    up += (event.event_ == WWAN_CONNECTED) - (event.event_ == WWAN_DISCONNECTED);
    changed.notify_all();
  });
  const auto wait_for = [&](int families) {
    std::unique_lock<std::mutex> lock(mutex);
    return changed.wait_for(lock, std::chrono::seconds(5), [&] { return up == families; });
  };

  for (const auto family : {IPFamily::IPV4, IPFamily::IPV6}) qcmap.ConnectBackhaul(1, family);
  const bool came_up = wait_for(2);
  mox::wwan::DataManager::ConnectStatus v4{}, v6{};
  qcmap.GetWwanConnectStatus(1, v4, v6);
  std::printf("state %d and %d\n", static_cast<int>(v4), static_cast<int>(v6));
  for (const auto family : {IPFamily::IPV4, IPFamily::IPV6}) {
    mox::wwan::DataManager::NetworkConfig ip;
    qcmap.GetNetworkConfig(1, family, ip);
    std::printf("%s %s %s\n", ip.address_1.c_str(), ip.address_2.c_str(), ip.address_3.c_str());
    qcmap.DisconnectBackhaul(1, family);
  }
  const bool went_down = wait_for(0);
  Unsubscribe(qcmap, &mutex);
  return came_up && went_down ? 0 : 1;
}
