/// wait: waits until a profile's call is in a state.
#include "arguments.h"
#include "call_change.h"
#include "objects.h"

namespace qcmapctl {
namespace {

struct WaitArguments {
  std::optional<uint32_t> index;
  Families families;
  std::optional<ConnectStatus> state;
};

Report WaitForState(Context& context, const WaitArguments& arguments) {
  CallChange call(context.router, *arguments.index,
                  arguments.state.value_or(ConnectStatus::CONNECTED), nullptr);
  for (const IPFamily family : arguments.families.Chosen()) call.Add(family);
  call.Wait(context.deadline);
  return call.Conclude(false);
}

}  // namespace

void AddWait(CommandLine& line) {
  const auto arguments = std::make_shared<WaitArguments>();
  CLI::App* wait =
      line.AddObject("wait", "Wait until a profile's call is in a state",
                     [arguments](Context& context) { return WaitForState(context, *arguments); });
  line.SetTimeLimit(wait, kLimitOfCalls);
  AddIndex(wait, arguments->index)->required();
  AddFamilies(wait, arguments->families);
  AddWord(wait, "--state", arguments->state, StateWords(),
          "The state to wait for; connected by default");
}

}  // namespace qcmapctl
