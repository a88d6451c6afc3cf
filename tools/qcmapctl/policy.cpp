/// policy: the server's WWAN policies.
#include <algorithm>

#include "arguments.h"
#include "objects.h"
#include "readings.h"

namespace qcmapctl {
namespace {

struct PolicyArguments {
  std::optional<uint32_t> index;
  std::optional<Tech> tech;
  std::optional<IPFamily> family;
  std::optional<uint32_t> profile_v4;
  std::optional<uint32_t> profile_v6;
};

Report ShowPolicies(Router& router, const PolicyArguments& arguments) {
  return {
      OfProfiles(router, arguments.index, [](const Profile& profile) { return DataOf(profile); }),
      AsTable("no policies")};
}

Report DescribeChange(const char* result, const Profile& profile) {
  const bool deleted = std::string(result) == "deleted";
  return {{{"result", result}, {"policy", DataOf(profile)}}, [deleted](const Json& data) {
            const Json& policy = data.at("policy");
            const std::string done = ProfileName(policy.at("index").get<uint32_t>()) + " " +
                                     data.at("result").get<std::string>();
            return deleted ? done + "; later profiles move up by one\n"
                           : done + "\n" + AsTable("")(policy);
          }};
}

Report CreatePolicy(Router& router, const PolicyArguments& arguments) {
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

Report SetPolicy(Router& router, const PolicyArguments& arguments) {
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

Report DeletePolicy(Router& router, const PolicyArguments& arguments) {
  const Profile profile{*arguments.index, router.Policy(*arguments.index)};
  // The index fits, because the list has at most 50 entries.
  const bool granted = router.Wrapper().DeleteWwanPolicy(static_cast<uint8_t>(profile.index));
  router.Require(
      granted,
      [&] {
        const FamilyStates state = router.CallState(profile.index);
        const bool down =
            state.ipv4 == ConnectStatus::DISCONNECTED && state.ipv6 == ConnectStatus::DISCONNECTED;
        if (!down) return Failure::PROFILE_IN_USE;
        const std::vector<VlanMapping> mappings = router.Mappings();
        const bool mapped = std::any_of(mappings.begin(), mappings.end(), [&](const auto& mapping) {
          return mapping.profile_index == static_cast<int32_t>(profile.index);
        });
        return mapped ? Failure::PROFILE_MAPPED : Failure::REFUSED;
      },
      ProfileName(profile.index));
  return DescribeChange("deleted", profile);
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

void AddPolicy(CommandLine& line) {
  const auto arguments = std::make_shared<PolicyArguments>();
  const auto with = [arguments](Report (*run)(Router&, const PolicyArguments&)) {
    return [arguments, run](Context& context) { return run(context.router, *arguments); };
  };
  CLI::App* policy = line.AddObject("policy", "WWAN policies; each one defines a profile");
  CLI::App* list = line.AddVerb(policy, "list", "List policies", with(ShowPolicies));
  AddIndex(list, arguments->index);
  CLI::App* show = line.AddVerb(policy, "show", "Show a policy", with(ShowPolicies));
  AddIndex(show, arguments->index)->required();
  CLI::App* add =
      line.AddVerb(policy, "add", "Add a policy at the end of the list", with(CreatePolicy));
  AddPolicyOptions(add, *arguments);
  CLI::App* set = line.AddVerb(policy, "set", "Change a policy", with(SetPolicy));
  AddIndex(set, arguments->index)->required();
  AddPolicyOptions(set, *arguments);
  CLI::App* remove = line.AddVerb(policy, "delete", "Delete a policy", with(DeletePolicy));
  AddIndex(remove, arguments->index)->required();
}

}  // namespace qcmapctl
