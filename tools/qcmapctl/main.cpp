/// qcmapctl: drives the modem's Mobile AP from the command line.
#include <fcntl.h>
#include <syslog.h>
#include <unistd.h>

#include <algorithm>
#include <iostream>

#include "address.h"
#include "call.h"
#include "command_line.h"
#include "failure.h"
#include "lan.h"
#include "map.h"
#include "output.h"
#include "passthrough.h"
#include "policy.h"
#include "stats.h"
#include "status.h"
#include "switch.h"
#include "vlan.h"
#include "wait.h"
#include "watch.h"

namespace qcmapctl {
namespace {

int ReportFailure(const CommandFailed& failure, const std::string& operation, bool as_json) {
  if (as_json) {
    Json error;
    error["operation"] = operation;
    error["message"] = failure.what();
    error["hint"] = failure.hint();
    error["exit"] = failure.exit_code();
    std::cerr << Dump(Json{{"error", error}}, true);
  } else {
    std::cerr << "qcmapctl: " << (operation.empty() ? "" : operation + ": ") << failure.what()
              << "\nhint: " << failure.hint() << "\n";
  }
  return failure.exit_code();
}

int Run(const std::vector<std::string>& arguments) {
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

  // If the command line is wrong but asks for JSON, its failure is reported as JSON.
  bool as_json = std::any_of(arguments.begin(), arguments.end(), [](const std::string& argument) {
    return argument == "-J" || argument == "--json";
  });
  try {
    const CommandLine::Command command = line.Parse(arguments);
    if (!command.text.empty()) {
      Print({command.text, nullptr}, false);
      return kExitDone;
    }
    as_json = command.options.json;
    openlog("qcmapctl", command.options.verbose ? LOG_PERROR : 0, LOG_USER);
    Context context{Router(), command.options};
    const Report report = command.run ? command.run(context) : ShowStatus(context.router);
    if (!command.options.quiet) Print(report, as_json);
    return kExitDone;
  } catch (const CommandFailed& failure) {
    return ReportFailure(failure, line.Operation(), as_json);
  } catch (const std::exception& error) {
    return ReportFailure(CommandFailed(Failure::UNEXPECTED, error.what()), line.Operation(),
                         as_json);
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
