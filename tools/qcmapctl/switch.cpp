/// switch: what a profile's call is allowed to do.
#include <iterator>

#include "arguments.h"
#include "objects.h"
#include "readings.h"

namespace qcmapctl {
namespace {

/// One switch: its name in options, keys and messages, and how it is read and set.
struct Switch {
  const char* name;
  const char* description;
  bool (QcmapWrapper::*get)(uint32_t, bool&);
  bool (*set)(QcmapWrapper&, uint32_t, bool);
};

constexpr Switch kSwitches[] = {
    {"autoconnect", "Whether the call comes up by itself", &QcmapWrapper::GetAutoConnect,
     [](QcmapWrapper& wrapper, uint32_t index, bool on) {
       return wrapper.SetAutoConnect(index, on);
     }},
    {"roaming", "Whether the call may be made while roaming", &QcmapWrapper::GetRoaming,
     [](QcmapWrapper& wrapper, uint32_t index, bool on) { return wrapper.SetRoaming(index, on); }},
    {"ipv4", "Whether the call may carry IPv4", &QcmapWrapper::GetIpv4State,
     [](QcmapWrapper& wrapper, uint32_t index, bool on) {
       return on ? wrapper.EnableIpv4(index) : wrapper.DisableIpv4(index);
     }},
    {"ipv6", "Whether the call may carry IPv6", &QcmapWrapper::GetIpv6State,
     [](QcmapWrapper& wrapper, uint32_t index, bool on) {
       return on ? wrapper.EnableIpv6(index) : wrapper.DisableIpv6(index);
     }},
};

struct SwitchArguments {
  std::optional<uint32_t> index;
  std::optional<bool> wanted[std::size(kSwitches)];
};

Report ShowSwitches(Router& router, const std::optional<uint32_t>& index) {
  return {OfProfiles(router, index,
                     [&](const Profile& profile) {
                       Json json = {{"index", profile.index}};
                       for (const Switch& which : kSwitches) {
                         bool on = false;
                         router.Require((router.Wrapper().*which.get)(profile.index, on),
                                        Failure::REFUSED,
                                        ProfileName(profile.index) + ": " + which.name);
                         json[which.name] = on;
                       }
                       return json;
                     }),
          AsTable("no profiles")};
}

Report SetSwitches(Router& router, const SwitchArguments& arguments) {
  bool any = false;
  for (const auto& wanted : arguments.wanted) any = any || wanted.has_value();
  if (!any) {
    throw CommandFailed("no switch is given", "for example: qcmapctl switch set 1 --roaming on");
  }

  const uint32_t index = *arguments.index;
  router.Policy(index);
  std::string done;
  for (size_t i = 0; i < std::size(kSwitches); ++i) {
    if (!arguments.wanted[i]) continue;
    const Switch& which = kSwitches[i];
    const bool granted = which.set(router.Wrapper(), index, *arguments.wanted[i]);
    std::string subject = ProfileName(index) + ": " + which.name;
    if (done.empty()) {
      router.Require(granted, Failure::REFUSED, subject);
    } else {
      subject.append(" was refused, already set:").append(done);
      router.Require(granted, Failure::PARTLY_DONE, subject);
    }
    done.append(" ").append(which.name);
  }
  return ShowSwitches(router, index);
}

}  // namespace

void AddSwitch(CommandLine& line) {
  const auto arguments = std::make_shared<SwitchArguments>();
  CLI::App* object = line.AddObject("switch", "What a profile's call is allowed to do");
  CLI::App* show = line.AddVerb(
      object, "show", "Show the switches of one profile, or of all",
      [arguments](Context& context) { return ShowSwitches(context.router, arguments->index); });
  AddIndex(show, arguments->index);
  CLI::App* set = line.AddVerb(
      object, "set", "Set switches of a profile",
      [arguments](Context& context) { return SetSwitches(context.router, *arguments); });
  AddIndex(set, arguments->index)->required();
  for (size_t i = 0; i < std::size(kSwitches); ++i) {
    AddWord(set, std::string("--") + kSwitches[i].name, arguments->wanted[i], SwitchWords(),
            kSwitches[i].description);
  }
}

}  // namespace qcmapctl
