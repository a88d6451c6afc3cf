/// Indications: text and event of each, and those that are dropped.
#include <new>
#include <stdexcept>

#include "session.h"

namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;

constexpr char kCallback[] =
    "static void @EvtCb(qmi_client_type, uint32_t, void*, uint32_t, void*)";

qcmap_msgr_bring_up_wwan_ind_msg_v01 Call(int32_t status, uint8_t has_profile = 0,
                                          uint32_t profile = 0, uint32_t handle = 77) {
  return {{handle, status, {}, has_profile, profile}, {}};
}

/// Delivers on this thread, past any client; its trace line is checked and left out of the result.
template <typename Record>
Lines Deliver(uint32_t id, Record record) {
  TakeLog();
  auto* const client = reinterpret_cast<qmi_client_type>(0x10);
  QcmapWrapper::EvtCb(client, id, &record, sizeof record, nullptr);
  Lines log = TakeLog();
  char trace[64];
  snprintf(trace, sizeof trace, "h 0x10 msg_id 0x%x len %d\n", id, static_cast<int>(sizeof record));
  EXPECT_EQ(log.at(0), Line(7, kCallback, trace));
  log.erase(log.begin());
  return log;
}

/// Event code and parameters, as text.
std::string Text(const EventDic& event) {
  std::string text =
      std::to_string(event.event_ - 0x200) + " extra " + std::to_string(event.extra_);
  for (const auto& [param, value] : event.params_)
    text += " " + std::to_string(param) + "=" + value;
  return text;
}

TEST(Indication, EachStatusHasItsTextAndSomeAnEvent) {
  const std::string texts[] = {"",
                               "",
                               "V4 CONNECTION FAILED",
                               "V4 CONNECTED",
                               "",
                               "V4 DISCONNECTION FAILED",
                               "V4 DISCONNECTED",
                               "",
                               "V6 CONNECTION FAILED",
                               "V6 CONNECTED",
                               "",
                               "V6 DISCONNECTION FAILED",
                               "V6 DISCONNECTED",
                               ""};
  struct {
    uint32_t id;
    std::string prefix;
    std::string decoded;
    std::string events;  // by status: offset of the code, '-' for none
  } const rows[] = {{0x22, "[BRING_UP] ", "2 34 108 108", "--10----10----"},
                    {0x23, "[TEAR_DOWN] ", "2 35 108 28", "-----32----32-"},
                    {0x25, "[WWAN_INDICATION] ", "2 37 108 108", "---4--5--4--5-"}};
  Session session;
  Lines events;
  Subscribe(session.wrapper, &events, [&](EventDic& event) { events.push_back(Text(event)); });
  for (const auto& row : rows) {
    for (int status = 0; status <= 13; ++status) {
      SCOPED_TRACE(row.prefix + std::to_string(status));
      const auto at = static_cast<size_t>(status);
      const bool has_profile = status % 2 == 1;
      Lines expected;
      if (row.events[at] != '-') {
        expected = {std::string(1, row.events[at]) + " extra 0 12=" + (status < 7 ? "4" : "6") +
                    (has_profile ? " 13=4294967295" : "")};
      }
      events.clear();
      EXPECT_THAT(Deliver(row.id, Call(status, has_profile ? 255 : 0, ~0u)),
                  ElementsAre(Line(7, kCallback,
                                   row.prefix + (has_profile ? "profile_handle: 4294967295 " : "") +
                                       texts[at] + "\n")));
      EXPECT_EQ(session.script.decoded, row.decoded);
      EXPECT_THAT(events, ElementsAreArray(expected));
    }
    EXPECT_THAT(Deliver(row.id, Call(-1)), ElementsAre(Line(7, kCallback, row.prefix + "\n")));
  }
}

TEST(Indication, StatusIsOnlyLogged) {
  const std::string station = "Mobile AP Station mode ";
  const std::pair<uint32_t, Lines> kinds[] = {
      {0x29, {"Mobile AP ConnectBackhauled...\n", "Mobile AP Disconnected...\n"}},
      {0x5E,
       {station + "ConnectBackhauled...\n", station + "Disconnected...\n",
        station + "Association Failed. Going back to AP+STA Router Mode\n",
        station + "IP Assignment via DHCP Failed. Will switch to Static IP if available\n"}}};
  Session session;
  QcmapWrapper::s_ins_ = nullptr;
  for (const auto& [id, texts] : kinds) {
    for (const uint32_t status : {0u, 1u, 2u, 3u, 4u, 5u, ~0u}) {
      const bool known = status - 1 < texts.size();
      EXPECT_THAT(Deliver(id, qcmap_msgr_status_ind_msg_v01{9, status}),
                  ElementsAreArray(known ? Lines{Line(7, kCallback, texts[status - 1])} : Lines()));
    }
    EXPECT_EQ(session.script.decoded, "2 " + std::to_string(id) + " 8 8");
  }
}

TEST(Indication, IsDroppedWhenItCannotBeUsed) {
  Session session;
  int events = 0;
  Subscribe(session.wrapper, &events, [&](EventDic&) { ++events; });
  const std::string mismatch = "ind handle [78] mobile ap handle [77] mismatch\n";
  for (const uint32_t id : {0x22, 0x23}) {
    EXPECT_THAT(Deliver(id, Call(3, 1, 1, 78)), ElementsAre(Line(3, kCallback, mismatch)));
  }
  for (const uint32_t id : {0x0, 0x21, 0x24, 0x26, 0x5D})
    EXPECT_THAT(Deliver(id, Call(3)), ElementsAre());
  session.script.decode_error = -4;
  for (const uint32_t id : {0x29, 0x5E}) {
    EXPECT_THAT(Deliver(id, Call(1)),
                ElementsAre(Line(3, kCallback, "qmi_client_message_decode error -4\n")));
  }
  for (const uint32_t id : {0x22, 0x23, 0x25}) EXPECT_THAT(Deliver(id, Call(3)), ElementsAre());
  session.script.decode_error = 0;
  fail_calloc = true;
  for (const uint32_t id : {0x22, 0x23, 0x25}) EXPECT_THAT(Deliver(id, Call(3)), ElementsAre());
  fail_calloc = false;
  QcmapWrapper::s_ins_ = nullptr;
  for (const uint32_t id : {0x22, 0x23, 0x25}) EXPECT_THAT(Deliver(id, Call(3)), ElementsAre());
  EXPECT_EQ(events, 0);
  QcmapWrapper::s_ins_ = &session.wrapper;
  EXPECT_EQ(Deliver(0x25, Call(3, 0, 0, 78)).size(), 1u) << "whatever its handle";
  EXPECT_EQ(events, 1);
}

TEST(Indication, WithoutClientOnlyTheStatusOfACallIsUsed) {
  Session session(-1);
  EXPECT_THAT(Deliver(0x22, Call(3)), ElementsAre());
  EXPECT_THAT(Deliver(0x23, Call(6)), ElementsAre());
  EXPECT_EQ(Deliver(0x25, Call(3)).size(), 1u);
}

// From the constructor's own attempt on, through the callback that the client was given.
TEST(Indication, MayArriveDuringTheFirstAttempt) {
  Script script;
  script.before["GetMobileAPStatus"] = [&] { EXPECT_TRUE(script.Indicate(0x22, Call(3))); };
  QcmapWrapper wrapper;
  EXPECT_THAT(TakeLog(),
              testing::Contains(Line(7, kCallback, "h (nil) msg_id 0x22 len 108\n")).Times(1));
}

TEST(Indication, SurvivesEachFailedAllocation) {
  Session session;
  std::string event;
  Subscribe(session.wrapper, &event, [&](EventDic& dictionary) {
    const Untracked untracked;
    event = Text(dictionary);
  });
  auto record = Call(12, 1, ~0u);
  for (int n = 1; event.empty(); ++n) {
    ASSERT_LT(n, 20);
    try {
      const Allocations allocations(n);
      QcmapWrapper::EvtCb(nullptr, 0x25, &record, sizeof record, nullptr);
    } catch (const std::bad_alloc&) {
      EXPECT_EQ(event, "");
    }
  }
  EXPECT_EQ(event, "5 extra 0 12=6 13=4294967295");
  TakeLog();
}

}  // namespace
