/// Prints how many times as long a request takes when it is traced. To be run by mvq-qcmap-trace,
/// which is passed by in every second request.
#include <dlfcn.h>
#include <qcmap_client.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

template <typename Request>
Clock::duration Time(const Request& request) {
  const auto start = Clock::now();
  if (!request()) std::puts("refused");
  return Clock::now() - start;
}

double MedianUs(std::vector<Clock::duration>& times) {
  std::nth_element(times.begin(), times.begin() + times.size() / 2, times.end());
  return std::chrono::duration<double, std::micro>(times[times.size() / 2]).count();
}

}  // namespace

int main() {
  using Method = bool (QCMAP_Client::*)(qcmap_msgr_lan_config_v01*, qmi_error_type_v01*);
  void* const library = dlopen("libqcmap_client.so.1", RTLD_LAZY | RTLD_NOLOAD);
  if (library == nullptr) return 1;
  void* const address = dlsym(
      library, "_ZN12QCMAP_Client12GetLANConfigEP25qcmap_msgr_lan_config_v01P18qmi_error_type_v01");
  if (address == nullptr) return 1;
  Method untraced = &QCMAP_Client::GetLANConfig;
  std::memcpy(&untraced, &address, sizeof address);

  QCMAP_Client client(nullptr);
  qcmap_msgr_lan_config_v01 config;
  qmi_error_type_v01 error;
  std::vector<Clock::duration> plain, traced;
  for (int i = 0; i < 20000; ++i) {
    plain.push_back(Time([&] { return (client.*untraced)(&config, &error); }));
    traced.push_back(Time([&] { return client.GetLANConfig(&config, &error); }));
  }
  const double plain_us = MedianUs(plain), traced_us = MedianUs(traced);
  std::printf("a request takes %.1f us, traced %.1f us: %.2f times as long\n", plain_us, traced_us,
              traced_us / plain_us);
}
