/// watch: the present state of all calls, then their events as they come.
#include <algorithm>

#include "arguments.h"
#include "event_feed.h"
#include "objects.h"

namespace qcmapctl {
namespace {

using std::chrono::milliseconds;
namespace qcmap = mox::vendor::qcom::qcmap;

struct WatchArguments {
  std::optional<uint32_t> count;
  std::optional<milliseconds> idle_timeout;
};

/// An event by its name. It may say that a call is up or down.
struct Kind {
  uint32_t code;
  const char* name;
  std::optional<ConnectStatus> state;
};

constexpr Kind kKinds[] = {
    {qcmap::BRING_UP_CONNECTED, "bring_up_connected", ConnectStatus::CONNECTED},
    {qcmap::BRING_UP_CONNECTION_FAILED, "bring_up_connection_failed", {}},
    {qcmap::TEAR_DOWN_DISCONNECTED, "tear_down_disconnected", ConnectStatus::DISCONNECTED},
    {qcmap::TEAR_DOWN_DISCONNECTION_FAILED, "tear_down_disconnection_failed", {}},
    {qcmap::WWAN_CONNECTED, "wwan_connected", ConnectStatus::CONNECTED},
    {qcmap::WWAN_DISCONNECTED, "wwan_disconnected", ConnectStatus::DISCONNECTED},
};

Kind KindOf(uint32_t code) {
  for (const Kind& kind : kKinds) {
    if (kind.code == code) return kind;
  }
  return {code, "unknown", {}};
}

/// The index of the profile that an event names; empty if it names none, or a deleted one.
std::optional<uint32_t> IndexOf(const Event& event, const std::vector<Profile>& profiles) {
  for (const Profile& profile : profiles) {
    if (event.profile_handle == profile.policy.profile_handle) return profile.index;
  }
  return std::nullopt;
}

Report DescribeEvent(const Event& event, const Kind& kind, const std::optional<uint32_t>& index) {
  const auto number = [](const std::optional<uint32_t>& value) {
    return value ? Json(*value) : Json();
  };
  return {{{"time", FormatTime(event.time)},
           {"event", kind.name},
           {"handle", number(event.profile_handle)},
           {"index", number(index)},
           {"family", WordOf(event.family)},
           {"state", kind.state ? Json(WordOf(*kind.state)) : Json()}},
          AsSentence("{time}  {event}[  profile {index}][  handle {handle}]  {family}[  {state}]")};
}

void PrintInitial(Context& context, const std::vector<Profile>& profiles) {
  for (const Profile& profile : profiles) {
    const FamilyStates state = context.router.CallState(profile.index);
    for (const IPFamily family : {IPFamily::IPV4, IPFamily::IPV6}) {
      const Event now{std::chrono::system_clock::now(), 0, family, profile.policy.profile_handle};
      PrintLine(DescribeEvent(now, {0, "initial", state.Of(family)}, profile.index),
                context.options);
    }
  }
}

/// Reads the policies again, because adding and deleting them moves indices. Keeps the old ones if
/// the server refuses.
void Refresh(Router& router, std::vector<Profile>& profiles) {
  try {
    profiles = router.Profiles();
  } catch (const CommandFailed& failure) {
    if (failure.failure() != Failure::REFUSED) throw;
  }
}

Report Watch(Context& context, const WatchArguments& arguments) {
  // Subscribes before reading the state, so that no event in between is missed.
  EventFeed feed(context.router.Wrapper());
  std::vector<Profile> profiles = context.router.Profiles();
  PrintInitial(context, profiles);
  if (!context.options.wait) RunWithoutLimit();

  uint32_t printed = 0;
  auto last_event = Clock::now();
  while (!arguments.count || printed < *arguments.count) {
    auto deadline = Clock::now() + kCheckEvery;
    if (arguments.idle_timeout) {
      deadline = std::min(deadline, last_event + *arguments.idle_timeout);
    }
    const std::vector<Event> events = feed.Take(deadline);
    if (!events.empty()) last_event = Clock::now();
    const bool idle =
        arguments.idle_timeout && Clock::now() - last_event >= *arguments.idle_timeout;
    if (idle && events.empty()) {
      if (arguments.count) throw CommandFailed(Failure::IDLE);
      break;
    }
    Refresh(context.router, profiles);
    for (const Event& event : events) {
      if (arguments.count && printed == *arguments.count) break;
      PrintLine(DescribeEvent(event, KindOf(event.code), IndexOf(event, profiles)),
                context.options);
      ++printed;
    }
  }
  return {};
}

}  // namespace

void AddWatch(CommandLine& line) {
  const auto arguments = std::make_shared<WatchArguments>();
  CLI::App* watch =
      line.AddObject("watch", "Print the state of all calls, then events until interrupted",
                     [arguments](Context& context) { return Watch(context, *arguments); });
  AddNumber(watch, "--count", arguments->count, 0, 1000000000, "End after N events");
  AddSeconds(
      watch, "--idle-timeout", [arguments](milliseconds limit) { arguments->idle_timeout = limit; },
      "End when no event comes for this long; exit code 3 if --count is not reached");
}

}  // namespace qcmapctl
