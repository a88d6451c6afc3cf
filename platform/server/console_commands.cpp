/// What each console command does.
#include "server/console_commands.h"

#include <cstdio>
#include <sstream>

#include "numbers/parse_number.h"
#include "server/printable.h"

namespace sim {
namespace {

constexpr uint64_t kMaxSleepMs = uint64_t{24} * 3600 * 1000;
const char* const kNoProfile = "there is no such profile";
/// An error for which Run() shows how the command is used.
const char* const kUsage = "usage: ";

bool IsSwitch(const std::string& word) {
  return word == "on" || word == "off";
}
bool IsFamily(const std::string& word) {
  return word == "4" || word == "6";
}
FamilyIndex ToFamily(const std::string& word) {
  return word == "4" ? kIpv4 : kIpv6;
}
const char* OnOff(bool on) {
  return on ? "on" : "off";
}
std::string Hex(uint32_t address) {
  char text[sizeof "0x12345678"];
  std::snprintf(text, sizeof text, "0x%08x", address);
  return text;
}

}  // namespace

/// `run` gets the words after the name: at least `min_words` and at most `max_words` of them.
struct ConsoleCommands::Command {
  const char* name;
  const char* arguments;
  size_t min_words, max_words;
  CommandResult (ConsoleCommands::*run)(const Words& words);
};

const ConsoleCommands::Command ConsoleCommands::kCommands[] = {
    {"drop", "PROFILE [4|6]", 1, 2, &ConsoleCommands::Drop},
    {"fail", "REQUEST[:ERROR[:COUNT]]", 1, 1, &ConsoleCommands::Fail},
    {"network", "on|off", 1, 1, &ConsoleCommands::SetNetwork},
    {"roaming", "on|off", 1, 1, &ConsoleCommands::SetRoaming},
    {"traffic", "PROFILE 4|6 RECEIVED SENT", 4, 4, &ConsoleCommands::AddTraffic},
    {"indicate", "ID STATUS [PROFILE-HANDLE [MOBILE-AP-HANDLE]]", 2, 4, &ConsoleCommands::Indicate},
    {"raw", "ID [HEXADECIMAL-BYTES]", 1, 2, &ConsoleCommands::IndicateRaw},
    {"sleep", "MILLISECONDS", 1, 1, &ConsoleCommands::Sleep},
    {"echo", "WORDS", 1, SIZE_MAX, &ConsoleCommands::Echo},
    {"show", "", 0, 0, &ConsoleCommands::Show},
    {"quit", "", 0, 0, &ConsoleCommands::Quit},
    {"help", "", 0, 0, &ConsoleCommands::Help},
};

ConsoleCommands::ConsoleCommands(Model& model, Requests& requests, Hub& hub)
    : model_(model), requests_(requests), hub_(hub) {}

CommandResult ConsoleCommands::Run(const std::string& line) {
  std::istringstream text(line);
  std::string name;
  if (!(text >> name) || name[0] == '#') return {};
  Words words;
  for (std::string word; text >> word;) words.push_back(word);
  for (const Command& command : kCommands) {
    if (name != command.name) continue;
    const bool fits = command.min_words <= words.size() && words.size() <= command.max_words;
    CommandResult result = fits ? (this->*command.run)(words) : CommandResult{kUsage};
    if (result.error == kUsage) result.error += name + " " + command.arguments;
    return result;
  }
  return {"unknown command '" + name + "'; try help"};
}

CommandResult ConsoleCommands::Drop(const Words& words) {
  if (words.size() == 2 && !IsFamily(words[1])) return {kUsage};
  Profile* const profile = FindProfile(words[0]);
  if (profile == nullptr) return {kNoProfile};
  if (words.size() == 2) {
    model_.modem.Drop(*profile, {ToFamily(words[1])});
  } else {
    model_.modem.Drop(*profile, {kIpv4, kIpv6});
  }
  return {};
}

CommandResult ConsoleCommands::Fail(const Words& words) {
  return {requests_.Fail(words[0])};
}

CommandResult ConsoleCommands::SetNetwork(const Words& words) {
  if (!IsSwitch(words[0])) return {kUsage};
  model_.modem.SetNetwork(words[0] == "on");
  return {};
}

CommandResult ConsoleCommands::SetRoaming(const Words& words) {
  if (!IsSwitch(words[0])) return {kUsage};
  model_.modem.SetRoaming(words[0] == "on");
  return {};
}

CommandResult ConsoleCommands::AddTraffic(const Words& words) {
  uint64_t received, sent;
  if (!IsFamily(words[1]) || !ParseNumber(words[2], INT64_MAX, received) ||
      !ParseNumber(words[3], INT64_MAX, sent))
    return {kUsage};
  Profile* const profile = FindProfile(words[0]);
  if (profile == nullptr) return {kNoProfile};
  Family& family = profile->families[ToFamily(words[1])];
  const auto bytes = model_.modem.Count(family);
  model_.modem.SetCounters(family, {bytes[0] + received, bytes[1] + sent});
  return {};
}

CommandResult ConsoleCommands::Indicate(const Words& words) {
  uint64_t numbers[4] = {};
  for (size_t i = 0; i < words.size(); ++i)
    if (!ParseNumber(words[i], UINT32_MAX, numbers[i])) return {kUsage};
  Indication indication{static_cast<uint32_t>(numbers[0]), static_cast<int32_t>(numbers[1])};
  if (words.size() > 2) indication.profile_handle = static_cast<uint32_t>(numbers[2]);
  if (words.size() > 3) indication.mobile_ap_handle = static_cast<uint32_t>(numbers[3]);
  hub_.Indicate(0, indication);
  return {};
}

CommandResult ConsoleCommands::IndicateRaw(const Words& words) {
  uint64_t id, byte;
  std::string elements;
  const std::string text = words.size() > 1 ? words[1] : "";
  if (!ParseNumber(words[0], UINT32_MAX, id) || text.size() % 2 != 0) return {kUsage};
  for (size_t i = 0; i < text.size(); i += 2) {
    if (!ParseNumber("0x" + text.substr(i, 2), UINT8_MAX, byte)) return {kUsage};
    elements.push_back(static_cast<char>(byte));
  }
  hub_.IndicateRaw(static_cast<uint32_t>(id), elements);
  return {};
}

CommandResult ConsoleCommands::Sleep(const Words& words) {
  uint64_t ms;
  if (!ParseNumber(words[0], kMaxSleepMs, ms)) return {kUsage};
  CommandResult result;
  result.pause = Milliseconds(ms);
  return result;
}

CommandResult ConsoleCommands::Echo(const Words& words) {
  CommandResult result;
  for (const std::string& word : words) result.output += (&word == &words[0] ? "" : " ") + word;
  result.output += '\n';
  return result;
}

CommandResult ConsoleCommands::Show(const Words& /*words*/) {
  std::ostringstream out;
  Modem& modem = model_.modem;
  out << "mobile ap " << OnOff(modem.mobile_ap_enabled()) << ", network " << OnOff(modem.network())
      << ", roaming " << OnOff(modem.roaming()) << '\n';
  size_t index = 0;
  for (const Profile& profile : modem.profiles()) {
    out << "profile " << index++ << ": handle " << profile.handle << ", autoconnect "
        << OnOff(profile.autoconnect) << ", roaming " << OnOff(profile.roaming) << '\n';
    for (const FamilyIndex family : kFamilies)
      out << "  IPv" << (family == kIpv4 ? '4' : '6') << ": "
          << OnOff(profile.families[family].enabled) << ", status " << profile.Status(family)
          << '\n';
  }
  const Lan& lan = model_.lan;
  out << "lan: gateway " << Hex(lan.config.gw_ip) << ", netmask " << Hex(lan.config.netmask)
      << ", dhcp " << OnOff(lan.config.enable_dhcp) << ", " << (lan.active ? "active" : "pending")
      << '\n';
  for (const auto& vlan : lan.vlans)
    out << "vlan " << vlan.vlan_id << " on " << Printable(vlan.iface_name) << '\n';
  for (const auto& mapping : lan.mappings)
    out << "vlan " << mapping.vlan_id << " mapped to handle " << mapping.profile_handle << '\n';
  out << "passthrough: mode " << lan.passthrough.mode << ", host '"
      << Printable(lan.passthrough.config.device_name) << "'\n";
  return {{}, out.str()};
}

CommandResult ConsoleCommands::Quit(const Words& /*words*/) {
  CommandResult result;
  result.quits = true;
  return result;
}

CommandResult ConsoleCommands::Help(const Words& /*words*/) {
  CommandResult result;
  for (const Command& command : kCommands)
    result.output += std::string(command.name) + " " + command.arguments + "\n";
  return result;
}

Profile* ConsoleCommands::FindProfile(const std::string& index) {
  auto& profiles = model_.modem.profiles();
  uint64_t number;
  const bool exists = ParseNumber(index, UINT32_MAX, number) && number < profiles.size();
  return exists ? &profiles[static_cast<size_t>(number)] : nullptr;
}

}  // namespace sim
