/// Brings both families of a profile's data call up and down again, and prints what happens.
#include <mox/vendor/qcom/qcmap/subscription.h>
#include <syslog.h>

#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <map>
#include <mutex>
#include <string>

using namespace mox::vendor::qcom::qcmap;
using mox::util::IPFamily;
using ConnectStatus = mox::wwan::DataManager::ConnectStatus;

int main() {
  openlog("data_call", LOG_PERROR, LOG_USER);  // shows the library's log lines on stderr too
  QcmapWrapper& qcmap = *QcmapWrapper::GetInstance();
  profile_handle_type_v01 handle = 0;  // still identifies the profile when its index changes
  if (!qcmap.GetProfileHandle(1, handle)) return 1;

  std::mutex mutex;
  std::condition_variable changed;
  std::map<std::string, bool> up;  // by IP version
  Subscribe(qcmap, &mutex, [&](mox::util::EventDic& event) {
    if (event.params_[event.PROFILE_HANDLE] != std::to_string(handle)) return;
    const std::lock_guard<std::mutex> lock(mutex);
    std::printf("event 0x%x IPv%s\n", event.event_, event.params_[event.IP_VERSION].c_str());
    if (event.event_ != WWAN_CONNECTED && event.event_ != WWAN_DISCONNECTED) return;
    up[event.params_[event.IP_VERSION]] = event.event_ == WWAN_CONNECTED;
    changed.notify_all();
  });
  ConnectStatus v4{}, v6{};  // read after subscribing: a family that is already up sends no event
  qcmap.GetWwanConnectStatus(1, v4, v6);
  const auto wait_for_both = [&](bool wanted) {
    std::unique_lock<std::mutex> lock(mutex);
    // What an event has reported is newer than what was read, and insert leaves it alone.
    up.insert({{"4", v4 == ConnectStatus::CONNECTED}, {"6", v6 == ConnectStatus::CONNECTED}});
    return changed.wait_for(lock, std::chrono::seconds(5),
                            [&] { return up["4"] == wanted && up["6"] == wanted; });
  };

  for (const auto family : {IPFamily::IPV4, IPFamily::IPV6}) qcmap.ConnectBackhaul(1, family);
  const bool came_up = wait_for_both(true);
  qcmap.GetWwanConnectStatus(1, v4, v6);
  std::printf("state %d and %d\n", static_cast<int>(v4), static_cast<int>(v6));
  for (const auto family : {IPFamily::IPV4, IPFamily::IPV6}) {
    mox::wwan::DataManager::NetworkConfig ip;
    qcmap.GetNetworkConfig(1, family, ip);
    std::printf("%s %s %s\n", ip.address_1.c_str(), ip.address_2.c_str(), ip.address_3.c_str());
    qcmap.DisconnectBackhaul(1, family);
  }
  const bool went_down = wait_for_both(false);
  Unsubscribe(qcmap, &mutex);
  return came_up && went_down ? 0 : 1;
}
