/// What each command does.
#include "server/commands.h"

#include "numbers/parse_number.h"
#include "server/show.h"

namespace sim {
namespace {

constexpr uint64_t kMaxSleepMs = uint64_t{24} * 3600 * 1000;

FamilyIndex ReadFamily(Words& words) {
  return words.OneOf("family", {"4", "6"}) == 0 ? kIpv4 : kIpv6;
}

}  // namespace

/// `arguments` follow the name without a blank, or are empty. `run` gets the words after the name.
/// It is null for a fault.
struct Commands::Command {
  const char* name;
  const char* arguments;
  CommandResult (Commands::*run)(Words words);
};

const Commands::Command Commands::kCommands[] = {
    {"network", " on|off", &Commands::SetNetwork},
    {"roaming", " on|off", &Commands::SetRoaming},
    {"mobile-ap", " on|off", &Commands::SetMobileAp},
    {"drop", " PROFILE [4|6]", &Commands::Drop},
    {"fail-call", " PROFILE 4|6 [COUNT]", &Commands::FailCall},
    {"traffic", " PROFILE 4|6 RECEIVED SENT", &Commands::AddTraffic},
    {"fail", " REQUEST [ERROR [COUNT]]", nullptr},
    {"late", " REQUEST MS [COUNT]", nullptr},
    {"late-reply", " REQUEST MS [COUNT]", nullptr},
    {"hang", " REQUEST [COUNT]", nullptr},
    {"garble", " REQUEST size|id|transaction|record [COUNT]", nullptr},
    {"truncate", " REQUEST [COUNT]", nullptr},
    {"repeat", " REQUEST|INDICATION [COUNT]", nullptr},
    {"die", " REQUEST|connection before|after|replied [COUNT]", nullptr},
    {"stop", " REQUEST|connection before|after|replied [COUNT]", nullptr},
    {"lose", " INDICATION [COUNT]", nullptr},
    {"delay", " INDICATION MS [COUNT]", nullptr},
    {"malform", " INDICATION [COUNT]", nullptr},
    {"misdirect", " INDICATION [COUNT]", nullptr},
    {"heal", " [REQUEST|INDICATION|connection]", &Commands::Heal},
    {"indicate", " ID STATUS [PROFILE-HANDLE [MOBILE-AP-HANDLE]]", &Commands::Indicate},
    {"raw", " ID [HEXADECIMAL-BYTES]", &Commands::IndicateRaw},
    {"advance", " DURATION", &Commands::Advance},
    {"sleep", " MILLISECONDS", &Commands::Sleep},
    {"echo", " WORDS", &Commands::Echo},
    {"show", " [--json]", &Commands::Show},
    {"quit", "", &Commands::Quit},
    {"help", "", &Commands::Help},
};

CommandResult Commands::Run(const std::string& line) {
  const Words words(line);
  if (!words.HasMore() || line[line.find_first_not_of(" \t")] == '#') return {};
  CommandResult result = Execute(words);
  record_.Command(line, result.error);
  return result;
}

CommandResult Commands::Execute(Words words) {
  std::vector<const char*> names;
  for (const Command& command : kCommands) names.push_back(command.name);
  std::string hint = "try help";
  try {
    const Command& command = kCommands[words.OneOf("command", names)];
    hint = std::string("usage: ") + command.name + command.arguments;
    return command.run == nullptr ? AddFault(command.name, words) : (this->*command.run)(words);
  } catch (const WrongCommand& wrong) {
    return {wrong.what() + (" (" + hint + ")")};
  }
}

// A colon separates as well as a blank, as in the option --fail.
CommandResult Commands::AddFault(const std::string& kind, Words words) {
  words.SplitAt(':');
  faults_.Add(kind, words);
  return {};
}

CommandResult Commands::Heal(Words words) {
  const bool everything = !words.HasMore();
  faults_.Heal(words);
  if (!everything) return {};
  for (Profile& profile : model_.modem.profiles())
    for (Family& family : profile.families) family.failing_calls = 0;
  return {};
}

CommandResult Commands::Drop(Words words) {
  Profile& profile = ReadProfile(words);
  const bool both = !words.HasMore();
  const FamilyIndex family = both ? kIpv4 : ReadFamily(words);
  words.End();
  if (both) {
    model_.modem.Drop(profile, {kIpv4, kIpv6});
  } else {
    model_.modem.Drop(profile, {family});
  }
  return {};
}

CommandResult Commands::FailCall(Words words) {
  Profile& profile = ReadProfile(words);
  const FamilyIndex family = ReadFamily(words);
  const uint64_t times = words.Times();
  words.End();
  profile.families[family].failing_calls = times;
  return {};
}

CommandResult Commands::SetNetwork(Words words) {
  const bool on = words.OnOrOff();
  words.End();
  model_.modem.SetNetwork(on);
  return {};
}

CommandResult Commands::SetRoaming(Words words) {
  const bool on = words.OnOrOff();
  words.End();
  model_.modem.SetRoaming(on);
  return {};
}

CommandResult Commands::SetMobileAp(Words words) {
  const bool on = words.OnOrOff();
  words.End();
  if (on) {
    model_.modem.EnableMobileAp();
  } else {
    model_.modem.LoseMobileAp();
  }
  return {};
}

CommandResult Commands::AddTraffic(Words words) {
  Profile& profile = ReadProfile(words);
  Family& family = profile.families[ReadFamily(words)];
  const uint64_t received = words.Number(0, INT64_MAX), sent = words.Number(0, INT64_MAX);
  words.End();
  const auto bytes = model_.modem.Count(family);
  model_.modem.SetCounters(family, {bytes[0] + received, bytes[1] + sent});
  return {};
}

CommandResult Commands::Indicate(Words words) {
  const auto number = [&] { return static_cast<uint32_t>(words.Number(0, UINT32_MAX)); };
  Indication indication{number(), 0};
  indication.status = static_cast<int32_t>(number());
  if (words.HasMore()) indication.profile_handle = number();
  if (words.HasMore()) indication.mobile_ap_handle = number();
  words.End();
  hub_.Indicate(0, indication);
  return {};
}

CommandResult Commands::IndicateRaw(Words words) {
  const auto id = static_cast<uint32_t>(words.Number(0, UINT32_MAX));
  const std::string text = words.HasMore() ? words.Next() : "";
  words.End();
  std::string elements;
  for (size_t i = 0; i < text.size(); i += 2) {
    uint64_t byte;
    const std::string digits = text.substr(i, 2);
    if (digits.size() != 2 || !ParseNumber("0x" + digits, UINT8_MAX, byte))
      throw WrongCommand("'" + digits + "' is not a byte of two hexadecimal digits");
    elements.push_back(static_cast<char>(byte));
  }
  hub_.IndicateRaw(id, elements);
  return {};
}

CommandResult Commands::Advance(Words words) {
  const auto duration = words.Duration();
  words.End();
  CommandResult result;
  result.awaited = model_.modem.timeline().Advance(duration);
  return result;
}

CommandResult Commands::Sleep(Words words) {
  CommandResult result;
  result.pause = Milliseconds(words.Number(0, kMaxSleepMs));
  words.End();
  return result;
}

CommandResult Commands::Echo(Words words) {
  CommandResult result;
  result.output = words.Next();
  while (words.HasMore()) result.output += " " + words.Next();
  result.output += '\n';
  return result;
}

CommandResult Commands::Show(Words words) {
  const bool json = words.HasMore() && words.OneOf("option", {"--json"}) == 0;
  words.End();
  return {{}, json ? ModelAsJson(model_) : ModelAsText(model_)};
}

CommandResult Commands::Quit(Words words) {
  words.End();
  CommandResult result;
  result.quits = true;
  return result;
}

CommandResult Commands::Help(Words words) {
  words.End();
  CommandResult result;
  for (const Command& command : kCommands)
    result.output += std::string(command.name) + command.arguments + "\n";
  result.output += Faults::Targets();
  return result;
}

Profile& Commands::ReadProfile(Words& words) {
  auto& profiles = model_.modem.profiles();
  if (profiles.empty()) throw WrongCommand("there is no profile");
  return profiles[static_cast<size_t>(words.Number(0, profiles.size() - 1))];
}

}  // namespace sim
