/// Tells what is wrong with a command line, and what was probably meant.
#include "usage.h"

#include <algorithm>
#include <vector>

#include "failure.h"
#include "words/nearest_word.h"

namespace qcmapctl {
namespace {

/// The words and options, inherited ones included, that `command` accepts at the place of `word`.
std::vector<std::string> CandidatesFor(const std::string& word, const CLI::App* command) {
  std::vector<std::string> candidates;
  if (word[0] != '-') {
    for (const CLI::App* next : command->get_subcommands({})) {
      candidates.push_back(next->get_name());
    }
    return candidates;
  }
  for (; command != nullptr; command = command->get_parent()) {
    for (const CLI::Option* option : command->get_options()) {
      for (const std::string& name : option->get_lnames()) candidates.push_back("--" + name);
    }
  }
  return candidates;
}

/// The objects that have a verb of that name, each with the verb.
std::string ObjectsWith(const std::string& verb, const CLI::App& app) {
  std::string list;
  for (const CLI::App* object : app.get_subcommands({})) {
    for (const CLI::App* known : object->get_subcommands({})) {
      if (known->get_name() != verb) continue;
      list += (list.empty() ? "'" : " or '") + PathOf(known) + "'";
    }
  }
  return list;
}

/// What was probably meant by a word that is unknown; empty if nothing comes near it.
std::string MeaningOf(const std::string& word, const CLI::App* command, const CLI::App& app) {
  if (word == "help") return "'--help'";
  const std::string nearest = words::NearestWord(word, CandidatesFor(word, command));
  if (nearest != word && !nearest.empty()) return "'" + nearest + "'";
  return command == &app ? ObjectsWith(word, app) : "";
}

/// The parser's error in the words of this program. The parser's own text starts with the name of
/// the argument.
std::string MessageFor(const CLI::ParseError& error) {
  std::string text = error.what();
  const std::string name = text.substr(0, text.find_first_of(": "));
  if (error.get_name() == "RequiredError") return name + " is missing";
  if (error.get_name() == "RequiresError") {
    return name + " is only possible together with " + text.substr(text.rfind(' ') + 1);
  }
  if (error.get_name() == "ValidationError") return text;
  const bool too_few = text.find("missing") != std::string::npos;
  if (error.get_name() == "ArgumentMismatch" && too_few) return name + " needs a value";
  if (error.get_name() == "ArgumentMismatch") return name + " is given more than once";
  return name + " takes no value";
}

}  // namespace

const CLI::App* InnermostOf(const CLI::App& app) {
  const CLI::App* command = &app;
  while (!command->get_subcommands().empty()) command = command->get_subcommands()[0];
  return command;
}

std::string PathOf(const CLI::App* command) {
  std::string path;
  for (; command->get_parent() != nullptr; command = command->get_parent()) {
    const char* const separator = path.empty() ? "" : " ";
    path.insert(0, separator).insert(0, command->get_name());
  }
  return path;
}

void FailUsage(const CLI::App& app, const CLI::ParseError& error) {
  const CLI::App* command = InnermostOf(app);
  const std::string path = PathOf(command);
  const std::string help = "'qcmapctl" + (path.empty() ? "" : " " + path) + " --help' shows more";
  std::vector<std::string> unknown = app.remaining(true);
  unknown.erase(std::remove(unknown.begin(), unknown.end(), "--"), unknown.end());
  if (unknown.empty()) throw CommandFailed(MessageFor(error), help);

  const std::string& word = unknown.front();
  const std::string message =
      (word[0] == '-' && word.size() > 1 ? "unknown option '" : "unknown word '") + word + "'";
  const std::string meant = MeaningOf(word.substr(0, word.find('=')), command, app);
  throw CommandFailed(message, meant.empty() ? help : "did you mean " + meant + "? " + help);
}

}  // namespace qcmapctl
