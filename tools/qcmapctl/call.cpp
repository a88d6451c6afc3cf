/// call: a profile's data call, one family at a time.
#include "call.h"

#include <optional>
#include <string>
#include <vector>

#include "arguments.h"
#include "event_feed.h"

namespace qcmapctl {
namespace {

using Clock = std::chrono::steady_clock;
using mox::Result;

// How often a wait checks that the server is still there.
constexpr std::chrono::seconds kCheckEvery{1};

/// The differences between bringing a call up and taking it down.
struct Direction {
  const char* word;
  ConnectStatus target;
  ConnectStatus moving;
  Result (QcmapWrapper::*request)(uint32_t, IPFamily);
  uint32_t done_event;
  uint32_t failed_event;
  Failure refused;
  Failure failed;
};

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

/// One family that is brought up or taken down.
struct Leg {
  IPFamily family;
  /// Empty while the change is in progress, and after a failure.
  std::optional<std::string> result;
  /// The reason why the change failed.
  std::optional<Failure> failure;
  bool seen_moving = false;
  bool outcome_reported = false;
};

/// Brings up or takes down the families of a profile's call.
class CallChange {
 public:
  CallChange(Router& router, const Direction& direction, uint32_t index)
      : router_(router),
        direction_(direction),
        profile_{index, router.Policy(index)},
        feed_(router.Wrapper()) {}

  void Request(IPFamily family) {
    Leg leg{family, {}, {}};
    const std::string already = std::string("already ") + direction_.word;
    const ConnectStatus before = StateOf(family);
    if (before == direction_.target) {
      leg.result = already;
    } else {
      const Result result = (router_.Wrapper().*direction_.request)(profile_.index, family);
      if (result != Result::SUCCESS) Explain(leg, result, already);
    }
    legs_.push_back(leg);
  }

  void Wait(std::chrono::milliseconds limit) {
    const auto deadline = Clock::now() + limit;
    while (UnderWay() && Clock::now() < deadline) {
      for (const Event& event : feed_.Take(std::min(deadline, Clock::now() + kCheckEvery))) {
        Note(event);
      }
      const FamilyStates state = router_.CallState(profile_.index);
      for (Leg& leg : legs_) Judge(leg, state.Of(leg.family));
    }
    for (Leg& leg : legs_) {
      if (leg.result || leg.failure) continue;
      if (limit.count() == 0) {
        leg.result = "requested";
      } else {
        leg.failure = Failure::TIME_LIMIT;
      }
    }
  }

  /// Throws CommandFailed if any family has not reached the target state.
  Report Conclude() const {
    Report report;
    report.text = ProfileName(profile_.index) + ":";
    report.json["index"] = profile_.index;
    report.json["handle"] = profile_.policy.profile_handle;
    for (const Leg& leg : legs_) {
      if (leg.failure) Fail();
      const char* separator = &leg == &legs_.front() ? " " : ", ";
      report.text += separator + std::string(WordOf(leg.family)) + " " + *leg.result;
      report.json[WordOf(leg.family)] = *leg.result;
    }
    report.text += "\n";
    return report;
  }

 private:
  ConnectStatus StateOf(IPFamily family) { return router_.CallState(profile_.index).Of(family); }

  bool UnderWay() const {
    for (const Leg& leg : legs_) {
      if (!leg.result && !leg.failure) return true;
    }
    return false;
  }

  /// Decides what a refused request means. If another program has made the same change first, that
  /// is not a failure.
  void Explain(Leg& leg, Result result, const std::string& already) {
    const ConnectStatus state = StateOf(leg.family);
    // After a failed attempt to connect, the state is unknown and there is nothing to take down.
    const bool nothing_there =
        result == Result::INCOMPATIBLE_STATE && state == ConnectStatus::UNKNOWN;
    if (state == direction_.target || nothing_there) {
      leg.result = already;
    } else if (state == direction_.moving) {
      leg.seen_moving = true;
    } else {
      router_.RequireServer();
      leg.failure =
          state == ConnectStatus::DISCONNECTING ? Failure::CALL_GOING_DOWN : direction_.refused;
    }
  }

  void Note(const Event& event) {
    if (event.profile_handle && *event.profile_handle != profile_.policy.profile_handle) return;
    if (event.code != direction_.done_event && event.code != direction_.failed_event) return;
    for (Leg& leg : legs_) leg.outcome_reported |= leg.family == event.family;
  }

  void Judge(Leg& leg, ConnectStatus state) const {
    if (leg.result || leg.failure) return;
    if (state == direction_.target) {
      leg.result = direction_.word;
    } else if (state == direction_.moving) {
      leg.seen_moving = true;
    } else if (leg.seen_moving || leg.outcome_reported) {
      leg.failure = direction_.failed;
    }
  }

  [[noreturn]] void Fail() const {
    std::optional<Failure> worst;
    bool any_done = false;
    std::string text = ProfileName(profile_.index);
    for (const Leg& leg : legs_) {
      text += (&leg == &legs_.front() ? ": " : ", ") + std::string(WordOf(leg.family)) + " ";
      text += leg.failure
                  ? "not " + std::string(direction_.word) + " (" + MessageOf(*leg.failure) + ")"
                  : *leg.result;
      any_done = any_done || !leg.failure;
      if (leg.failure && (!worst || *leg.failure == Failure::TIME_LIMIT)) worst = leg.failure;
    }
    if (any_done) throw CommandFailed(Failure::PARTLY_DONE, text);
    if (legs_.front().failure == legs_.back().failure) {
      text = ProfileName(profile_.index) + ": " + WordOf(legs_.front().family);
      if (legs_.size() > 1) text += std::string(" and ") + WordOf(legs_.back().family);
    }
    throw CommandFailed(*worst, text);
  }

  Router& router_;
  const Direction& direction_;
  Profile profile_;
  EventFeed feed_;
  std::vector<Leg> legs_;
};

struct CallArguments {
  std::optional<uint32_t> index;
  Families families;
};

Report Change(Context& context, const CallArguments& arguments, const Direction& direction) {
  CallChange change(context.router, direction, *arguments.index);
  for (const IPFamily family : arguments.families.Chosen()) change.Request(family);
  change.Wait(context.options.wait);
  return change.Conclude();
}

Report Show(Router& router, const std::optional<uint32_t>& index) {
  Report report{"", Json::array()};
  Table table({"PROFILE", "HANDLE", "IPV4", "IPV6"});
  for (const Profile& profile : router.Profiles(index)) {
    const FamilyStates state = router.CallState(profile.index);
    const bool half_up = state.IsHalfUp(profile.policy);
    Json json;
    json["index"] = profile.index;
    json["handle"] = profile.policy.profile_handle;
    json["ipv4"] = WordOf(state.ipv4);
    json["ipv6"] = WordOf(state.ipv6);
    json["half_up"] = half_up;
    report.json.push_back(json);
    table.AddRow({std::to_string(profile.index), std::to_string(profile.policy.profile_handle),
                  WordOf(state.ipv4), WordOf(state.ipv6), half_up ? "HALF UP" : ""});
  }
  report.text = table.Render();
  report.json = OneOrAll(std::move(report.json), index.has_value());
  return report;
}

}  // namespace

void AddCall(CommandLine& line) {
  const auto arguments = std::make_shared<CallArguments>();
  CLI::App* call = line.AddObject("call", "A profile's data call");
  CLI::App* show = line.AddVerb(
      call, "show", "Show the state of both families, for one profile or for all",
      [arguments](Context& context) { return Show(context.router, arguments->index); });
  AddIndex(show, arguments->index);
  for (const Direction* direction : {&kUp, &kDown}) {
    CLI::App* verb = line.AddVerb(call, direction->word,
                                  direction == &kUp
                                      ? "Bring up both families of the call, or one with -4 or -6"
                                      : "Take down both families of the call, or one with -4 or -6",
                                  [arguments, direction](Context& context) {
                                    return Change(context, *arguments, *direction);
                                  });
    AddIndex(verb, arguments->index)->required();
    AddFamilies(verb, arguments->families);
  }
}

}  // namespace qcmapctl
