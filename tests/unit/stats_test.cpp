/// Statistics: families, and counters carried whole or not at all.
#include "world.h"

namespace {

TEST(Stats, JudgesTheFamilyBeforeTheServer) {
  QcmapWrapper::WWANStatics counters;
  for (const int family : {0, 4, -1, 10}) {
    World world(-1);
    EXPECT_EQ(world.wrapper.GetWWANStatistics(1, IPFamily{family}, counters),
              Result::INVALID_ARGUMENT);
    EXPECT_EQ(world.wrapper.ResetWWANStatistics(1, IPFamily{family}), Result::INVALID_ARGUMENT);
    const std::string parameters = "WWANStatistics(uint32_t, mox::util::IPFamily";
    const std::string text = "WWANStatistics invalid ip family " + std::to_string(family);
    EXPECT_EQ(
        TakeLog(),
        (Lines{Line(3, "mox::Result @Get" + parameters + ", WWANStatics&)",
                    "QCMAP_Client::Get" + text),
               Line(3, "mox::Result @Reset" + parameters + ")", "QCMAP_Client::Reset" + text)}));
    EXPECT_TRUE(world.script.utility_calls.empty()) << "the server is not looked for";
  }
}

TEST(Stats, CarriesCountersWholeOrNotAtAll) {
  World world;
  QcmapWrapper::WWANStatics counters = {5, 6, 7, 8};
  const auto text = [&] {
    return Join(counters.counter64_1, counters.counter64_2, counters.counter32_1,
                counters.counter32_2);
  };
  world.script.Refuse("GetWWANStatistics");
  EXPECT_EQ(world.wrapper.GetWWANStatistics(0, IPFamily::IPV4, counters), Result::FAILURE);
  EXPECT_EQ(text(), "5 6 7 8");
  world.script.Grant("GetWWANStatistics");
  EXPECT_EQ(world.wrapper.GetWWANStatistics(0, IPFamily::IPV6, counters), Result::SUCCESS);
  EXPECT_EQ(text(), "1099511627776 2 3 4294967295");
  EXPECT_EQ(world.Sent(), (Lines{"GetWWANStatistics 4", "GetWWANStatistics 6"}));
}

}  // namespace
