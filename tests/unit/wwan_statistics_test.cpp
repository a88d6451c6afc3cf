/// Statistics: families, and counters carried whole or not at all.
#include "session.h"

namespace {

TEST(WwanStatistics, JudgesTheFamilyBeforeTheServer) {
  QcmapWrapper::WWANStatics counters;
  for (const int family : {0, 4, -1, 10}) {
    Session session(-1);
    EXPECT_EQ(session.wrapper.GetWWANStatistics(1, IPFamily{family}, counters),
              Result::INVALID_ARGUMENT);
    EXPECT_EQ(session.wrapper.ResetWWANStatistics(1, IPFamily{family}), Result::INVALID_ARGUMENT);
    const std::string parameters = "WWANStatistics(uint32_t, mox::util::IPFamily";
    const std::string text = "WWANStatistics invalid ip family " + std::to_string(family);
    EXPECT_EQ(
        TakeLog(),
        (Lines{Line(3, "mox::Result @Get" + parameters + ", WWANStatics&)",
                    "QCMAP_Client::Get" + text),
               Line(3, "mox::Result @Reset" + parameters + ")", "QCMAP_Client::Reset" + text)}));
    EXPECT_TRUE(session.script.utility_calls.empty()) << "the server was looked for";
  }
}

TEST(WwanStatistics, CarriesCountersWholeOrNotAtAll) {
  Session session;
  QcmapWrapper::WWANStatics counters = {1, 2, 3, 4};
  const auto text = [&] {
    return Join(counters.counter64_1, counters.counter64_2, counters.counter32_1,
                counters.counter32_2);
  };
  session.script.Refuse("GetWWANStatistics");
  EXPECT_EQ(session.wrapper.GetWWANStatistics(0, IPFamily::IPV4, counters), Result::FAILURE);
  EXPECT_EQ(text(), "1 2 3 4");
  session.script.Grant("GetWWANStatistics");
  EXPECT_EQ(session.wrapper.GetWWANStatistics(0, IPFamily::IPV6, counters), Result::SUCCESS);
  EXPECT_EQ(text(), "1099511627776 2 3 4294967295");
  EXPECT_EQ(session.Sent(), (Lines{"GetWWANStatistics 4", "GetWWANStatistics 6"}));
}

}  // namespace
