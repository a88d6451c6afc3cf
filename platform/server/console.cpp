/// The console's commands.
#include "server/console.h"

#include <unistd.h>

#include <cstdio>
#include <sstream>

namespace sim {
namespace {

constexpr size_t kMaxLineBytes = 4096;
constexpr uint64_t kMaxSleepMs = 24 * 3600 * 1000;
constexpr char kNoProfile[] = "there is no such profile";
constexpr char kUsage[] = "usage";

bool ParseFamily(const std::string& word, FamilyIndex& family) {
  family = word == "6" ? kIpv6 : kIpv4;
  return word == "4" || word == "6";
}

bool ParseSwitch(const std::string& word, bool& on) {
  on = word == "on";
  return on || word == "off";
}

const char* OnOff(bool on) {
  return on ? "on" : "off";
}

}  // namespace

struct Console::Command {
  const char* name;
  const char* arguments;
  size_t min_words, max_words;
  std::string (Console::*run)(const Words&);
};

const Console::Command Console::kCommands[] = {
    {"drop", "PROFILE [4|6]", 2, 3, &Console::Drop},
    {"fail", "REQUEST[:ERROR[:COUNT]]", 2, 2, &Console::Fail},
    {"network", "on|off", 2, 2, &Console::Network},
    {"roaming", "on|off", 2, 2, &Console::Roaming},
    {"traffic", "PROFILE 4|6 RECEIVED SENT", 5, 5, &Console::Traffic},
    {"indicate", "ID STATUS [PROFILE-HANDLE [MOBILE-AP-HANDLE]]", 3, 5, &Console::Indicate},
    {"raw", "ID [HEXADECIMAL-BYTES]", 2, 3, &Console::IndicateRaw},
    {"sleep", "MILLISECONDS", 2, 2, &Console::Sleep},
    {"show", "", 1, 1, &Console::Show},
    {"quit", "", 1, 1, &Console::Quit},
    {"help", "", 1, 1, &Console::Help},
};

// The descriptor is a copy, and stays in blocking mode, which it shares with other programs: it is
// read only when there is something to read.
Console::Console(asio::io_context& io, Model& model, Requests& requests, Hub& hub)
    : io_(io), model_(model), requests_(requests), hub_(hub), input_(io), pause_(io) {
  const int fd = ::dup(STDIN_FILENO);
  if (fd >= 0) input_.assign(fd);
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
  if (size <= 0) {
    input_.close();
    if (!unread_.empty()) unread_ += '\n';
  } else {
    unread_.append(bytes, static_cast<size_t>(size));
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
  Words words;
  for (std::string word; text >> word;) words.push_back(word);
  if (words.empty() || words[0][0] == '#') return {};
  for (const Command& command : kCommands) {
    if (words[0] != command.name) continue;
    const bool fits = command.min_words <= words.size() && words.size() <= command.max_words;
    const std::string wrong = fits ? (this->*command.run)(words) : kUsage;
    if (wrong != kUsage) return wrong;
    return std::string("usage: ") + command.name + " " + command.arguments;
  }
  return "unknown command '" + words[0] + "'; try help";
}

Profile* Console::FindProfile(const std::string& index) {
  auto& profiles = model_.modem.profiles();
  uint64_t number;
  if (!ParseNumber(index, QCMAP_MSGR_MAX_WWAN_POLICY_V01, number) || number >= profiles.size())
    return nullptr;
  return &profiles[number];
}

std::string Console::Drop(const Words& words) {
  FamilyIndex only = kIpv4;
  if (words.size() == 3 && !ParseFamily(words[2], only)) return kUsage;
  Profile* const profile = FindProfile(words[1]);
  if (profile == nullptr) return kNoProfile;
  for (const FamilyIndex family : kFamilies)
    if (words.size() == 2 || family == only) model_.modem.Drop(*profile, family);
  model_.modem.AutoConnect(*profile);
  return {};
}

std::string Console::Fail(const Words& words) {
  return requests_.Fail(words[1]);
}

std::string Console::Network(const Words& words) {
  bool on;
  if (!ParseSwitch(words[1], on)) return kUsage;
  model_.modem.SetNetwork(on);
  return {};
}

std::string Console::Roaming(const Words& words) {
  bool on;
  if (!ParseSwitch(words[1], on)) return kUsage;
  model_.modem.SetRoaming(on);
  return {};
}

std::string Console::Traffic(const Words& words) {
  FamilyIndex index;
  uint64_t received, sent;
  if (!ParseFamily(words[2], index) || !ParseNumber(words[3], INT64_MAX, received) ||
      !ParseNumber(words[4], INT64_MAX, sent))
    return kUsage;
  Profile* const profile = FindProfile(words[1]);
  if (profile == nullptr) return kNoProfile;
  Family& family = profile->families[index];
  const auto bytes = model_.modem.Count(family);
  model_.modem.SetCounters(family, {bytes[0] + received, bytes[1] + sent});
  return {};
}

std::string Console::Indicate(const Words& words) {
  uint64_t numbers[4] = {};
  for (size_t i = 1; i < words.size(); ++i)
    if (!ParseNumber(words[i], UINT32_MAX, numbers[i - 1])) return kUsage;
  Indication indication{static_cast<uint32_t>(numbers[0]), static_cast<int32_t>(numbers[1])};
  if (words.size() > 3) indication.profile = static_cast<uint32_t>(numbers[2]);
  if (words.size() > 4) indication.mobile_ap_handle = static_cast<uint32_t>(numbers[3]);
  hub_.Indicate(0, indication);
  return {};
}

std::string Console::IndicateRaw(const Words& words) {
  uint64_t id, byte;
  std::string elements;
  const std::string text = words.size() > 2 ? words[2] : "";
  if (!ParseNumber(words[1], UINT32_MAX, id) || text.size() % 2 != 0) return kUsage;
  for (size_t i = 0; i < text.size(); i += 2) {
    if (!ParseNumber("0x" + text.substr(i, 2), 0xFF, byte)) return kUsage;
    elements.push_back(static_cast<char>(byte));
  }
  hub_.IndicateRaw(static_cast<uint32_t>(id), elements);
  return {};
}

std::string Console::Sleep(const Words& words) {
  uint64_t ms;
  if (!ParseNumber(words[1], kMaxSleepMs, ms)) return kUsage;
  paused_ = true;
  pause_.expires_after(Milliseconds(ms));
  pause_.async_wait([this](const asio::error_code& stopped) {
    if (stopped) return;
    paused_ = false;
    RunLines();
  });
  return {};
}

std::string Console::Show(const Words&) {
  const Modem& modem = model_.modem;
  std::printf("mobile ap %s, network %s, roaming %s\n", OnOff(modem.mobile_ap_enabled()),
              OnOff(modem.network()), OnOff(modem.roaming()));
  size_t index = 0;
  for (const Profile& profile : model_.modem.profiles()) {
    std::printf("profile %zu: handle %u, family %d, autoconnect %s, roaming %s\n", index++,
                profile.handle, profile.policy.ip_family, OnOff(profile.autoconnect),
                OnOff(profile.roaming));
    for (const FamilyIndex family : kFamilies)
      std::printf("  IPv%c: %s, status %d\n", family == kIpv4 ? '4' : '6',
                  OnOff(profile.families[family].enabled), profile.Status(family));
  }
  const Lan& lan = model_.lan;
  std::printf("lan: gateway 0x%08x, netmask 0x%08x, dhcp %s, %s\n", lan.config.gw_ip,
              lan.config.netmask, OnOff(lan.config.enable_dhcp), lan.active ? "active" : "pending");
  for (const auto& vlan : lan.vlans) std::printf("vlan %d on %s\n", vlan.vlan_id, vlan.iface_name);
  for (const auto& mapping : lan.mappings)
    std::printf("vlan %d mapped to handle %u\n", mapping.vlan_id, mapping.profile_handle);
  std::printf("passthrough: mode %d, host '%s'\n", lan.passthrough.mode,
              lan.passthrough.config.device_name);
  return {};
}

std::string Console::Quit(const Words&) {
  paused_ = true;
  io_.stop();
  return {};
}

std::string Console::Help(const Words&) {
  for (const Command& command : kCommands) std::printf("%s %s\n", command.name, command.arguments);
  return {};
}

}  // namespace sim
