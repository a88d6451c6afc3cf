/// The command line: objects, verbs, ids and options.
#pragma once

#include <CLI/CLI.hpp>
#include <chrono>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "router.h"
#include "vocabulary.h"

namespace qcmapctl {

/// The options that every command takes.
struct Options {
  bool json = false;
  bool quiet = false;
  bool verbose = false;
  std::chrono::milliseconds wait{30000};
};

/// What a command runs with.
struct Context {
  Router router;
  Options options;
};

using Handler = std::function<void(Context&)>;

class CommandLine {
 public:
  CommandLine();

  /// An object without verbs of its own.
  CLI::App* AddObject(const std::string& name, const std::string& description, Handler handler);
  /// An object; the first verb added to it is the one that a bare object means.
  CLI::App* AddObject(const std::string& name, const std::string& description);
  CLI::App* AddVerb(CLI::App* object, const std::string& name, const std::string& description,
                    Handler handler);

  /// What the command line asks for.
  struct Command {
    /// The object and its verb, as they stand in messages.
    std::string operation;
    /// Empty without an object, and when only `text` is to be printed.
    Handler run;
    Options options;
    /// Help or version.
    std::string text;
  };

  /// Reads a command line. Throws CommandFailed with the nearest word when it is wrong.
  Command Parse(const std::vector<std::string>& arguments);
  /// The operation that Parse has recognised so far; for its failures.
  std::string Operation() const;

 private:
  std::vector<std::string> WithDefaultVerb(std::vector<std::string> arguments) const;
  [[noreturn]] void FailUsage(const CLI::ParseError& error) const;
  /// The object or verb that was recognised last.
  const CLI::App* Innermost() const;

  CLI::App app_;
  Options options_;
  std::map<const CLI::App*, Handler> handlers_;
};

// Arguments that several commands take. What they fill must live as long as the command line.

CLI::Option* AddIndex(CLI::App* command, std::optional<uint32_t>& index,
                      const std::string& description = "profile index, as 'policy list' shows it",
                      const std::string& name = "ID");
CLI::Option* AddVlanId(CLI::App* command, int32_t& vlan_id);
/// An on|off option.
CLI::Option* AddOnOff(CLI::App* command, const std::string& name, std::optional<bool>& value,
                      const std::string& description);
/// A time in seconds, decimals allowed.
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
        return words.count(word) != 0 ? std::string() : "'" + word + "' is none of " + list;
      });
}

/// -4 and -6; neither means both.
struct Families {
  bool ipv4 = false;
  bool ipv6 = false;

  std::vector<IPFamily> Chosen() const;
};
void AddFamilies(CLI::App* command, Families& families);

}  // namespace qcmapctl
