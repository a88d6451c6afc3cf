/// Indications: text and event of each, and those that are dropped.
#include "world.h"

namespace {

constexpr char kCallback[] =
    "static void @EvtCb(qmi_client_type, uint32_t, void*, uint32_t, void*)";

qcmap_msgr_bring_up_wwan_ind_msg_v01 Call(int32_t status, uint8_t has_profile = 0,
                                          uint32_t profile = 0, uint32_t handle = 77) {
  return {{handle, status, {}, has_profile, profile}, {}};
}

/// Delivers past any client. What is logged, as priority and text, without the trace line.
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

/// Event code, further word and parameters.
std::string Text(const EventDic& event) {
  std::string text = Join(event.event_ - 0x200, event.extra_);
  for (const auto& [param, value] : event.params_) text += Join("", param) + "=" + value;
  return text;
}

TEST(Indication, EachStatusHasItsTextAndSomeAnEvent) {
  const std::string failed = " CONNECTION FAILED", stuck = " DISCONNECTION FAILED";
  const std::string texts[] = {"", failed, " CONNECTED", "", stuck, " DISCONNECTED"};
  // Id, prefix, how it is decoded, and the offset of the event's code by text.
  const std::tuple<uint32_t, std::string, std::string, std::string> rows[] = {
      {0x22, "7 [BRING_UP] ", "2 34 108 108 cleared", "-10---"},
      {0x23, "7 [TEAR_DOWN] ", "2 35 108 28 cleared", "----32"},
      {0x25, "7 [WWAN_INDICATION] ", "2 37 108 108 cleared", "--4--5"}};
  World world;
  std::string event;
  Subscribe(world.wrapper, &event, [&](EventDic& dictionary) { event = Text(dictionary); });
  for (const auto& [id, prefix, decoded, events] : rows) {
    for (size_t i = 0; i < 12; ++i) {
      const std::string version = i < 6 ? "4" : "6", text = texts[i % 6];
      const bool has_profile = i % 2 != 0, has_event = events[i % 6] != '-';
      event.clear();
      EXPECT_EQ(Deliver(id, Call(static_cast<int>(i) + 1, has_profile ? 255 : 0, ~0u)),
                prefix + (has_profile ? "profile_handle: 4294967295 " : "") +
                    (text.empty() ? "\n" : "V" + version + text + "\n"));
      const std::string parameters = " 0 12=" + version + (has_profile ? " 13=4294967295" : "");
      EXPECT_EQ(event, has_event ? events[i % 6] + parameters : "") << prefix << version << text;
      EXPECT_EQ(world.script.decoded, decoded);
    }
    for (const int status : {-1, 0, 13}) EXPECT_EQ(Deliver(id, Call(status)), prefix + "\n");
  }
}

TEST(Indication, StatusIsOnlyLogged) {
  const std::string station = "7 Mobile AP Station mode ";
  const std::tuple<uint32_t, uint32_t, std::string> rows[] = {
      {0x29, 0, "nothing"},
      {0x29, 1, "7 Mobile AP ConnectBackhauled...\n"},
      {0x29, 2, "7 Mobile AP Disconnected...\n"},
      {0x29, 3, "nothing"},
      {0x5E, 1, station + "ConnectBackhauled...\n"},
      {0x5E, 2, station + "Disconnected...\n"},
      {0x5E, 3, station + "Association Failed. Going back to AP+STA Router Mode\n"},
      {0x5E, 4, station + "IP Assignment via DHCP Failed. Will switch to Static IP if available\n"},
      {0x5E, 5, "nothing"}};
  Script script;
  for (const auto& [id, status, text] : rows) {
    EXPECT_EQ(Deliver(id, qcmap_msgr_status_ind_msg_v01{9, status}), text);
    EXPECT_EQ(script.decoded, Join(2, id, 8, 8, "cleared"));
  }
}

TEST(Indication, IsDroppedWhenItCannotBeUsed) {
  World world;
  int events = 0;
  Subscribe(world.wrapper, &events, [&](EventDic&) { ++events; });
  const auto expect_dropped = [](std::initializer_list<uint32_t> ids) {
    for (const uint32_t id : ids) EXPECT_EQ(Deliver(id, Call(3)), "nothing") << "id " << id;
  };
  expect_dropped({0, 0x21, 0x24, 0x26, 0x5D});
  for (const uint32_t id : {0x22, 0x23}) {
    EXPECT_EQ(Deliver(id, Call(3, 1, 1, 78)), "3 ind handle [78] mobile ap handle [77] mismatch\n");
  }
  world.script.decode_error = -4;
  expect_dropped({0x22, 0x23, 0x25});
  for (const uint32_t id : {0x29, 0x5E}) {
    EXPECT_EQ(Deliver(id, Call(1)), "3 qmi_client_message_decode error -4\n");
  }
  world.script.decode_error = 0;
  fail_calloc = true;
  expect_dropped({0x22, 0x23, 0x25});
  fail_calloc = false;
  QcmapWrapper::s_ins_ = nullptr;
  expect_dropped({0x22, 0x23, 0x25});
  EXPECT_EQ(events, 0);
  QcmapWrapper::s_ins_ = &world.wrapper;
  EXPECT_EQ(Deliver(0x25, Call(3, 0, 0, 78)), "7 [WWAN_INDICATION] V4 CONNECTED\n");
  EXPECT_EQ(events, 1) << "whatever its handle";
}

TEST(Indication, WithoutClientOnlyTheStatusOfACallIsUsed) {
  World world(-1);
  for (const uint32_t id : {0x22, 0x23}) EXPECT_EQ(Deliver(id, Call(3)), "nothing");
  EXPECT_EQ(Deliver(0x25, Call(3)), "7 [WWAN_INDICATION] V4 CONNECTED\n");
}

// Also shows that the client was given this callback.
TEST(Indication, MayArriveDuringTheFirstAttempt) {
  Script script;
  script.before["GetMobileAPStatus"] = [&] { EXPECT_TRUE(script.Indicate(0x22, Call(3))); };
  TakeLog();
  const QcmapWrapper wrapper;
  EXPECT_EQ(TakeLog().at(1), Line(7, kCallback, "h (nil) msg_id 0x22 len 108\n"));
}

}  // namespace
