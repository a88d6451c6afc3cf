/// The console's commands.
#include "server/console.h"

#include <unistd.h>

#include <cstdio>
#include <sstream>
#include <vector>

#include "numbers/parse_number.h"

namespace sim {
namespace {

using Words = std::vector<std::string>;

constexpr size_t kMaxLineBytes = 4096;
constexpr uint64_t kMaxSleepMs = uint64_t{24} * 3600 * 1000;
const char* const kNoProfile = "there is no such profile";
const char* const kUsage = "usage: ";

bool IsSwitch(const std::string& word) {
  return word == "on" || word == "off";
}
bool IsFamily(const std::string& word) {
  return word == "4" || word == "6";
}
const char* OnOff(bool on) {
  return on ? "on" : "off";
}

}  // namespace

/// `run` gets the words after the name, at least `min` and at most `max` of them, and returns what
/// is wrong with them.
struct Console::Command {
  const char* name;
  const char* arguments;
  size_t min, max;
  std::string (*run)(Console& console, const Words& words);
};

const Console::Command Console::kCommands[] = {
    {"drop", "PROFILE [4|6]", 1, 2,
     [](Console& console, const Words& words) -> std::string {
       if (words.size() == 2 && !IsFamily(words[1])) return kUsage;
       Profile* const profile = console.FindProfile(words[0]);
       if (profile == nullptr) return kNoProfile;
       for (const FamilyIndex family : kFamilies)
         if (words.size() == 1 || words[1] == (family == kIpv4 ? "4" : "6"))
           console.model_.modem.Drop(*profile, family);
       console.model_.modem.AutoConnect(*profile);
       return {};
     }},
    {"fail", "REQUEST[:ERROR[:COUNT]]", 1, 1,
     [](Console& console, const Words& words) { return console.requests_.Fail(words[0]); }},
    {"network", "on|off", 1, 1,
     [](Console& console, const Words& words) -> std::string {
       if (!IsSwitch(words[0])) return kUsage;
       console.model_.modem.SetNetwork(words[0] == "on");
       return {};
     }},
    {"roaming", "on|off", 1, 1,
     [](Console& console, const Words& words) -> std::string {
       if (!IsSwitch(words[0])) return kUsage;
       console.model_.modem.SetRoaming(words[0] == "on");
       return {};
     }},
    {"traffic", "PROFILE 4|6 RECEIVED SENT", 4, 4,
     [](Console& console, const Words& words) -> std::string {
       uint64_t received, sent;
       if (!IsFamily(words[1]) || !ParseNumber(words[2], INT64_MAX, received) ||
           !ParseNumber(words[3], INT64_MAX, sent))
         return kUsage;
       Profile* const profile = console.FindProfile(words[0]);
       if (profile == nullptr) return kNoProfile;
       Family& family = profile->families[words[1] == "4" ? kIpv4 : kIpv6];
       const auto bytes = console.model_.modem.Count(family);
       console.model_.modem.SetCounters(family, {bytes[0] + received, bytes[1] + sent});
       return {};
     }},
    {"indicate", "ID STATUS [PROFILE-HANDLE [MOBILE-AP-HANDLE]]", 2, 4,
     [](Console& console, const Words& words) -> std::string {
       uint64_t number[4] = {};
       for (size_t i = 0; i < words.size(); ++i)
         if (!ParseNumber(words[i], UINT32_MAX, number[i])) return kUsage;
       Indication indication{static_cast<uint32_t>(number[0]), static_cast<int32_t>(number[1])};
       if (words.size() > 2) indication.profile_handle = static_cast<uint32_t>(number[2]);
       if (words.size() > 3) indication.mobile_ap_handle = static_cast<uint32_t>(number[3]);
       console.hub_.Indicate(0, indication);
       return {};
     }},
    {"raw", "ID [HEXADECIMAL-BYTES]", 1, 2,
     [](Console& console, const Words& words) -> std::string {
       uint64_t id, byte;
       std::string elements;
       const std::string text = words.size() > 1 ? words[1] : "";
       if (!ParseNumber(words[0], UINT32_MAX, id) || text.size() % 2 != 0) return kUsage;
       for (size_t i = 0; i < text.size(); i += 2) {
         if (!ParseNumber("0x" + text.substr(i, 2), UINT8_MAX, byte)) return kUsage;
         elements.push_back(static_cast<char>(byte));
       }
       console.hub_.IndicateRaw(static_cast<uint32_t>(id), elements);
       return {};
     }},
    {"sleep", "MILLISECONDS", 1, 1,
     [](Console& console, const Words& words) -> std::string {
       uint64_t ms;
       if (!ParseNumber(words[0], kMaxSleepMs, ms)) return kUsage;
       console.Sleep(Milliseconds(ms));
       return {};
     }},
    {"show", "", 0, 0,
     [](Console& console, const Words&) -> std::string {
       console.Show();
       return {};
     }},
    {"quit", "", 0, 0,
     [](Console& console, const Words&) -> std::string {
       console.Stop();
       console.io_.stop();
       return {};
     }},
    {"help", "", 0, 0,
     [](Console& console, const Words&) -> std::string {
       console.Help();
       return {};
     }},
};

// The descriptor is a copy, and stays in blocking mode, which it shares with other programs: it is
// read only when there is something to read.
Console::Console(asio::io_context& io, Model& model, Requests& requests, Hub& hub)
    : io_(io), model_(model), requests_(requests), hub_(hub), input_(io), pause_(io) {
  const int fd = ::dup(STDIN_FILENO);
  if (fd >= 0) input_.assign(fd);
}

void Console::Stop() {
  paused_ = true;
  input_.close();
}

void Console::WaitForInput() {
  if (!input_.is_open()) return;
  input_.async_wait(asio::posix::stream_descriptor::wait_read,
                    [this](const asio::error_code& error) {
                      // A plain file cannot be waited for; it can always be read.
                      if (!error || error == asio::error::operation_not_supported) ReadInput();
                    });
}

void Console::ReadInput() {
  char bytes[1024];
  const ssize_t size = ::read(input_.native_handle(), bytes, sizeof bytes);
  if (size > 0) {
    unread_.append(bytes, static_cast<size_t>(size));
  } else {
    input_.close();
    if (!unread_.empty()) unread_ += '\n';
  }
  RunLines();
}

void Console::RunLines() {
  size_t end;
  while (!paused_ && (end = unread_.find('\n')) != std::string::npos) {
    const std::string line = unread_.substr(0, end);
    unread_.erase(0, end + 1);
    ++line_number_;
    const std::string wrong = Run(line);
    if (!wrong.empty()) std::fprintf(stderr, "console: line %u: %s\n", line_number_, wrong.c_str());
    std::fflush(stdout);
  }
  if (paused_) return;
  if (unread_.size() > kMaxLineBytes) {
    std::fprintf(stderr, "console: line %u is too long, no more is read\n", line_number_ + 1);
    input_.close();
  }
  WaitForInput();
}

std::string Console::Run(const std::string& line) {
  std::istringstream text(line);
  std::string name;
  if (!(text >> name) || name[0] == '#') return {};
  Words words;
  for (std::string word; text >> word;) words.push_back(word);
  for (const Command& command : kCommands) {
    if (name != command.name) continue;
    const bool fits = command.min <= words.size() && words.size() <= command.max;
    const std::string wrong = fits ? command.run(*this, words) : kUsage;
    return wrong == kUsage ? wrong + command.name + " " + command.arguments : wrong;
  }
  return "unknown command '" + name + "'; try help";
}

void Console::Sleep(Milliseconds time) {
  paused_ = true;
  pause_.expires_after(time);
  pause_.async_wait([this](const asio::error_code& stopped) {
    if (stopped) return;
    paused_ = false;
    RunLines();
  });
}

Profile* Console::FindProfile(const std::string& index) {
  auto& profiles = model_.modem.profiles();
  uint64_t number;
  const bool exists = ParseNumber(index, UINT32_MAX, number) && number < profiles.size();
  return exists ? &profiles[number] : nullptr;
}

void Console::Help() {
  for (const Command& command : kCommands) std::printf("%s %s\n", command.name, command.arguments);
}

void Console::Show() {
  Modem& modem = model_.modem;
  const Lan& lan = model_.lan;
  std::printf("mobile ap %s, network %s, roaming %s\n", OnOff(modem.mobile_ap_enabled()),
              OnOff(modem.network()), OnOff(modem.roaming()));
  size_t index = 0;
  for (const Profile& profile : modem.profiles()) {
    std::printf("profile %zu: handle %u, autoconnect %s, roaming %s\n", index++, profile.handle,
                OnOff(profile.autoconnect), OnOff(profile.roaming));
    for (const FamilyIndex family : kFamilies)
      std::printf("  IPv%c: %s, status %d\n", family == kIpv4 ? '4' : '6',
                  OnOff(profile.families[family].enabled), profile.Status(family));
  }
  std::printf("lan: gateway 0x%08x, netmask 0x%08x, dhcp %s, %s\n", lan.config.gw_ip,
              lan.config.netmask, OnOff(lan.config.enable_dhcp), lan.active ? "active" : "pending");
  for (const auto& vlan : lan.vlans) std::printf("vlan %d on %s\n", vlan.vlan_id, vlan.iface_name);
  for (const auto& mapping : lan.mappings)
    std::printf("vlan %d mapped to handle %u\n", mapping.vlan_id, mapping.profile_handle);
  std::printf("passthrough: mode %d, host '%s'\n", lan.passthrough.mode,
              lan.passthrough.config.device_name);
}

}  // namespace sim
