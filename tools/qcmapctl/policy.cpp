/// policy: the server's WWAN policies.
#include "policy.h"

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include "arguments.h"

namespace qcmapctl {
namespace {

struct PolicyArguments {
  std::optional<uint32_t> index;
  std::optional<Tech> tech;
  std::optional<IPFamily> family;
  std::optional<uint32_t> profile_v4;
  std::optional<uint32_t> profile_v6;
};

Report Describe(const std::vector<Profile>& profiles) {
  Report report{"", Json::array()};
  Table table({"PROFILE", "HANDLE", "TECH", "FAMILY", "PROFILE-V4", "PROFILE-V6"});
  for (const Profile& profile : profiles) {
    report.json.push_back(DescribePolicy(profile));
    table.AddRow({std::to_string(profile.index), std::to_string(profile.policy.profile_handle),
                  WordOf(profile.policy.tech), WordOf(profile.policy.ip_family),
                  std::to_string(profile.policy.profile_v4),
                  std::to_string(profile.policy.profile_v6)});
  }
  report.text = table.Render();
  return report;
}

Report Show(Router& router, const PolicyArguments& arguments) {
  Report report = Describe(router.Profiles(arguments.index));
  report.json = OneOrAll(std::move(report.json), arguments.index.has_value());
  return report;
}

Report DescribeChange(const char* result, const Profile& profile) {
  Report report;
  report.text = ProfileName(profile.index) + " " + result + "\n" + Describe({profile}).text;
  report.json["result"] = result;
  report.json["policy"] = DescribePolicy(profile);
  return report;
}

Report Add(Router& router, const PolicyArguments& arguments) {
  if (!arguments.profile_v4 && !arguments.profile_v6) {
    throw CommandFailed("--profile-v4 or --profile-v6 is required",
                        "if only one is given, both families use it");
  }
  const uint32_t v4 = arguments.profile_v4.value_or(arguments.profile_v6.value_or(0));
  const uint32_t v6 = arguments.profile_v6.value_or(v4);
  router.Require(
      router.Wrapper().CreateWwanPolicy(arguments.tech.value_or(Tech::ANY),
                                        arguments.family.value_or(IPFamily::IPV4V6),
                                        static_cast<uint8_t>(v4), static_cast<uint8_t>(v6)),
      Failure::REFUSED);
  const std::vector<Profile> profiles = router.Profiles();
  if (profiles.empty()) throw CommandFailed(Failure::UNEXPECTED, "the new policy is not listed");
  return DescribeChange("added", profiles.back());
}

bool Matches(const WwanPolicy& left, const WwanPolicy& right) {
  return left.tech == right.tech && left.ip_family == right.ip_family &&
         left.profile_v4 == right.profile_v4 && left.profile_v6 == right.profile_v6;
}

Report Set(Router& router, const PolicyArguments& arguments) {
  if (!arguments.tech && !arguments.family && !arguments.profile_v4 && !arguments.profile_v6) {
    throw CommandFailed("no setting is given", "for example: qcmapctl policy set 1 --profile-v4 2");
  }
  const uint32_t index = *arguments.index;
  const std::string name = ProfileName(index);
  const WwanPolicy present = router.Policy(index);
  WwanPolicy wanted = present;
  wanted.tech = arguments.tech.value_or(present.tech);
  wanted.ip_family = arguments.family.value_or(present.ip_family);
  if (arguments.profile_v4) wanted.profile_v4 = static_cast<int32_t>(*arguments.profile_v4);
  if (arguments.profile_v6) wanted.profile_v6 = static_cast<int32_t>(*arguments.profile_v6);
  if ((wanted.ip_family == IPFamily::IPV4 && arguments.profile_v6) ||
      (wanted.ip_family == IPFamily::IPV6 && arguments.profile_v4)) {
    throw CommandFailed(Failure::POLICY_OTHER_FAMILY, name);
  }

  if (!Matches(wanted, present)) {
    // The library sends nothing if both numbers equal the server's. For a single family it never
    // sends the second number, so a number that no server has ensures that the change is sent.
    const bool ipv6_only = wanted.ip_family == IPFamily::IPV6;
    const int first = ipv6_only ? wanted.profile_v6 : wanted.profile_v4;
    const int second = wanted.ip_family == IPFamily::IPV4V6 ? wanted.profile_v6 : -1;
    if (first == present.profile_v4 && second == present.profile_v6) {
      throw CommandFailed(Failure::POLICY_SAME_NUMBERS, name);
    }
    router.Require(
        router.Wrapper().SetWwanPolicy(index, wanted.tech, wanted.ip_family, first, second),
        Failure::REFUSED, name);
  }
  return DescribeChange("set", {index, router.Policy(index)});
}

Report Delete(Router& router, const PolicyArguments& arguments) {
  const Profile profile{*arguments.index, router.Policy(*arguments.index)};
  // The index fits, because the list has at most 50 entries.
  if (!router.Wrapper().DeleteWwanPolicy(static_cast<uint8_t>(profile.index))) {
    router.RequireServer();
    const FamilyStates state = router.CallState(profile.index);
    const bool down =
        state.ipv4 == ConnectStatus::DISCONNECTED && state.ipv6 == ConnectStatus::DISCONNECTED;
    if (!down) throw CommandFailed(Failure::PROFILE_IN_USE, ProfileName(profile.index));
    const std::vector<VlanMapping> mappings = router.Mappings();
    const bool mapped = std::any_of(mappings.begin(), mappings.end(), [&profile](const auto& m) {
      return m.profile_index == static_cast<int32_t>(profile.index);
    });
    throw CommandFailed(mapped ? Failure::PROFILE_MAPPED : Failure::REFUSED,
                        ProfileName(profile.index));
  }
  Report report;
  report.text = ProfileName(profile.index) + " deleted; later profiles move up by one\n";
  report.json["result"] = "deleted";
  report.json["policy"] = DescribePolicy(profile);
  return report;
}

void AddPolicyOptions(CLI::App* verb, PolicyArguments& arguments) {
  AddWord(verb, "--tech", arguments.tech, TechWords(), "Radio technology");
  AddWord(verb, "--family", arguments.family, FamilyWords(), "IP family");
  AddNumber(verb, "--profile-v4", arguments.profile_v4, 1, 24,
            "The modem's profile number for IPv4, 1 to 24");
  AddNumber(verb, "--profile-v6", arguments.profile_v6, 1, 24,
            "The modem's profile number for IPv6, 1 to 24");
}

}  // namespace

Json DescribePolicy(const Profile& profile) {
  Json json;
  json["index"] = profile.index;
  json["handle"] = profile.policy.profile_handle;
  json["tech"] = WordOf(profile.policy.tech);
  json["family"] = WordOf(profile.policy.ip_family);
  json["profile_v4"] = profile.policy.profile_v4;
  json["profile_v6"] = profile.policy.profile_v6;
  return json;
}

void AddPolicy(CommandLine& line) {
  const auto arguments = std::make_shared<PolicyArguments>();
  const auto with = [arguments](Report (*run)(Router&, const PolicyArguments&)) {
    return [arguments, run](Context& context) { return run(context.router, *arguments); };
  };
  CLI::App* policy = line.AddObject("policy", "WWAN policies; each one defines a profile");
  CLI::App* list = line.AddVerb(policy, "list", "List policies", with(Show));
  AddIndex(list, arguments->index);
  CLI::App* show = line.AddVerb(policy, "show", "Show a policy", with(Show));
  AddIndex(show, arguments->index)->required();
  CLI::App* add = line.AddVerb(policy, "add", "Add a policy at the end of the list", with(Add));
  AddPolicyOptions(add, *arguments);
  CLI::App* set = line.AddVerb(policy, "set", "Change a policy", with(Set));
  AddIndex(set, arguments->index)->required();
  AddPolicyOptions(set, *arguments);
  CLI::App* remove = line.AddVerb(policy, "delete", "Delete a policy", with(Delete));
  AddIndex(remove, arguments->index)->required();
}

}  // namespace qcmapctl
