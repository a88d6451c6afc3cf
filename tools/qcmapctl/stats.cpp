/// stats: the traffic counters of a profile's call.
#include "stats.h"

#include <optional>
#include <string>
#include <vector>

#include "arguments.h"

namespace qcmapctl {
namespace {

using mox::Result;

struct StatsArguments {
  std::optional<uint32_t> index;
  Families families;

  IPFamily Family() const {
    const std::vector<IPFamily> chosen = families.Chosen();
    return chosen.size() == 2 ? IPFamily::IPV4V6 : chosen[0];
  }
};

Report Show(Router& router, const StatsArguments& arguments) {
  Report report{"", Json::array()};
  Table table({"PROFILE", "FAMILY", "COUNTER64-1", "COUNTER64-2", "COUNTER32-1", "COUNTER32-2"});
  for (const Profile& profile : router.Profiles(arguments.index)) {
    QcmapWrapper::WWANStatics counters{};
    router.Require(router.Wrapper().GetWWANStatistics(profile.index, arguments.Family(),
                                                      counters) == Result::SUCCESS,
                   Failure::REFUSED, ProfileName(profile.index));
    Json json;
    json["index"] = profile.index;
    json["family"] = WordOf(arguments.Family());
    json["counter64_1"] = counters.counter64_1;
    json["counter64_2"] = counters.counter64_2;
    json["counter32_1"] = counters.counter32_1;
    json["counter32_2"] = counters.counter32_2;
    report.json.push_back(json);
    table.AddRow({std::to_string(profile.index), WordOf(arguments.Family()),
                  std::to_string(counters.counter64_1), std::to_string(counters.counter64_2),
                  std::to_string(counters.counter32_1), std::to_string(counters.counter32_2)});
  }
  report.text = table.Render();
  report.json = OneOrAll(std::move(report.json), arguments.index.has_value());
  return report;
}

Report Reset(Router& router, const StatsArguments& arguments) {
  const uint32_t index = *arguments.index;
  router.Policy(index);
  router.Require(router.Wrapper().ResetWWANStatistics(index, arguments.Family()) == Result::SUCCESS,
                 Failure::REFUSED, ProfileName(index));
  Report report;
  report.text = ProfileName(index) + ": " + WordOf(arguments.Family()) + " counters reset\n";
  report.json["result"] = "reset";
  report.json["index"] = index;
  report.json["family"] = WordOf(arguments.Family());
  return report;
}

}  // namespace

void AddStats(CommandLine& line) {
  const auto arguments = std::make_shared<StatsArguments>();
  CLI::App* stats = line.AddObject("stats", "Traffic counters of a profile's call");
  CLI::App* show = line.AddVerb(
      stats, "show", "Show the counters of both families together, or of one with -4 or -6",
      [arguments](Context& context) { return Show(context.router, *arguments); });
  AddIndex(show, arguments->index);
  AddFamilies(show, arguments->families);
  CLI::App* reset =
      line.AddVerb(stats, "reset", "Set the counters to zero",
                   [arguments](Context& context) { return Reset(context.router, *arguments); });
  AddIndex(reset, arguments->index)->required();
  AddFamilies(reset, arguments->families);
}

}  // namespace qcmapctl
