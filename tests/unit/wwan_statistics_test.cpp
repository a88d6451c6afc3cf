/// Statistics: families, and counters carried whole or not at all.
#include "session.h"

namespace {

using testing::ElementsAre;

TEST(WwanStatistics, JudgesTheFamilyBeforeTheServer) {
  QcmapWrapper::WWANStatics counters = {1, 2, 3, 4};
  for (const int family : {0, 4, -1, 10}) {
    Session session(-1);
    const auto value = static_cast<IPFamily>(family);
    EXPECT_EQ(session.wrapper.GetWWANStatistics(1, value, counters), Result::INVALID_ARGUMENT);
    EXPECT_EQ(session.wrapper.ResetWWANStatistics(1, value), Result::INVALID_ARGUMENT);
    const std::string number = std::to_string(family);
    EXPECT_THAT(
        TakeLog(),
        ElementsAre(
            Line(3, "mox::Result @GetWWANStatistics(uint32_t, mox::util::IPFamily, WWANStatics&)",
                 "QCMAP_Client::GetWWANStatistics invalid ip family " + number),
            Line(3, "mox::Result @ResetWWANStatistics(uint32_t, mox::util::IPFamily)",
                 "QCMAP_Client::ResetWWANStatistics invalid ip family " + number)));
    EXPECT_TRUE(session.script.utility_calls.empty()) << "the server was looked for";
  }
}

TEST(WwanStatistics, CarriesCountersWholeOrNotAtAll) {
  Session session;
  QcmapWrapper::WWANStatics counters = {1, 2, 3, 4};
  session.script.Refuse("GetWWANStatistics");
  EXPECT_EQ(session.wrapper.GetWWANStatistics(0, IPFamily::IPV4, counters), Result::FAILURE);
  EXPECT_EQ(
      counters.counter64_1 + counters.counter64_2 + counters.counter32_1 + counters.counter32_2,
      10u);
  session.script.Grant("GetWWANStatistics");
  EXPECT_EQ(session.wrapper.GetWWANStatistics(0, IPFamily::IPV6, counters), Result::SUCCESS);
  EXPECT_EQ(session.wrapper.ResetWWANStatistics(0, IPFamily::IPV4V6), Result::SUCCESS);
  EXPECT_EQ(counters.counter64_1, 1ull << 40);
  EXPECT_EQ(counters.counter64_2, 2u);
  EXPECT_EQ(counters.counter32_1, 3u);
  EXPECT_EQ(counters.counter32_2, 0xffffffffu);
  EXPECT_THAT(session.script.TakeRequests(),
              ElementsAre("GetWWANStatistics 4", "GetWWANStatistics 6", "ResetWWANStatistics 10"));
  TakeLog();
}

}  // namespace
