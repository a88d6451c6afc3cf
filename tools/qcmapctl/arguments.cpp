/// The kinds of arguments that several commands take.
#include "arguments.h"

#include <algorithm>
#include <cctype>

namespace qcmapctl {

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

CLI::Option* AddIndex(CLI::App* command, std::optional<uint32_t>& index,
                      const std::string& description, const std::string& name) {
  return command
      ->add_option_function<std::string>(
          name, [&index](const std::string& word) { index = ToNumber(word, 999999999); },
          description)
      ->option_text(" ")
      ->check([](const std::string& word) {
        return ToNumber(word, 999999999) ? "" : "'" + word + "' is not a profile index";
      });
}

CLI::Option* AddVlanId(CLI::App* command, int32_t& vlan_id) {
  return command
      ->add_option_function<std::string>(
          "VLAN",
          [&vlan_id](const std::string& word) {
            vlan_id = static_cast<int32_t>(*ToNumber(word, 4094));
          },
          "VLAN id, 2 to 4094")
      ->option_text(" ")
      ->required()
      ->check([](const std::string& word) {
        const auto number = ToNumber(word, 4094);
        return number && *number >= 2 ? "" : "'" + word + "' is not a VLAN id from 2 to 4094";
      });
}

CLI::Option* AddNumber(CLI::App* command, const std::string& name, std::optional<uint32_t>& value,
                       uint32_t lowest, uint32_t highest, const std::string& description) {
  return command
      ->add_option_function<std::string>(
          name, [&value, highest](const std::string& word) { value = ToNumber(word, highest); },
          description)
      ->option_text("N")
      ->check([lowest, highest](const std::string& word) {
        const auto number = ToNumber(word, highest);
        return number && *number >= lowest
                   ? ""
                   : "'" + word + "' is not a number from " + std::to_string(lowest) + " to " +
                         std::to_string(highest);
      });
}

CLI::Option* AddOnOff(CLI::App* command, const std::string& name, std::optional<bool>& value,
                      const std::string& description) {
  static const std::map<std::string, bool> words = {{"off", false}, {"on", true}};
  return AddWord(command, name, value, words, description);
}

CLI::Option* AddSeconds(CLI::App* command, const std::string& names,
                        std::function<void(std::chrono::milliseconds)> set,
                        const std::string& description) {
  return command
      ->add_option_function<std::string>(
          names,
          [set = std::move(set)](const std::string& word) {
            set(std::chrono::milliseconds(static_cast<int64_t>(std::stod(word) * 1000)));
          },
          description)
      ->option_text("SECONDS")
      ->check([](const std::string& word) {
        const size_t point = word.find('.');
        const bool valid = ToNumber(word.substr(0, point), 86400) &&
                           (point == std::string::npos ||
                            (IsNumber(word.substr(point + 1)) && word.size() - point < 10));
        return valid ? "" : "'" + word + "' is not a time from 0 to 86400 seconds";
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
