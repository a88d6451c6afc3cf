/// Any indication to the library's callback, through the real decoder, to a subscriber.
#include <iterator>

#include "mox/util/process_control.h"
#include "mox/vendor/qcom/qcmap/subscription.h"
#include "peer.h"

using mox::util::EventDic;
using mox::vendor::qcom::qcmap::QcmapWrapper;

namespace {

constexpr uint32_t kIds[] = {
    QMI_QCMAP_MSGR_BRING_UP_WWAN_IND_V01, QMI_QCMAP_MSGR_TEAR_DOWN_WWAN_IND_V01,
    QMI_QCMAP_MSGR_WWAN_STATUS_IND_V01, QMI_QCMAP_MSGR_MOBILE_AP_STATUS_IND_V01,
    QMI_QCMAP_MSGR_STATION_MODE_STATUS_IND_V01};

void Check(EventDic& event) {
  namespace events = mox::vendor::qcom::qcmap;
  Require(event.event_ >= events::BRING_UP_CONNECTED && event.event_ <= events::WWAN_DISCONNECTED,
          "an event has a known code");
  const std::string version = event.params_[EventDic::IP_VERSION];
  Require(version == "4" || version == "6", "an event has an IP version");
  const auto profile = event.params_.find(EventDic::PROFILE_HANDLE);
  Require(profile == event.params_.end() ||
              std::to_string(std::strtoul(profile->second.c_str(), nullptr, 10)) == profile->second,
          "a profile handle is a decimal number");
}

/// A server that has just one client: the library, which subscribes to its events.
class World {
 public:
  World() {
    const auto connect = [] { return QcmapWrapper::GetInstance(); };
    QcmapWrapper* const wrapper =
        peer_.Serve(connect, [this](Peer::Connection connection, sim::Header request) {
          peer_.OpenSession(connection, request);
          if (connection == Peer::kIndications) GrantMobileAp(request);
        });
    Require(wrapper->ConnectToQcmapIfNeeded(), "the library connects");
    Subscribe(*wrapper, this, &Check);
  }

 private:
  /// Answers what the library asks for next, before it asks.
  void GrantMobileAp(sim::Header request) {
    request.id = sim::message::EnableMobileAP::kId;
    ++request.transaction;
    peer_.Reply(Peer::kRequests, request, "");
    request.id = sim::message::GetMobileAPStatus::kId;
    ++request.transaction;
    peer_.Reply(Peer::kRequests, request, Peer::Bytes(QCMAP_MSGR_MOBILE_AP_STATUS_CONNECTED_V01));
  }

  Peer peer_;
};

}  // namespace

int mox::util::ProcessControl::GetPidByProcessName(std::string /*name*/, int /*limit*/) {
  return ::getpid();
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const World world;
  Input input(data, size);
  const uint8_t choice = input.TakeByte();
  const uint32_t id = choice < std::size(kIds) ? kIds[choice] : input.TakeNumber();
  std::string elements = input.TakeRest();
  QcmapWrapper::EvtCb(nullptr, id, elements.data(), static_cast<uint32_t>(elements.size()),
                      nullptr);
  return 0;
}
