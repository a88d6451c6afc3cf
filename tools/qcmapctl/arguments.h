/// The kinds of arguments that several commands take. The variables that they fill must live as
/// long as the command line.
#pragma once

#include <CLI/CLI.hpp>
#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "vocabulary.h"

namespace qcmapctl {

/// Whether `word` consists of decimal digits.
bool IsNumber(const std::string& word);
/// The value of a decimal number up to `highest`; empty for anything else.
std::optional<uint32_t> ToNumber(const std::string& word, uint32_t highest);

/// The index of a profile.
CLI::Option* AddIndex(CLI::App* command, std::optional<uint32_t>& index,
                      const std::string& description = "profile index, as 'policy list' shows it",
                      const std::string& name = "ID");
/// A VLAN id, 2 to 4094.
CLI::Option* AddVlanId(CLI::App* command, int32_t& vlan_id);
/// A whole number from `lowest` to `highest`.
CLI::Option* AddNumber(CLI::App* command, const std::string& name, std::optional<uint32_t>& value,
                       uint32_t lowest, uint32_t highest, const std::string& description);
/// An option whose value is on or off.
CLI::Option* AddOnOff(CLI::App* command, const std::string& name, std::optional<bool>& value,
                      const std::string& description);
/// A time in seconds, which may have decimals.
CLI::Option* AddSeconds(CLI::App* command, const std::string& names,
                        std::function<void(std::chrono::milliseconds)> set,
                        const std::string& description);
/// One of several words.
template <typename Value>
CLI::Option* AddWord(CLI::App* command, const std::string& name, std::optional<Value>& value,
                     const std::map<std::string, Value>& words, const std::string& description) {
  std::string list;
  for (const auto& word : words) list += (list.empty() ? "" : "|") + word.first;
  return command
      ->add_option_function<std::string>(
          name, [&value, &words](const std::string& word) { value = words.at(word); }, description)
      ->option_text(list)
      ->check([&words, list](const std::string& word) {
        return words.count(word) != 0 ? std::string() : "'" + word + "' is not one of " + list;
      });
}

/// The options -4 and -6. Without them, both families are chosen.
struct Families {
  bool ipv4 = false;
  bool ipv6 = false;

  std::vector<IPFamily> Chosen() const;
};
void AddFamilies(CLI::App* command, Families& families);

}  // namespace qcmapctl
