/// The kinds of arguments that several commands take. The variables that they fill must live as
/// long as the command line. A value that is wrong ends the command.
#pragma once

#include <CLI/CLI.hpp>
#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "completion.h"
#include "failure.h"
#include "vocabulary.h"

namespace qcmapctl {

/// Whether `word` consists of decimal digits.
bool IsNumber(const std::string& word);
/// The value of a decimal number up to `highest`; empty for anything else.
std::optional<uint32_t> ToNumber(const std::string& word, uint32_t highest);

/// An argument whose word `set` stores. `set` returns what is wrong with the word, or nothing.
CLI::Option* AddArgument(CLI::App* command, const std::string& names, const std::string& shown,
                         const std::string& description,
                         std::function<std::string(const std::string&)> set);

/// The index of a profile.
CLI::Option* AddIndex(CLI::App* command, std::optional<uint32_t>& index,
                      const std::string& description = "profile index, as 'policy list' shows it",
                      const std::string& name = "ID");
/// A VLAN id, 2 to 4094.
CLI::Option* AddVlanId(CLI::App* command, int32_t& vlan_id);
/// A whole number from `lowest` to `highest`.
CLI::Option* AddNumber(CLI::App* command, const std::string& name, std::optional<uint32_t>& value,
                       uint32_t lowest, uint32_t highest, const std::string& description);
/// A text of 1 to `longest` bytes.
CLI::Option* AddText(CLI::App* command, const std::string& name, std::string& text,
                     const std::string& description, size_t longest);
/// A time in seconds, which may have decimals.
CLI::Option* AddSeconds(CLI::App* command, const std::string& names,
                        std::function<void(std::chrono::milliseconds)> set,
                        const std::string& description,
                        std::chrono::milliseconds lowest = std::chrono::milliseconds(0));
/// One of several words.
template <typename Value>
CLI::Option* AddWord(CLI::App* command, const std::string& name, std::optional<Value>& value,
                     const Words<Value>& words, const std::string& description) {
  std::vector<std::string> list;
  for (const auto& entry : words) list.push_back(entry.first);
  const std::string shown = CLI::detail::join(list, "|");
  CLI::Option* option = AddArgument(
      command, name, shown, description, [&value, &words, shown](const std::string& word) {
        value.reset();
        for (const auto& entry : words) {
          if (entry.first == word) value = entry.second;
        }
        return value ? std::string() : "'" + word + "' is not one of " + shown;
      });
  SetCandidates(option, [list](Router&) { return list; });
  return option;
}

/// The options -4 and -6. Without them, both families are chosen.
struct Families {
  bool ipv4 = false;
  bool ipv6 = false;

  std::vector<IPFamily> Chosen() const;
};
void AddFamilies(CLI::App* command, Families& families);

}  // namespace qcmapctl
