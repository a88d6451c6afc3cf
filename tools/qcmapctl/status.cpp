/// status: everything on one screen.
#include "status.h"

#include <iostream>
#include <string>
#include <vector>

#include "lan.h"
#include "passthrough.h"
#include "policy.h"
#include "vlan.h"

namespace qcmapctl {
namespace {

/// One part of the status. If the server refuses to report it, it is shown as not available and
/// standard error says why. `name` is empty if the failure names the part itself.
template <typename Describe>
Report Part(const std::string& name, Describe describe) {
  try {
    return describe();
  } catch (const CommandFailed& failure) {
    if (failure.failure() != Failure::REFUSED) throw;
    std::cerr << "qcmapctl: status: " << name << (name.empty() ? "" : ": ") << failure.what()
              << "\n";
    return {"not available\n", nullptr};
  }
}

std::string Join(const std::vector<std::string>& words) {
  std::string text;
  for (const std::string& word : words) text += (text.empty() ? "" : " ") + word;
  return text;
}

Report DescribeFamily(Router& router, const Profile& profile, const FamilyStates state,
                      IPFamily family) {
  Report report;
  std::vector<std::string> addresses;
  if (state.Of(family) == ConnectStatus::CONNECTED) {
    addresses = router.Addresses(profile.index, family);
  }
  report.text =
      WordOf(state.Of(family)) + std::string(addresses.empty() ? "" : "  ") + Join(addresses);
  report.json["state"] = WordOf(state.Of(family));
  report.json["addresses"] = addresses.empty() ? Json(nullptr) : Json(addresses);
  return report;
}

Report DescribeProfile(Router& router, const Profile& profile) {
  Report report;
  report.json = DescribePolicy(profile);
  const FamilyStates state = router.CallState(profile.index);
  const bool half_up = state.IsHalfUp(profile.policy);
  report.text = "Profile " + std::to_string(profile.index) + "  handle " +
                std::to_string(profile.policy.profile_handle) + ", " + WordOf(profile.policy.tech) +
                ", " + WordOf(profile.policy.ip_family) + ", profile numbers " +
                std::to_string(profile.policy.profile_v4) + " and " +
                std::to_string(profile.policy.profile_v6) + (half_up ? "  HALF UP" : "") + "\n";
  for (const IPFamily family : {IPFamily::IPV4, IPFamily::IPV6}) {
    const Report part = DescribeFamily(router, profile, state, family);
    report.json[WordOf(family)] = part.json;
    report.text += "  " + std::string(WordOf(family)) + "  " + part.text + "\n";
  }
  report.json["half_up"] = half_up;
  return report;
}

Report DescribeProfiles(Router& router) {
  Report report{"", Json::array()};
  for (const Profile& profile : router.Profiles()) {
    const Report part = Part("", [&] { return DescribeProfile(router, profile); });
    report.text += part.text;
    report.json.push_back(part.json);
  }
  if (report.text.empty()) report.text = "No profiles\n";
  return report;
}

}  // namespace

Report ShowStatus(Router& router) {
  // Fails if there is no server, instead of showing parts that are not available.
  router.Wrapper();
  const Report profiles = Part("", [&] { return DescribeProfiles(router); });
  const Report lan = Part("lan", [&] { return ShowLan(router); });
  const Report vlans = Part("", [&] { return ListVlans(router); });
  const Report passthrough = Part("passthrough", [&] { return ShowPassthrough(router); });

  Report status;
  status.text = "Server     running\nMobile AP  connected\n\n" + profiles.text + "\nLAN\n" +
                Indent(lan.text) + "VLANs\n" + Indent(vlans.text) + "Passthrough\n" +
                Indent(passthrough.text);
  status.json["server"] = "running";
  status.json["mobile_ap"] = "connected";
  status.json["profiles"] = profiles.json;
  status.json["lan"] = lan.json;
  status.json["vlans"] = vlans.json;
  status.json["passthrough"] = passthrough.json;
  return status;
}

void AddStatus(CommandLine& line) {
  CLI::App* status = line.AddObject("status", "Everything on one screen");
  line.AddVerb(status, "show", "Show server, profiles, calls, LAN, VLANs and passthrough",
               [](Context& context) { return ShowStatus(context.router); });
}

}  // namespace qcmapctl
