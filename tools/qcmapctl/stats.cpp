/// stats: the traffic counters of a profile's call.
#include <algorithm>
#include <chrono>
#include <cmath>

#include "arguments.h"
#include "event_feed.h"
#include "objects.h"
#include "readings.h"

namespace qcmapctl {
namespace {

struct StatsArguments {
  std::optional<uint32_t> index;
  Families families;
  std::optional<std::chrono::milliseconds> period;

  IPFamily Family() const {
    const std::vector<IPFamily> chosen = families.Chosen();
    return chosen.size() == 2 ? IPFamily::IPV4V6 : chosen[0];
  }
};

Json ReadCounters(Router& router, const StatsArguments& arguments) {
  return OfProfiles(router, arguments.index, [&](const Profile& profile) -> Json {
    const auto counters = router.Counters(profile.index, arguments.Family());
    return {{"index", profile.index},
            {"family", WordOf(arguments.Family())},
            {"counter64_1", counters.counter64_1},
            {"counter64_2", counters.counter64_2},
            {"counter32_1", counters.counter32_1},
            {"counter32_2", counters.counter32_2}};
  });
}

/// `now` with the time, and with how much each counter has grown since `before` in a second: null
/// if it was reset meanwhile.
Json WithRates(const Json& before, const Json& now, std::chrono::duration<double> elapsed) {
  Json line = {{"time", FormatTime(std::chrono::system_clock::now())}};
  line.update(now);
  for (const auto& item : now.items()) {
    if (item.key().rfind("counter", 0) != 0) continue;
    const auto total = item.value().get<uint64_t>();
    const auto last = before.at(item.key()).get<uint64_t>();
    const double rate = static_cast<double>(total - last) / elapsed.count();
    line[item.key() + "_per_s"] = total < last ? Json() : Json(std::llround(rate));
  }
  return line;
}

Report WatchCounters(Context& context, const StatsArguments& arguments) {
  StatsArguments one = arguments;
  std::vector<Json> before;
  for (const Profile& profile : context.router.Profiles(arguments.index)) {
    one.index = profile.index;
    before.push_back(ReadCounters(context.router, one));
  }
  if (!context.options.wait) RunWithoutLimit();
  EventFeed feed(context.router.Wrapper());
  auto last = Clock::now();
  for (auto next = last;;) {
    next += *arguments.period;
    while (Clock::now() < next) {
      feed.Take(std::min(next, Clock::now() + kCheckEvery));
      context.router.Policies();
    }
    const auto now = Clock::now();
    for (Json& counters : before) {
      one.index = counters.at("index").get<uint32_t>();
      Json present = ReadCounters(context.router, one);
      PrintLine({WithRates(counters, present, now - last),
                 AsSentence("{time}  profile {index}  {counter64_1}[ +{counter64_1_per_s}/s]  "
                            "{counter64_2}[ +{counter64_2_per_s}/s]  "
                            "{counter32_1}[ +{counter32_1_per_s}/s]  "
                            "{counter32_2}[ +{counter32_2_per_s}/s]")},
                context.options);
      counters = std::move(present);
    }
    last = now;
  }
}

Report ShowStats(Context& context, const StatsArguments& arguments) {
  if (arguments.period) return WatchCounters(context, arguments);
  return {ReadCounters(context.router, arguments), AsTable("no profiles")};
}

Report ResetStats(Router& router, const StatsArguments& arguments) {
  const uint32_t index = *arguments.index;
  router.Policy(index);
  router.Require(
      router.Wrapper().ResetWWANStatistics(index, arguments.Family()) == mox::Result::SUCCESS,
      Failure::REFUSED, ProfileName(index));
  return {{{"result", "reset"}, {"index", index}, {"family", WordOf(arguments.Family())}},
          AsSentence("profile {index}: {family} counters {result}")};
}

}  // namespace

void AddStats(CommandLine& line) {
  const auto arguments = std::make_shared<StatsArguments>();
  CLI::App* stats = line.AddObject("stats", "Traffic counters of a profile's call");
  CLI::App* show =
      line.AddVerb(stats, "show", "Show the counters of both families together, or of one",
                   [arguments](Context& context) { return ShowStats(context, *arguments); });
  AddIndex(show, arguments->index);
  AddFamilies(show, arguments->families);
  AddSeconds(
      show, "--watch",
      [arguments](std::chrono::milliseconds period) { arguments->period = period; },
      "Print totals and rates once in this time, until interrupted",
      std::chrono::milliseconds(100));
  CLI::App* reset = line.AddVerb(
      stats, "reset", "Set the counters to zero",
      [arguments](Context& context) { return ResetStats(context.router, *arguments); });
  AddIndex(reset, arguments->index)->required();
  AddFamilies(reset, arguments->families);
}

}  // namespace qcmapctl
