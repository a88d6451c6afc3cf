/// The tool's objects, each with all its verbs in one file.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "command_line.h"
#include "output.h"
#include "session.h"

namespace qcmapctl {

void AddStatus(CommandLine& line);
void AddPolicy(CommandLine& line);
void AddSwitch(CommandLine& line);
void AddCall(CommandLine& line);
void AddStats(CommandLine& line);
void AddAddress(CommandLine& line);
void AddLan(CommandLine& line);
void AddVlan(CommandLine& line);
void AddMap(CommandLine& line);
void AddPassthrough(CommandLine& line);
void AddWatch(CommandLine& line);
void AddWait(CommandLine& line);

/// The whole picture, which a bare qcmapctl shows.
void ShowStatus(Context& context);

/// Prints a command's result, unless -q asks for none.
void Finish(const Context& context, const Report& report);

/// A profile named on the command line, or all.
struct Profile {
  uint32_t index;
  WwanPolicy policy;
};
std::vector<Profile> ChosenProfiles(Session& session, const std::optional<uint32_t>& index);

/// `list` as it is, or its only element when one profile was named on the command line.
Json OneOrAll(Json list, const std::optional<uint32_t>& index);

// What the objects show of each other.

using VlanConfig = mox::wwan::MobileapManager::VlanConfig;
using VlanMapping = mox::wwan::MobileapManager::VlanMapping;
std::vector<VlanConfig> ReadVlans(Session& session);
std::vector<VlanMapping> ReadMappings(Session& session);

Report DescribeLan(Session& session);
Report DescribeVlans(Session& session);
Report DescribePassthrough(Session& session);
Json DescribePolicy(const Profile& profile);

/// Both families' state of a profile's call.
struct CallState {
  ConnectStatus ipv4 = ConnectStatus::UNKNOWN;
  ConnectStatus ipv6 = ConnectStatus::UNKNOWN;

  ConnectStatus Of(IPFamily family) const { return family == IPFamily::IPV6 ? ipv6 : ipv4; }
};
CallState ReadCallState(Session& session, uint32_t index);

/// Whether one family is up and the other, which the policy asks for too, is not.
bool IsHalfUp(const Profile& profile, const CallState& state);

/// The addresses of one family in the server's order; empty while the call has none.
std::vector<std::string> ReadAddresses(Session& session, uint32_t index, IPFamily family);

}  // namespace qcmapctl
