/// A program to be traced. Its argument says what it does.
#include <mox/vendor/qcom/qcmap/subscription.h>
#include <syslog.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "every_request.h"
#include "records/printer.h"

namespace {

using namespace mox::vendor::qcom::qcmap;
using mox::util::IPFamily;

template <typename... Records>
std::string Answers() {
  std::string text;
  (seam::Printer(text).Put(*static_cast<Records*>(kAnything)), ...);
  return text;
}

/// Prints all that a program can see of each request, with the client class alone.
int Requests() {
  QCMAP_Client client(nullptr);
  for (const Request& request : kEveryRequest) {
    if (std::string(request.name) == "DeleteWWANPolicy") continue;  // the others need the policy
    qmi_error_type_v01 error = QMI_ERR_NONE_V01;
    errno = ERANGE;
    const bool granted = request.send(client, &error);
    std::printf(
        "%s %d %d %s %s\n", request.name, granted, error, errno == ERANGE ? "" : "errno",
        Answers<qcmap_msgr_mobile_ap_status_enum_v01, qcmap_msgr_wwan_policy_list_resp_msg_v01,
                qcmap_msgr_net_policy_info_v01, unsigned char, qcmap_msgr_wwan_status_enum_v01,
                qcmap_nw_params_t, qcmap_msgr_wwan_statistics_type_v01, qcmap_msgr_lan_config_v01,
                bool, int, qcmap_msgr_vlan_conf_t, qcmap_msgr_pdn_to_vlan_mapping_v01,
                qcmap_msgr_ip_passthrough_config_v01>()
            .c_str());
  }
  return 0;
}

/// Two profiles, a VLAN, and a call that is dropped by the server's control socket, if there is
/// one.
int Story() {
  openlog("story", LOG_PERROR, LOG_USER);
  QcmapWrapper& qcmap = *QcmapWrapper::GetInstance();
  std::mutex mutex;
  std::condition_variable changed;
  size_t events = 0;
  Subscribe(qcmap, &mutex, [&](mox::util::EventDic& event) {
    const std::lock_guard<std::mutex> lock(mutex);
    std::printf("0x%x %s\n", event.event_, event.params_[event.PROFILE_HANDLE].c_str());
    ++events;
    changed.notify_all();
  });
  const auto wait_for = [&](size_t count) {
    std::unique_lock<std::mutex> lock(mutex);
    if (!changed.wait_for(lock, std::chrono::seconds(10), [&] { return events >= count; }))
      std::exit(EXIT_FAILURE);
  };
  mox::wwan::MobileapManager::VlanConfig vlan = {3, 100, 1};
  mox::wwan::MobileapManager::IpPassthroughConfig host = {
      mox::wwan::MobileapManager::DeviceType::USB_HOST, "laptop", 0};
  qcmap.SetVlanConfig(vlan);
  qcmap.SetPdnToVlanMapping(vlan);
  qcmap.SetIpPassthrough(true, host);
  for (const uint32_t profile : {0u, 1u}) qcmap.ConnectBackhaul(profile, IPFamily::IPV4);
  wait_for(4);
  static_cast<void>(!std::system("mvq-qcmap-sim ctl drop 1 4 >/dev/null 2>&1"));
  wait_for(5);
  qcmap.DisconnectBackhaul(0, IPFamily::IPV4);
  wait_for(7);
  qcmap.GetIpPassthrough(kAnything, host);
  Unsubscribe(qcmap, &mutex);
  return host.host_device_name.size() == 6 ? 3 : 1;
}

/// Several clients, threads that send requests, and callbacks that do so as well.
int Threads() {
  QcmapWrapper& qcmap = *QcmapWrapper::GetInstance();
  std::atomic<int> failed{0}, events{0};
  Subscribe(qcmap, &failed, [&](mox::util::EventDic&) {
    failed += !qcmap.ActivateLan();
    ++events;
  });
  qcmap.ConnectBackhaul(0, IPFamily::IPV4);
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&] {
      QCMAP_Client client([](auto...) {});
      for (int round = 0; round < 100; ++round)
        failed += !qcmap.ActivateLan() + !client.GetLANConfig(kAnything, kAnything);
    });
  }
  for (std::thread& thread : threads) thread.join();
  while (events < 2) std::this_thread::yield();
  Unsubscribe(qcmap, &failed);
  return failed > 0;
}

/// Sees what a request throws.
int Throw() {
  try {
    QCMAP_Client(nullptr).ActivateLAN(kAnything);
  } catch (int thrown) {
    return thrown;
  }
  return 0;
}

}  // namespace

int main(int, char* argv[]) {
  const std::string task = argv[1];
  if (task == "throw") return Throw();
  return task == "requests" ? Requests() : task == "story" ? Story() : Threads();
}
