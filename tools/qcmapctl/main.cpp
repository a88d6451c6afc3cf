/// qcmapctl: drives the modem's Mobile AP from the command line.
#include <fcntl.h>
#include <syslog.h>
#include <unistd.h>

#include <algorithm>

#include "completion.h"
#include "objects.h"

namespace qcmapctl {
namespace {

// Lets commands that watch the time themselves say how far they have come.
constexpr std::chrono::milliseconds kDelay{50};
// A completion that takes longer disturbs the user more than one without what the server knows.
constexpr std::chrono::milliseconds kLimitOfCompletion{40};

/// Whether a command line that cannot be parsed asks for JSON. Its failure is then reported as
/// JSON.
bool AsksForJson(const std::vector<std::string>& arguments) {
  return std::any_of(arguments.begin(), arguments.end(), [](const std::string& argument) {
    const bool is_short = argument.size() > 1 && argument[0] == '-' && argument[1] != '-';
    return argument == "--json" || (is_short && argument.find('J') != std::string::npos);
  });
}

Report RunCommand(const CommandLine::Command& command, const std::string& operation,
                  Clock::time_point start) {
  openlog("qcmapctl", command.options.verbose ? LOG_PERROR : 0, LOG_USER);
  const auto wait = command.options.wait.value_or(command.limit);
  Context context{Router(), command.options, Clock::time_point::min()};
  if (wait.count() > 0 && wait < kNoLimit) context.deadline = start + wait;
  if (wait < kNoLimit) {
    // Without waiting for events, requests still have to be answered.
    const auto limit = wait.count() > 0 ? wait : kUsualLimit;
    EndAfter(start + limit + kDelay, [operation, options = command.options] {
      return PrintFailure(CommandFailed(Failure::TIME_LIMIT), operation, options);
    });
  }
  return command.run(context);
}

int Run(const std::vector<std::string>& arguments) {
  const auto start = Clock::now();
  CommandLine line;
  AddStatus(line);
  AddPolicy(line);
  AddSwitch(line);
  AddCall(line);
  AddStats(line);
  AddAddress(line);
  AddLan(line);
  AddVlan(line);
  AddMap(line);
  AddPassthrough(line);
  AddWatch(line);
  AddWait(line);
  AddExplain(line);

  const auto print_text = [](const std::string& text) {
    Print({text, [](const Json& shown) { return shown.get<std::string>(); }}, Options());
    return kExitDone;
  };
  if (!arguments.empty() && arguments.front() == "--complete") {
    // Nobody asked the library for anything, so it leaves no trace in the system log.
    setlogmask(LOG_MASK(LOG_EMERG));
    EndAfter(start + kLimitOfCompletion, [] { return kExitDone; });
    return print_text(Complete(line.app(), {arguments.begin() + 1, arguments.end()}));
  }

  Options options;
  options.json = AsksForJson(arguments);
  try {
    const CommandLine::Command command = line.Parse(arguments);
    if (!command.text.empty()) return print_text(command.text);
    options = command.options;
    const Report report = RunCommand(command, line.Operation(), start);
    Print(report, options);
    return report.exit_code;
  } catch (const CommandFailed& failure) {
    return PrintFailure(failure, line.Operation(), options);
  } catch (const std::exception& error) {
    return PrintFailure(CommandFailed(Failure::UNEXPECTED, error.what()), line.Operation(),
                        options);
  }
}

/// Opens a descriptor for each standard stream that the caller has closed. Otherwise the connection
/// to the server would take its number. Writing to such a stream fails.
void OccupyStandardStreams() {
  int descriptor;
  do {
    descriptor = open("/dev/null", O_RDONLY);
  } while (descriptor >= 0 && descriptor <= STDERR_FILENO);
  if (descriptor >= 0) close(descriptor);
}

}  // namespace

}  // namespace qcmapctl

int main(int argc, char* argv[]) {
  qcmapctl::OccupyStandardStreams();
  return qcmapctl::Run(std::vector<std::string>(argv + 1, argv + argc));
}
