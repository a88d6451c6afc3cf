/// wait: waits until a profile's call is in a state.
#include "wait.h"

#include <optional>
#include <string>
#include <vector>

#include "arguments.h"
#include "event_feed.h"

namespace qcmapctl {
namespace {

using Clock = std::chrono::steady_clock;

// How often a wait without events reads the state again, because not every change sends an event.
constexpr std::chrono::milliseconds kCheckEvery{500};

struct WaitArguments {
  std::optional<uint32_t> index;
  Families families;
  std::optional<ConnectStatus> state;
};

bool IsReached(const FamilyStates state, const std::vector<IPFamily>& families,
               ConnectStatus target) {
  for (const IPFamily family : families) {
    if (state.Of(family) != target) return false;
  }
  return true;
}

Report Wait(Context& context, const WaitArguments& arguments) {
  Router& router = context.router;
  const uint32_t index = *arguments.index;
  const std::vector<IPFamily> families = arguments.families.Chosen();
  const ConnectStatus target = arguments.state.value_or(ConnectStatus::CONNECTED);
  const auto deadline = Clock::now() + context.options.wait;
  EventFeed feed(router.Wrapper());
  router.Policy(index);

  FamilyStates state = router.CallState(index);
  while (!IsReached(state, families, target)) {
    if (Clock::now() >= deadline) {
      std::string present = ProfileName(index) + ": ";
      for (const IPFamily family : families) {
        present += std::string(WordOf(family)) + " is " + WordOf(state.Of(family)) + ", ";
      }
      throw CommandFailed(Failure::TIME_LIMIT, present + "not " + WordOf(target));
    }
    feed.Take(std::min(deadline, Clock::now() + kCheckEvery));
    state = router.CallState(index);
  }

  Report report;
  report.text = ProfileName(index) + ":";
  report.json["index"] = index;
  for (const IPFamily family : families) {
    report.text += std::string(" ") + WordOf(family) + " " + WordOf(target);
    report.json[WordOf(family)] = WordOf(target);
  }
  report.text += "\n";
  return report;
}

}  // namespace

void AddWait(CommandLine& line) {
  const auto arguments = std::make_shared<WaitArguments>();
  CLI::App* wait =
      line.AddObject("wait", "Wait until a profile's call is in a state",
                     [arguments](Context& context) { return Wait(context, *arguments); });
  AddIndex(wait, arguments->index)->required();
  AddFamilies(wait, arguments->families);
  AddWord(wait, "--state", arguments->state, StateWords(),
          "The state to wait for; connected by default");
}

}  // namespace qcmapctl
