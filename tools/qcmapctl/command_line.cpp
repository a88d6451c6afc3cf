/// The grammar of the command line: objects, verbs, ids and options.
#include "command_line.h"

#include <algorithm>

#include "arguments.h"
#include "failure.h"
#include "mox/vendor/qcom/qcmap/version.h"
#include "words/nearest_word.h"

namespace qcmapctl {
namespace {

constexpr char kGlobalOptions[] =
    "Every command also takes -J, -w, -q and -v: see 'qcmapctl --help'.";

std::shared_ptr<CLI::Formatter> MakeFormatter(const std::string& words) {
  auto formatter = std::make_shared<CLI::Formatter>();
  formatter->column_width(26);
  formatter->label("SUBCOMMAND", words);
  formatter->label("REQUIRED", "");
  return formatter;
}

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

std::string PathOf(const CLI::App* command) {
  std::string path;
  for (; command->get_parent() != nullptr; command = command->get_parent()) {
    path = command->get_name() + (path.empty() ? "" : " ") + path;
  }
  return path;
}

}  // namespace

CommandLine::CommandLine()
    : app_(
          "Shows and changes what the modem's Mobile AP does.\n"
          "Without OBJECT, shows the present state of everything on one screen.",
          "qcmapctl") {
  app_.set_help_flag("-h,--help", "Show help; also works after OBJECT and VERB");
  app_.set_version_flag("-V,--version", "qcmapctl " MVQ_QCMAP_VERSION, "Show the version");
  app_.add_flag("-J,--json", options_.json, "Print JSON");
  AddSeconds(
      &app_, "-w,--wait", [this](std::chrono::milliseconds wait) { options_.wait = wait; },
      "Time limit of call up, call down and wait: 30 by default, 0 to not wait");
  app_.add_flag("-q,--quiet", options_.quiet, "Print no result; use the exit code instead");
  app_.add_flag("-v,--verbose", options_.verbose, "Show the library's log on stderr, too");
  app_.require_subcommand(0, 1);
  app_.formatter(MakeFormatter("OBJECT [VERB] [ID]"));
  app_.footer(
      DescribeExitCodes() +
      "\nWithout VERB, OBJECT is shown or listed. See also: qcmapctl OBJECT --help, man qcmapctl.");
}

CLI::App* CommandLine::AddObject(const std::string& name, const std::string& description) {
  CLI::App* object = app_.add_subcommand(name, description);
  object->group("Objects");
  object->fallthrough();
  object->require_subcommand(0, 1);
  object->formatter(MakeFormatter("VERB"));
  object->footer(kGlobalOptions);
  return object;
}

CLI::App* CommandLine::AddObject(const std::string& name, const std::string& description,
                                 Handler handler) {
  CLI::App* object = AddObject(name, description);
  handlers_[object] = std::move(handler);
  return object;
}

CLI::App* CommandLine::AddVerb(CLI::App* object, const std::string& name,
                               const std::string& description, Handler handler) {
  const bool first = object->get_subcommands({}).empty();
  CLI::App* verb = object->add_subcommand(name, description + (first ? " (the default)" : ""));
  verb->group("Verbs");
  verb->fallthrough();
  handlers_[verb] = std::move(handler);
  return verb;
}

std::vector<std::string> CommandLine::WithDefaultVerb(std::vector<std::string> arguments) const {
  std::vector<size_t> words;
  for (size_t i = 0; i < arguments.size(); ++i) {
    const std::string& argument = arguments[i];
    if (argument == "-h" || argument == "--help") return arguments;
    if (argument.size() < 2 || argument[0] != '-') {
      words.push_back(i);
    } else if (argument == "--wait" || (argument[1] != '-' && argument.back() == 'w')) {
      ++i;
    }
  }
  const bool verb_given = words.size() > 1 && !IsNumber(arguments[words[1]]);
  const CLI::App* object = nullptr;
  for (const CLI::App* known : app_.get_subcommands({})) {
    if (!words.empty() && known->get_name() == arguments[words[0]]) object = known;
  }
  if (object == nullptr || verb_given) return arguments;

  const std::vector<const CLI::App*> verbs = object->get_subcommands({});
  if (!verbs.empty()) {
    arguments.insert(arguments.begin() + static_cast<std::ptrdiff_t>(words[0]) + 1,
                     verbs[0]->get_name());
  }
  return arguments;
}

const CLI::App* CommandLine::Innermost() const {
  const CLI::App* command = &app_;
  while (!command->get_subcommands().empty()) command = command->get_subcommands()[0];
  return command;
}

std::string CommandLine::Operation() const {
  return PathOf(Innermost());
}

CommandLine::Command CommandLine::Parse(const std::vector<std::string>& arguments) {
  Command command;
  // A leading "--" is dropped, because CLI11 would not parse anything after it.
  const bool leads = !arguments.empty() && arguments.front() == "--";
  std::vector<std::string> reversed =
      WithDefaultVerb({arguments.begin() + (leads ? 1 : 0), arguments.end()});
  std::reverse(reversed.begin(), reversed.end());
  try {
    app_.parse(reversed);
  } catch (const CLI::CallForHelp&) {
    command.text = app_.help();
    return command;
  } catch (const CLI::CallForVersion&) {
    command.text = app_.version() + "\n";
    return command;
  } catch (const CLI::ParseError& error) {
    FailUsage(error);
  }
  const CLI::App* innermost = Innermost();
  command.operation = PathOf(innermost);
  const auto handler = handlers_.find(innermost);
  if (handler != handlers_.end()) command.run = handler->second;
  command.options = options_;
  return command;
}

void CommandLine::FailUsage(const CLI::ParseError& error) const {
  const CLI::App* command = Innermost();
  const std::string path = PathOf(command);
  const std::string help = "'qcmapctl" + (path.empty() ? "" : " " + path) + " --help' shows more";
  std::vector<std::string> unknown = app_.remaining(true);
  unknown.erase(std::remove(unknown.begin(), unknown.end(), "--"), unknown.end());
  if (unknown.empty()) throw CommandFailed(error.what(), help);

  const std::string& word = unknown.front();
  const std::string message =
      (word[0] == '-' && word.size() > 1 ? "unknown option '" : "unknown word '") + word + "'";
  const std::string nearest =
      words::NearestWord(word.substr(0, word.find('=')), CandidatesFor(word, command));
  if (nearest.empty() || nearest == word) throw CommandFailed(message, help);
  throw CommandFailed(message, "did you mean '" + nearest + "'? " + help);
}

}  // namespace qcmapctl
