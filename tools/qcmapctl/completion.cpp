/// Completes command lines for shells.
#include "completion.h"

#include <map>
#include <set>
#include <utility>

#include "router.h"

namespace qcmapctl {
namespace {

std::map<const CLI::Option*, Candidates>& AllCandidates() {
  static std::map<const CLI::Option*, Candidates> candidates;
  return candidates;
}

/// What the words before the last one have come to.
struct Place {
  const CLI::App* command;
  /// The option whose value follows.
  const CLI::Option* option = nullptr;
  /// How many positional arguments the command has got.
  size_t given = 0;
};

const CLI::Option* FindOption(const CLI::App* command, const std::string& word) {
  for (; command != nullptr; command = command->get_parent()) {
    const CLI::Option* option = command->get_option_no_throw(word);
    if (option != nullptr) return option;
  }
  return nullptr;
}

void Follow(Place& place, const std::string& word) {
  if (place.option != nullptr) {
    place.option = nullptr;
    return;
  }
  if (word.rfind('-', 0) == 0) {
    const CLI::Option* option = FindOption(place.command, word);
    if (option != nullptr && option->get_items_expected_max() > 0) place.option = option;
    return;
  }
  for (const CLI::App* next : place.command->get_subcommands({})) {
    if (next->get_name() != word) continue;
    place.command = next;
    return;
  }
  ++place.given;
}

std::vector<std::string> WordsOf(const CLI::Option* option) {
  const auto candidates = AllCandidates().find(option);
  if (candidates == AllCandidates().end()) return {};
  try {
    Router router;
    return candidates->second(router);
  } catch (const CommandFailed&) {
    return {};
  }
}

std::vector<std::string> WordsAt(const Place& place, bool is_option) {
  if (place.option != nullptr) return WordsOf(place.option);
  std::vector<std::string> words;
  if (is_option) {
    for (const CLI::App* command = place.command; command != nullptr;
         command = command->get_parent()) {
      for (const CLI::Option* option : command->get_options()) {
        for (const std::string& name : option->get_lnames()) words.push_back("--" + name);
      }
    }
    return words;
  }
  for (const CLI::App* next : place.command->get_subcommands({})) {
    words.push_back(next->get_name());
  }
  size_t position = 0;
  for (const CLI::Option* option : place.command->get_options()) {
    if (option->get_positional() && position++ == place.given) return WordsOf(option);
  }
  return words;
}

}  // namespace

void SetCandidates(const CLI::Option* option, Candidates candidates) {
  AllCandidates()[option] = std::move(candidates);
}

std::string Complete(const CLI::App& app, const std::vector<std::string>& words) {
  const std::string begun = words.empty() ? "" : words.back();
  Place place{&app};
  for (size_t i = 0; i + 1 < words.size(); ++i) Follow(place, words[i]);
  std::string text;
  std::set<std::string> printed;
  for (const std::string& word : WordsAt(place, begun.rfind('-', 0) == 0)) {
    if (word.compare(0, begun.size(), begun) != 0 || !printed.insert(word).second) continue;
    text += word + "\n";
  }
  return text;
}

}  // namespace qcmapctl
