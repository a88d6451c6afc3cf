/// watch: the present state of all calls, then their events as they come.
#include "watch.h"

#include <optional>
#include <string>
#include <vector>

#include "arguments.h"
#include "event_feed.h"

namespace qcmapctl {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;
namespace qcmap = mox::vendor::qcom::qcmap;

// How often a watch without events checks that the server is still there.
constexpr std::chrono::seconds kCheckEvery{1};

struct WatchArguments {
  std::optional<uint32_t> count;
  std::optional<milliseconds> idle_timeout;
};

const char* NameOf(uint32_t code) {
  switch (code) {
    case qcmap::BRING_UP_CONNECTED:
      return "bring_up_connected";
    case qcmap::BRING_UP_CONNECTION_FAILED:
      return "bring_up_connection_failed";
    case qcmap::TEAR_DOWN_DISCONNECTED:
      return "tear_down_disconnected";
    case qcmap::TEAR_DOWN_DISCONNECTION_FAILED:
      return "tear_down_disconnection_failed";
    case qcmap::WWAN_CONNECTED:
      return "wwan_connected";
    case qcmap::WWAN_DISCONNECTED:
      return "wwan_disconnected";
    default:
      return "unknown";
  }
}

/// Null unless the event says that a call is up or down.
const char* StateOf(uint32_t code) {
  switch (code) {
    case qcmap::BRING_UP_CONNECTED:
    case qcmap::WWAN_CONNECTED:
      return WordOf(ConnectStatus::CONNECTED);
    case qcmap::TEAR_DOWN_DISCONNECTED:
    case qcmap::WWAN_DISCONNECTED:
      return WordOf(ConnectStatus::DISCONNECTED);
    default:
      return nullptr;
  }
}

/// The index of the profile that an event names; empty if it names none, or a deleted one.
std::optional<uint32_t> IndexOf(const Event& event, const std::vector<Profile>& profiles) {
  for (const Profile& profile : profiles) {
    if (event.profile_handle == profile.policy.profile_handle) return profile.index;
  }
  return std::nullopt;
}

Report DescribeLine(const Event& event, const char* name, const char* state,
                    const std::optional<uint32_t>& index) {
  const auto number = [](const std::optional<uint32_t>& value) {
    return value ? Json(*value) : Json(nullptr);
  };
  const std::string time = FormatTime(event.time);
  Report line;
  line.json["time"] = time;
  line.json["event"] = name;
  line.json["handle"] = number(event.profile_handle);
  line.json["index"] = number(index);
  line.json["family"] = WordOf(event.family);
  line.json["state"] = state == nullptr ? Json(nullptr) : Json(state);
  line.text = time + "  " + name + "  profile " + (index ? std::to_string(*index) : "?") +
              "  handle " + (event.profile_handle ? std::to_string(*event.profile_handle) : "?") +
              "  " + WordOf(event.family) + (state == nullptr ? "" : std::string("  ") + state) +
              "\n";
  return line;
}

void Emit(const Context& context, const Report& line) {
  if (!context.options.quiet) PrintLine(line, context.options.json);
}

void PrintInitial(Context& context, const std::vector<Profile>& profiles) {
  for (const Profile& profile : profiles) {
    const FamilyStates state = context.router.CallState(profile.index);
    for (const IPFamily family : {IPFamily::IPV4, IPFamily::IPV6}) {
      const Event now{std::chrono::system_clock::now(), 0, family, profile.policy.profile_handle};
      Emit(context, DescribeLine(now, "initial", WordOf(state.Of(family)), profile.index));
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

void Watch(Context& context, const WatchArguments& arguments) {
  // Subscribes before reading the state, so that no event in between is missed.
  EventFeed feed(context.router.Wrapper());
  std::vector<Profile> profiles = context.router.Profiles();
  PrintInitial(context, profiles);

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
      return;
    }
    Refresh(context.router, profiles);
    for (const Event& event : events) {
      if (arguments.count && printed == *arguments.count) break;
      Emit(context,
           DescribeLine(event, NameOf(event.code), StateOf(event.code), IndexOf(event, profiles)));
      ++printed;
    }
  }
}

}  // namespace

void AddWatch(CommandLine& line) {
  const auto arguments = std::make_shared<WatchArguments>();
  CLI::App* watch =
      line.AddObject("watch", "Print the state of all calls, then events until interrupted",
                     [arguments](Context& context) {
                       Watch(context, *arguments);
                       return Report();
                     });
  AddNumber(watch, "--count", arguments->count, 0, 1000000000, "End after N events");
  AddSeconds(
      watch, "--idle-timeout", [arguments](milliseconds limit) { arguments->idle_timeout = limit; },
      "End when no event comes for this long; exit code 3 if --count is not reached");
}

}  // namespace qcmapctl
