/// The grammar of the command line: objects, verbs, ids and options.
#include "command_line.h"

#include <algorithm>

#include "arguments.h"
#include "failure.h"
#include "field_names.h"
#include "mox/vendor/qcom/qcmap/version.h"
#include "usage.h"

namespace qcmapctl {
namespace {

constexpr char kGlobalOptions[] =
    "Every command takes -J, -K, -g, -w, -q, -v and --color: see 'qcmapctl --help'.";

std::shared_ptr<CLI::Formatter> MakeFormatter(const std::string& words) {
  auto formatter = std::make_shared<CLI::Formatter>();
  formatter->column_width(26);
  formatter->label("SUBCOMMAND", words);
  formatter->label("REQUIRED", "");
  formatter->label("Positionals", "Arguments");
  return formatter;
}

std::vector<std::string> SplitAtCommas(const std::string& list) {
  std::vector<std::string> words = CLI::detail::split(list, ',');
  words.erase(std::remove(words.begin(), words.end(), ""), words.end());
  return words;
}

const Words<Colour>& ColourWords() {
  static const Words<Colour> words = {
      {"auto", Colour::AUTO}, {"always", Colour::ALWAYS}, {"never", Colour::NEVER}};
  return words;
}

/// Whether the argument after the option `argument` is its value.
bool TakesValue(const std::string& argument, const CLI::App* command) {
  if (command == nullptr) return false;
  const bool is_long = argument[1] == '-';
  // Of several short options in one argument, only the last one can have a value.
  const CLI::Option* option =
      command->get_option_no_throw(is_long ? argument : std::string("-") + argument.back());
  return option != nullptr && option->get_items_expected_max() > 0;
}

}  // namespace

CommandLine::CommandLine()
    : app_(
          "Shows and changes what the modem's Mobile AP does.\n"
          "Without OBJECT, shows the present state of everything on one screen.",
          "qcmapctl") {
  AddOptions();
  app_.require_subcommand(0, 1);
  app_.formatter(MakeFormatter("OBJECT [VERB] [ID]"));
  app_.footer(DescribeExitCodes() +
              "\nWithout VERB, OBJECT is shown or listed.\n"
              "See also: qcmapctl OBJECT --help, man qcmapctl.");
}

void CommandLine::AddOptions() {
  app_.set_help_flag("-h,--help", "Show help; also works after OBJECT and VERB");
  app_.set_version_flag("-V,--version", "qcmapctl " MVQ_QCMAP_VERSION, "Show the version");
  app_.add_flag("-J,--json", options_.json, "Print JSON");
  app_.add_flag("-K,--keyvalue", options_.key_values, "Print NAME=VALUE, quoted for the shell");
  AddArgument(&app_, "-g,--get", "FIELD[,FIELD]", "Print only these fields, as -K names them",
              [this](const std::string& list) {
                options_.fields = SplitAtCommas(list);
                return options_.fields.empty() ? "no field is given" : "";
              });
  AddSeconds(
      &app_, "-w,--wait", [this](std::chrono::milliseconds wait) { options_.wait = wait; },
      "Time limit of the command: 30 for call up, call down and wait, 5 for others; 0 to request "
      "without waiting for events");
  app_.add_flag("-q,--quiet", options_.quiet, "Print no result; use the exit code instead");
  app_.add_flag("-v,--verbose", options_.verbose, "Show the library's log on stderr, too");
  AddWord(&app_, "--color", options_.colour, ColourWords(),
          "Whether states are coloured; auto means on a terminal");
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
  commands_[object].run = std::move(handler);
  return object;
}

CLI::App* CommandLine::AddVerb(CLI::App* object, const std::string& name,
                               const std::string& description, Handler handler) {
  const bool first = object->get_subcommands({}).empty();
  CLI::App* verb = object->add_subcommand(name, description + (first ? " (the default)" : ""));
  verb->group("Verbs");
  verb->fallthrough();
  commands_[verb].run = std::move(handler);
  return verb;
}

std::vector<std::string> CommandLine::WithDefaultVerb(std::vector<std::string> arguments) const {
  const CLI::App* object = nullptr;
  const CLI::App* verb = nullptr;
  size_t after_object = 0;
  for (size_t i = 0; i < arguments.size(); ++i) {
    const std::string& argument = arguments[i];
    if (argument == "-h" || argument == "--help") return arguments;
    if (argument.size() > 1 && argument[0] == '-') {
      // A value that follows an option is no word of the grammar.
      if (TakesValue(argument, &app_) || TakesValue(argument, verb)) ++i;
      continue;
    }
    if (object != nullptr) {
      if (!IsNumber(argument)) return arguments;
      break;
    }
    for (const CLI::App* known : app_.get_subcommands({})) {
      if (known->get_name() == argument) object = known;
    }
    if (object == nullptr || object->get_subcommands({}).empty()) return arguments;
    verb = object->get_subcommands({})[0];
    after_object = i + 1;
  }
  if (verb != nullptr) {
    arguments.insert(arguments.begin() + static_cast<std::ptrdiff_t>(after_object),
                     verb->get_name());
  }
  return arguments;
}

std::string CommandLine::Operation() const {
  return PathOf(InnermostOf(app_));
}

CommandLine::Command CommandLine::Parse(const std::vector<std::string>& arguments) {
  Command help;
  // A leading "--" is dropped, because CLI11 would not parse anything after it.
  const bool leads = !arguments.empty() && arguments.front() == "--";
  std::vector<std::string> reversed =
      WithDefaultVerb({arguments.begin() + (leads ? 1 : 0), arguments.end()});
  std::reverse(reversed.begin(), reversed.end());
  try {
    app_.parse(reversed);
  } catch (const CLI::CallForHelp&) {
    help.text = app_.help();
    std::vector<std::string> fields = FieldNamesOf(Operation());
    if (commands_.count(InnermostOf(app_)) == 0) fields.clear();
    if (!fields.empty()) help.text += "\nFields: " + CLI::detail::join(fields, ", ") + "\n";
    return help;
  } catch (const CLI::CallForVersion&) {
    help.text = app_.version() + "\n";
    return help;
  } catch (const CLI::ParseError& error) {
    FailUsage(app_, error);
  }
  if (options_.json + options_.key_values + !options_.fields.empty() > 1) {
    throw CommandFailed("only one of -J, -K and -g is possible", "leave the others out");
  }
  const std::string operation = Operation();
  for (const std::string& field : options_.fields) {
    RequireField(operation.empty() ? "status show" : operation, field);
  }
  Command command = commands_[InnermostOf(app_)];
  command.options = options_;
  return command;
}

}  // namespace qcmapctl
