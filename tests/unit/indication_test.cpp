/// Indications: text and event of each, and those that are dropped.
#include "world.h"

namespace {

using namespace mox::vendor::qcom::qcmap;

constexpr uint32_t kBringUp = QMI_QCMAP_MSGR_BRING_UP_WWAN_IND_V01;
constexpr uint32_t kTearDown = QMI_QCMAP_MSGR_TEAR_DOWN_WWAN_IND_V01;
constexpr uint32_t kWwanStatus = QMI_QCMAP_MSGR_WWAN_STATUS_IND_V01;
constexpr uint32_t kMobileAp = QMI_QCMAP_MSGR_MOBILE_AP_STATUS_IND_V01;
constexpr uint32_t kStation = QMI_QCMAP_MSGR_STATION_MODE_STATUS_IND_V01;

constexpr char kCallback[] =
    "static void @EvtCb(qmi_client_type, uint32_t, void*, uint32_t, void*)";

qcmap_msgr_bring_up_wwan_ind_msg_v01 Call(int32_t status, uint8_t has_profile = 0,
                                          uint32_t profile = 0, uint32_t handle = 77) {
  return {{handle, status, {}, has_profile, profile}, {}};
}

/// Calls the callback directly. Returns the line that it logs after the trace line, as priority and
/// text, or "nothing".
template <typename Record>
std::string Deliver(uint32_t id, Record record) {
  TakeLog();
  QcmapWrapper::EvtCb(nullptr, id, &record, sizeof record, nullptr);
  char trace[64];
  snprintf(trace, sizeof trace, "h (nil) msg_id 0x%x len %zu\n", id, sizeof record);
  const Lines log = TakeLog();
  EXPECT_EQ(log.at(0), Line(7, kCallback, trace));
  if (log.size() == 1) return "nothing";
  const std::string text = log[1].substr(Line(7, kCallback, "").size());
  EXPECT_EQ(log, (Lines{log[0], Line(log[1][0] - '0', kCallback, text)}));
  return log[1].substr(0, 2) + text;
}

/// The event's code, its extra word and its parameters.
std::string Text(const EventDic& event) {
  const auto code = static_cast<EventCode>(event.event_);
  std::string text = Join(NameOf<BRING_UP_CONNECTED>(code), event.extra_);
  for (const auto& [param, value] : event.params_) text += " " + NameOf(param) + "=" + value;
  return text;
}

TEST(Indication, EachStatusHasItsTextAndSomeAnEvent) {
  // By status: the server numbers those of IPv4 from 1 on in this order, then those of IPv6.
  const std::string texts[] = {"", " CONNECTION FAILED",    " CONNECTED",
                               "", " DISCONNECTION FAILED", " DISCONNECTED"};
  struct Kind {
    uint32_t id;
    std::string prefix;
    std::string decoded;
    std::map<std::string, EventCode> events;
  };
  const Kind kinds[] = {
      {kBringUp,
       "7 [BRING_UP] ",
       "2 34 108 108 cleared",
       {{" CONNECTED", BRING_UP_CONNECTED}, {" CONNECTION FAILED", BRING_UP_CONNECTION_FAILED}}},
      {kTearDown,
       "7 [TEAR_DOWN] ",
       "2 35 108 28 cleared",
       {{" DISCONNECTED", TEAR_DOWN_DISCONNECTED},
        {" DISCONNECTION FAILED", TEAR_DOWN_DISCONNECTION_FAILED}}},
      {kWwanStatus,
       "7 [WWAN_INDICATION] ",
       "2 37 108 108 cleared",
       {{" CONNECTED", WWAN_CONNECTED}, {" DISCONNECTED", WWAN_DISCONNECTED}}}};
  World world;
  std::string event;
  Subscribe(world.wrapper, &event, [&](EventDic& dictionary) { event = Text(dictionary); });
  for (const Kind& kind : kinds) {
    for (int i = 0; i < 12; ++i) {
      SCOPED_TRACE(kind.prefix + NameOf(qcmap_msgr_wwan_status_enum_v01{i + 1}));
      const std::string version = i < 6 ? "4" : "6", text = texts[i % 6];
      const bool has_profile = i % 2 != 0;
      event.clear();
      EXPECT_EQ(Deliver(kind.id, Call(i + 1, has_profile ? 255 : 0, ~0u)),
                kind.prefix + (has_profile ? "profile_handle: 4294967295 " : "") +
                    (text.empty() ? "\n" : "V" + version + text + "\n"));
      const auto code = kind.events.find(text);
      EXPECT_EQ(event, code == kind.events.end()
                           ? ""
                           : NameOf<BRING_UP_CONNECTED>(code->second) + " 0 IP_VERSION=" + version +
                                 (has_profile ? " PROFILE_HANDLE=4294967295" : ""));
      EXPECT_EQ(world.script.decoded, kind.decoded);
    }
    for (const int status : {-1, 0, 13}) {
      EXPECT_EQ(Deliver(kind.id, Call(status)), kind.prefix + "\n") << status;
    }
  }
}

TEST(Indication, StatusIsOnlyLogged) {
  constexpr uint32_t kConnected = QCMAP_MSGR_MOBILE_AP_STATUS_CONNECTED_V01;
  constexpr uint32_t kDisconnected = QCMAP_MSGR_MOBILE_AP_STATUS_DISCONNECTED_V01;
  constexpr uint32_t kAssociationFailed = 3, kAddressAssignmentFailed = 4;
  struct Row {
    uint32_t id;
    uint32_t status;
    std::string logged;
  };
  const std::string station = "7 Mobile AP Station mode ";
  const Row rows[] = {
      {kMobileAp, 0, "nothing"},
      {kMobileAp, kConnected, "7 Mobile AP ConnectBackhauled...\n"},
      {kMobileAp, kDisconnected, "7 Mobile AP Disconnected...\n"},
      {kMobileAp, 3, "nothing"},
      {kStation, kConnected, station + "ConnectBackhauled...\n"},
      {kStation, kDisconnected, station + "Disconnected...\n"},
      {kStation, kAssociationFailed,
       station + "Association Failed. Going back to AP+STA Router Mode\n"},
      {kStation, kAddressAssignmentFailed,
       station + "IP Assignment via DHCP Failed. Will switch to Static IP if available\n"},
      {kStation, 5, "nothing"}};
  Script script;
  for (const Row& row : rows) {
    EXPECT_EQ(Deliver(row.id, qcmap_msgr_status_ind_msg_v01{9, row.status}), row.logged)
        << "status " << row.status;
    EXPECT_EQ(script.decoded, Join(2, row.id, 8, 8, "cleared"));
  }
}

TEST(Indication, IsDroppedWhenItCannotBeUsed) {
  World world;
  int events = 0;
  Subscribe(world.wrapper, &events, [&](EventDic&) { ++events; });
  const std::vector<uint32_t> calls = {kBringUp, kTearDown, kWwanStatus};
  const auto expect_dropped = [](const std::vector<uint32_t>& ids, const std::string& why) {
    for (const uint32_t id : ids)
      EXPECT_EQ(Deliver(id, Call(3)), "nothing") << why << ", id " << id;
  };
  expect_dropped({0, 0x21, 0x24, 0x26, 0x5D}, "unknown");
  for (const uint32_t id : {kBringUp, kTearDown}) {
    EXPECT_EQ(Deliver(id, Call(3, 1, 1, 78)), "3 ind handle [78] mobile ap handle [77] mismatch\n");
  }
  world.script.decode_error = -4;
  expect_dropped(calls, "not decoded");
  for (const uint32_t id : {kMobileAp, kStation}) {
    EXPECT_EQ(Deliver(id, Call(1)), "3 qmi_client_message_decode error -4\n");
  }
  world.script.decode_error = 0;
  fail_calloc = true;
  expect_dropped(calls, "no memory");
  fail_calloc = false;
  QcmapWrapper::s_ins_ = nullptr;
  expect_dropped(calls, "no instance");
  EXPECT_EQ(events, 0);
  QcmapWrapper::s_ins_ = &world.wrapper;
  EXPECT_EQ(Deliver(kWwanStatus, Call(3, 0, 0, 78)), "7 [WWAN_INDICATION] V4 CONNECTED\n");
  EXPECT_EQ(events, 1) << "whatever its handle";
}

TEST(Indication, WithoutClientOnlyTheStatusOfACallIsUsed) {
  World world(-1);
  for (const uint32_t id : {kBringUp, kTearDown}) EXPECT_EQ(Deliver(id, Call(3)), "nothing");
  EXPECT_EQ(Deliver(kWwanStatus, Call(3)), "7 [WWAN_INDICATION] V4 CONNECTED\n");
}

// Also shows that the client was given this callback.
TEST(Indication, MayArriveDuringTheFirstAttempt) {
  Script script;
  script.before["GetMobileAPStatus"] = [&] { EXPECT_TRUE(script.Indicate(kBringUp, Call(3))); };
  TakeLog();
  const QcmapWrapper wrapper;
  EXPECT_EQ(TakeLog().at(1), Line(7, kCallback, "h (nil) msg_id 0x22 len 108\n"));
}

}  // namespace
