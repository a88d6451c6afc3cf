/// How commands fail: in time, with a message, a hint and the documented exit code.
#include <gtest/gtest.h>

#include "shell.h"

namespace {

enum ExitCode : int {
  kUnexpected = 1,
  kUsage = 2,
  kTimedOut = 3,
  kBringUpFailed = 4,
  kTearDownFailed = 5,
  kRefused = 6,
  kPartlyDone = 7,
  kNoServer = 8,
  kNotFound = 10
};

void ExpectTrouble(const Outcome& outcome, ExitCode status, const std::string& command,
                   const std::string& message) {
  SCOPED_TRACE(command + ":\n" + outcome.err);
  EXPECT_EQ(outcome.status, status);
  EXPECT_EQ(outcome.out, "");
  EXPECT_NE(outcome.err.find(message), std::string::npos);
  EXPECT_NE(outcome.err.find("\nhint: "), std::string::npos);
}

TEST(Usage, ErrorsNeedNoServerAndNameTheNearestWord) {
  const struct {
    const char *arguments, *message, *hint;
  } rows[] = {
      {"polcy list", "unknown word 'polcy'", "did you mean 'policy'? 'qcmapctl --help' shows more"},
      {"call shwo 1", "call: unknown word 'shwo'",
       "did you mean 'show'? 'qcmapctl call --help' shows more"},
      {"lan set --gatway 1.2.3.4", "lan set: unknown option '--gatway'",
       "did you mean '--gateway'? 'qcmapctl lan set --help' shows more"},
      {"--jsno call", "unknown option '--jsno'", "did you mean '--json'?"},
      {"zzzzzz", "unknown word 'zzzzzz'", "'qcmapctl --help' shows more"},
      {"up", "unknown word 'up'", "did you mean 'call up'?"},
      {"help", "unknown word 'help'", "did you mean '--help'?"},
      {"call UP 1", "call: unknown word 'UP'", "did you mean 'up'?"},
      {"call up all", "'all' is not a profile index", "give one index, as 'qcmapctl policy list'"},
      {"call -w", "--wait needs a value", "'qcmapctl"},
      {"-q call -w 1 -w 2", "--wait is given more than once", ""},
      {"policy list -g indx", "unknown field 'indx'", "did you mean 'index'?"},
      {"-g lan_gatewy", "unknown field 'lan_gatewy'", "did you mean 'lan_gateway'?"},
      {"call up", "call up: ID is missing", "'qcmapctl call up --help' shows more"},
      {"call up -5", "call up: '-5' is not a profile index", ""},
      {"call up 1 2", "call up: unknown word '2'", ""},
      {"vlan add eth1 100", "'eth1' is not one of", ""},
      {"vlan add eth0 4095", "'4095' is not a VLAN id from 2 to 4094", ""},
      {"lan set --start 10.0.0.2", "--start is only possible together with --end", ""},
      {"lan set", "no setting is given", "for example: qcmapctl"},
      {"switch set 1", "no switch is given", "for example: qcmapctl"},
      {"policy set 1", "no setting is given", "for example: qcmapctl"},
      {"-- call up", "call up: ID is missing", ""},
      {"policy set 1 --profile-v4 25",
       "policy set: --profile-v4: '25' is not a number from 1 to 24", ""},
      {"-w nan call", "'nan' is not a time from 0 to 86400 seconds", ""},
      {"passthrough enable $(printf %0101d 0)", "1 to 100 bytes", ""}};
  for (const auto& row : rows) {
    const Outcome outcome = Shell(std::string("qcmapctl ") + row.arguments);
    ExpectTrouble(outcome, kUsage, row.arguments, row.message);
    EXPECT_NE(outcome.err.find(std::string("\nhint: ") + row.hint), std::string::npos)
        << row.arguments << ":\n"
        << outcome.err;
  }
}

TEST(Failure, HasItsExitCodeAMessageAndNothingOnStandardOutput) {
  const struct {
    const char *server, *before, *command;
    ExitCode status;
    const char* message;
  } rows[] = {
      {"", "", "call up 3", kNotFound, "call up: profile 3: no such profile"},
      {"", "", "policy delete 256", kNotFound, "profile 256: no such profile"},
      {"--network off", "", "call up 1 -4", kBringUpFailed,
       "profile 1: ipv4: the server refused to bring the call up (the server said 13: no network, "
       "or the call has no addresses)"},
      {"", "qcmapctl -q switch set 1 --ipv6 off", "call up 1", kPartlyDone,
       "profile 1: ipv4 up, ipv6 not up (the server refused to bring the call up (the server said "
       "14: "},
      {"--fail DisconnectBackHaul", "qcmapctl -q call up 1 -6", "call down 1 -6", kTearDownFailed,
       "ipv6: the server refused to take the call down"},
      {"--call-time 60000", "", "-w 0.1 call up 1 -4", kTimedOut, "profile 1: ipv4: timed out"},
      {"", "qcmapctl -q call up 1 -4", "wait 1 -w 0", kTimedOut,
       "ipv4 is connected, ipv6 is disconnected: timed out"},
      {"", "", "lan show >/dev/full", kUnexpected, "the result could not be written"},
      {"--fail GetWWANPolicyList:77", "", "call show", kRefused,
       "policy list: the server refused the request (the server said unknown code 77)"},
      {"--fail EnableMobileAP", "", "call", kNoServer,
       "the server runs but the Mobile AP is not connected (the server said 3: "},
      {"", "", "explain this", kNotFound, "'this': no such code or log line"},
      {"--fail SetRoaming", "", "switch set 0 --autoconnect on --roaming on", kPartlyDone,
       "roaming was refused, already set: autoconnect"},
      {"", "qcmapctl -q call up 1 -4", "policy delete 1", kRefused,
       "the profile's call is not down"},
      {"", "", "policy set 1 --tech any", kRefused,
       "can only be changed together with a profile number"},
      {"", "", "policy set 1 --family ipv4 --profile-v6 5", kRefused,
       "does not use that profile number"},
      {"", "qcmapctl -q vlan add ecm0 5", "vlan add 2 5", kRefused,
       "ecm0 VLAN 5: the interface already has"},
      {"", "", "map delete 5", kNotFound, "VLAN 5: no such mapping"},
      {"", "qcmapctl -q vlan add ecm0 5; qcmapctl -q map add 5 1", "vlan delete ecm0 5", kRefused,
       "the VLAN is mapped to a profile"},
      {"", "", "passthrough enable 02:00:00:00:00:01", kRefused,
       "passthrough was refused (the name has the form of a MAC address)"}};
  for (const auto& row : rows) {
    const Outcome outcome =
        ShellWithServer(row.server, std::string(row.before) + "\nexec qcmapctl " + row.command);
    ExpectTrouble(outcome, row.status, row.command, row.message);
  }
}

TEST(ToolCall, FailsWhenTheNetworkIsLostWhileItConnects) {
  const Outcome outcome = Shell(
      "connecting=$QCMAP_SOCKET.connecting\n"
      "{ once test -e $connecting; echo network off; } |\n"
      "mvq-qcmap-sim --console --call-time 5000 -- sh -c \"qcmapctl call up 1 -4 & call=\\$!\n"
      "qcmapctl -q wait 1 -4 --state connecting && : >$connecting; wait \\$call\"");
  ExpectTrouble(outcome, kBringUpFailed, "call up", "profile 1: ipv4: the call did not come up");
}

}  // namespace
