/// status: everything on one screen.
#include "arguments.h"
#include "objects.h"
#include "readings.h"

namespace qcmapctl {
namespace {

/// What the server reports about one part. If it refuses, the part says why instead.
Json ReadPart(bool& is_whole, const std::function<Json()>& read) {
  try {
    return read();
  } catch (const CommandFailed& failure) {
    if (failure.failure() != Failure::REFUSED) throw;
    is_whole = false;
    return {{"error", failure.what()}};
  }
}

Json ReadProfile(Router& router, const Profile& profile, bool& is_whole) {
  Json json = DataOf(profile);
  FamilyStates state;
  const Json failed = ReadPart(is_whole, [&]() -> Json {
    state = router.CallState(profile.index);
    return nullptr;
  });
  for (const IPFamily family : {IPFamily::IPV4, IPFamily::IPV6}) {
    json[WordOf(family)] = !failed.is_null() ? failed : ReadPart(is_whole, [&]() -> Json {
      const bool up = state.Of(family) == ConnectStatus::CONNECTED;
      return {{"state", WordOf(state.Of(family))},
              {"addresses", up ? DataOf(router.Addresses(profile.index, family)) : Json()}};
    });
  }
  json["half_up"] = failed.is_null() ? Json(state.IsHalfUp(profile.policy)) : Json();
  return json;
}

Json ReadStatus(Router& router, bool& is_whole) {
  // Fails if there is no server, instead of showing parts that are not available.
  router.Wrapper();
  Json status = {{"server", "running"}, {"mobile_ap", "connected"}};
  status["profiles"] = ReadPart(is_whole, [&] {
    return OfProfiles(router, std::nullopt, [&](const Profile& profile) {
      return ReadProfile(router, profile, is_whole);
    });
  });
  status["lan"] = ReadPart(is_whole, [&] { return DataOf(router.Lan()); });
  status["vlans"] = ReadPart(is_whole, [&] { return ReadVlans(router); });
  status["passthrough"] = ReadPart(is_whole, [&] { return ReadPassthrough(router); });
  return status;
}

std::string DescribePart(const Json& part, const Describe& describe) {
  return part.contains("error") ? AsSentence("not available: {error}")(part) : describe(part);
}

std::string DescribeProfiles(const Json& profiles) {
  if (profiles.empty()) return "no profiles\n";
  std::string text;
  for (const Json& profile : profiles) {
    text += AsSentence(
        "Profile {index}  handle {handle}, {tech}, {family}, profile numbers {profile_v4} and "
        "{profile_v6}[  {half_up}]")(profile);
    for (const char* family : {"ipv4", "ipv6"}) {
      text += "  " + std::string(family) + "  " +
              DescribePart(profile.at(family), AsSentence("{state}[  {addresses}]"));
    }
  }
  return text;
}

std::string DescribeStatus(const Json& status) {
  return AsSentence("Server     {server}\nMobile AP  {mobile_ap}\n")(status) +
         DescribePart(status.at("profiles"), DescribeProfiles) + "\nLAN\n" +
         Indent(DescribePart(status.at("lan"), AsBlock())) + "VLANs\n" +
         Indent(DescribePart(status.at("vlans"), AsTable("no VLANs"))) + "Passthrough\n" +
         Indent(DescribePart(status.at("passthrough"), AsBlock()));
}

Report ShowStatus(Context& context) {
  bool is_whole = true;
  Json status = ReadStatus(context.router, is_whole);
  return {std::move(status), DescribeStatus, is_whole ? kExitDone : kExitPartlyDone};
}

}  // namespace

void AddStatus(CommandLine& line) {
  CLI::App* status = line.AddObject("status", "Everything on one screen");
  line.AddVerb(status, "show", "Show server, profiles, calls, LAN, VLANs and passthrough",
               ShowStatus);
  line.RunWithoutObject(ShowStatus);
}

}  // namespace qcmapctl
