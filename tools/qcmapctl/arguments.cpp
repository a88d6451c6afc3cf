/// The kinds of arguments that several commands take.
#include "arguments.h"

#include <algorithm>
#include <cctype>

#include "router.h"

namespace qcmapctl {
namespace {

constexpr uint32_t kHighestIndex = 999999999;
constexpr std::chrono::seconds kLongestTime{86400};

}  // namespace

bool IsNumber(const std::string& word) {
  return !word.empty() && std::all_of(word.begin(), word.end(),
                                      [](unsigned char c) { return std::isdigit(c) != 0; });
}

std::optional<uint32_t> ToNumber(const std::string& word, uint32_t highest) {
  if (!IsNumber(word) || word.size() > 10) return std::nullopt;
  const unsigned long long number = std::stoull(word);
  if (number > highest) return std::nullopt;
  return static_cast<uint32_t>(number);
}

CLI::Option* AddArgument(CLI::App* command, const std::string& names, const std::string& shown,
                         const std::string& description,
                         std::function<std::string(const std::string&)> set) {
  return command
      ->add_option_function<std::string>(
          names, [](const std::string&) {}, description)
      ->option_text(shown)
      ->check([set = std::move(set)](const std::string& word) { return set(word); });
}

CLI::Option* AddIndex(CLI::App* command, std::optional<uint32_t>& index,
                      const std::string& description, const std::string& name) {
  CLI::Option* option =
      AddArgument(command, name, " ", description, [&index](const std::string& word) {
        index = ToNumber(word, kHighestIndex);
        if (index) return std::string();
        throw CommandFailed("'" + word + "' is not a profile index",
                            "give one index, as 'qcmapctl policy list' shows it; each command acts "
                            "on one profile");
      });
  SetCandidates(option, [](Router& router) {
    std::vector<std::string> indices;
    for (const Profile& profile : router.Profiles()) {
      indices.push_back(std::to_string(profile.index));
    }
    return indices;
  });
  return option;
}

CLI::Option* AddVlanId(CLI::App* command, int32_t& vlan_id) {
  CLI::Option* option =
      AddArgument(command, "VLAN", " ", "VLAN id, 2 to 4094", [&vlan_id](const std::string& word) {
        const auto number = ToNumber(word, 4094);
        if (!number || *number < 2) return "'" + word + "' is not a VLAN id from 2 to 4094";
        vlan_id = static_cast<int32_t>(*number);
        return std::string();
      });
  SetCandidates(option, [](Router& router) {
    std::vector<std::string> ids;
    for (const VlanConfig& vlan : router.Vlans()) ids.push_back(std::to_string(vlan.vlan_id));
    return ids;
  });
  return option->required();
}

CLI::Option* AddNumber(CLI::App* command, const std::string& name, std::optional<uint32_t>& value,
                       uint32_t lowest, uint32_t highest, const std::string& description) {
  return AddArgument(command, name, "N", description,
                     [&value, lowest, highest](const std::string& word) {
                       value = ToNumber(word, highest);
                       if (value && *value >= lowest) return std::string();
                       return "'" + word + "' is not a number from " + std::to_string(lowest) +
                              " to " + std::to_string(highest);
                     });
}

CLI::Option* AddText(CLI::App* command, const std::string& name, std::string& text,
                     const std::string& description, size_t longest) {
  return AddArgument(command, name, " ", description, [&text, longest](const std::string& word) {
    text = word;
    return !word.empty() && word.size() <= longest
               ? std::string()
               : "it must have 1 to " + std::to_string(longest) + " bytes";
  });
}

CLI::Option* AddSeconds(CLI::App* command, const std::string& names,
                        std::function<void(std::chrono::milliseconds)> set,
                        const std::string& description, std::chrono::milliseconds lowest) {
  return AddArgument(command, names, "SECONDS", description,
                     [set = std::move(set), lowest](const std::string& word) {
                       // Whole milliseconds, read without regard to the locale. What follows them
                       // is dropped.
                       const size_t point = std::min(word.find('.'), word.size());
                       const std::string decimals =
                           point < word.size() ? word.substr(point + 1) : "0";
                       const auto whole = ToNumber(word.substr(0, point), kLongestTime.count());
                       if (whole && IsNumber(decimals) && decimals.size() < 10) {
                         const std::chrono::milliseconds time(
                             *whole * uint64_t{1000} + std::stoul((decimals + "000").substr(0, 3)));
                         if (time >= lowest && time <= kLongestTime) {
                           set(time);
                           return std::string();
                         }
                       }
                       return "'" + word + "' is not a time from " +
                              (lowest.count() > 0 ? "0.1" : "0") + " to 86400 seconds";
                     });
}

std::vector<IPFamily> Families::Chosen() const {
  std::vector<IPFamily> chosen;
  if (ipv4 || !ipv6) chosen.push_back(IPFamily::IPV4);
  if (ipv6 || !ipv4) chosen.push_back(IPFamily::IPV6);
  return chosen;
}

void AddFamilies(CLI::App* command, Families& families) {
  command->add_flag("-4,--ipv4", families.ipv4, "IPv4 only");
  command->add_flag("-6,--ipv6", families.ipv6, "IPv6 only");
}

}  // namespace qcmapctl
