/// call: a profile's data call, one family at a time.
#include "arguments.h"
#include "call_change.h"
#include "objects.h"
#include "readings.h"

namespace qcmapctl {
namespace {

constexpr Direction kUp = {"up",
                           ConnectStatus::CONNECTED,
                           ConnectStatus::CONNECTING,
                           &QcmapWrapper::ConnectBackhaul,
                           mox::vendor::qcom::qcmap::BRING_UP_CONNECTED,
                           mox::vendor::qcom::qcmap::BRING_UP_CONNECTION_FAILED,
                           Failure::BRING_UP_REFUSED,
                           Failure::BRING_UP_FAILED};
constexpr Direction kDown = {"down",
                             ConnectStatus::DISCONNECTED,
                             ConnectStatus::DISCONNECTING,
                             &QcmapWrapper::DisconnectBackhaul,
                             mox::vendor::qcom::qcmap::TEAR_DOWN_DISCONNECTED,
                             mox::vendor::qcom::qcmap::TEAR_DOWN_DISCONNECTION_FAILED,
                             Failure::TEAR_DOWN_REFUSED,
                             Failure::TEAR_DOWN_FAILED};

struct CallArguments {
  std::optional<uint32_t> index;
  Families families;
};

Report ChangeCall(Context& context, const CallArguments& arguments, const Direction& direction) {
  CallChange change(context.router, *arguments.index, direction.target, &direction);
  for (const IPFamily family : arguments.families.Chosen()) change.Add(family);
  change.Wait(context.deadline);
  return change.Conclude(context.deadline == Clock::time_point::min());
}

Report ShowCalls(Router& router, const std::optional<uint32_t>& index) {
  return {OfProfiles(router, index,
                     [&](const Profile& profile) -> Json {
                       const FamilyStates state = router.CallState(profile.index);
                       return {{"index", profile.index},
                               {"handle", profile.policy.profile_handle},
                               {"ipv4", WordOf(state.ipv4)},
                               {"ipv6", WordOf(state.ipv6)},
                               {"half_up", state.IsHalfUp(profile.policy)}};
                     }),
          AsTable("no profiles")};
}

}  // namespace

void AddCall(CommandLine& line) {
  const auto arguments = std::make_shared<CallArguments>();
  CLI::App* call = line.AddObject("call", "A profile's data call");
  CLI::App* show = line.AddVerb(
      call, "show", "Show the state of both families, for one profile or for all",
      [arguments](Context& context) { return ShowCalls(context.router, arguments->index); });
  AddIndex(show, arguments->index);
  for (const Direction* direction : {&kUp, &kDown}) {
    const std::string what = direction == &kUp ? "Bring up" : "Take down";
    CLI::App* verb = line.AddVerb(call, direction->word,
                                  what + " both families of the call, or one with -4 or -6",
                                  [arguments, direction](Context& context) {
                                    return ChangeCall(context, *arguments, *direction);
                                  });
    line.SetTimeLimit(verb, kLimitOfCalls);
    AddIndex(verb, arguments->index)->required();
    AddFamilies(verb, arguments->families);
  }
}

}  // namespace qcmapctl
