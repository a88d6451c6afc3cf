/// Traces, records and replays.
#include <gtest/gtest.h>

#include "../tool/shell.h"

namespace {

constexpr char kRecordStory[] =
    "cd \"${0%/*}\"\n"
    "mvq-qcmap-trace --record story -- trace_program story >out 2>log || test $? = 3 || exit 9\n";

TEST(Trace, HasTheSymbolsOfTheClient) {
  const Outcome outcome = Shell(
      "cd \"${0%/*}\"\nnames() { nm -D --defined-only -f just-symbols \"$1\" | grep QCMAP_Client | "
      "sort; }\nnames " MVQ_QCMAP_CLIENT " >1; names " MVQ_QCMAP_TRACE " >2; diff 1 2");
  EXPECT_EQ(outcome.out, "");
  EXPECT_EQ(outcome.status, 0) << outcome.err;
}

TEST(Trace, ChangesNothingOfAProgramThatUsesTheClientOnly) {
  const Outcome plain = ShellWithServer("", "trace_program requests");
  const Outcome traced =
      ShellWithServer("", "mvq-qcmap-trace --output $0.1 -- trace_program requests");
  EXPECT_EQ(plain.out, traced.out);
  EXPECT_NE(plain.out, "");
  EXPECT_EQ(traced.err, "");
  const char* const killed = "exec mvq-qcmap-trace -- sh -c 'trace_program requests; kill -9 $$'";
  EXPECT_EQ(ShellWithServer("", killed).status, -9);
}

TEST(Trace, ShowsCallsAndIndications) {
  const std::string program = " -- trace_program requests 2>&1 >/dev/null | cut -d' ' -f2,5-";
  EXPECT_NE(ShellWithServer("--call-time 1", "mvq-qcmap-trace -- qcmapctl call up 1 -4 2>&1")
                .out.find(" indication{id=BRING_UP_WWAN_IND,"),
            std::string::npos);
  const Outcome chosen =
      ShellWithServer("--fail SetVLANConfig:26",
                      "mvq-qcmap-trace --only SetVLANConfig,GetWWANStatistics" + program);
  EXPECT_EQ(Replace(chosen.out, "\\[\\d+\\] ", ""),
            "GetWWANStatistics{family=V4} = ok {statistics={bytes=[0,0],packets=[0,0]}}\n"
            "SetVLANConfig{config={iface_name=\"eth0\",vlan_id=8}} = no effect (26)\n");
  const Outcome json = ShellWithServer(
      "",
      "mvq-qcmap-trace --json --only AddPDNToVLANMapping -- trace_program requests 2>&1 >/dev/null");
  EXPECT_EQ(
      Replace(json.out, "\"(thread|took_us|at_us)\":\\d+", "\"$1\":0"),
      "{\"time\":\"TIME\",\"at_us\":0,\"thread\":0,\"client\":1,"
      "\"name\":\"AddPDNToVLANMapping\",\"arguments\":{\"vlan_id\":7,\"profile_handle\":103},"
      "\"took_us\":0,\"returned\":true,\"ok\":false,\"error\":\"INVALID_ARG\",\"answer\":{},\"after\":0}\n");
}

TEST(Trace, StaysOutOfTheWay) {
  const struct {
    const char *command, *err;
    int status;
  } rows[] = {
      {"mvq-qcmap-trace -- true", "mvq-qcmap-trace: no process used the library\n", 0},
      {"mvq-qcmap-trace -- /none 2>&1 | grep -c none", "", 0},
      {"echo kept >$0.1; mvq-qcmap-trace --output $0.1 --record $0.1 -- true; cat $0.1 >&2",
       "--record and --output need files of their own\nkept\n", 0},
      {"mvq-qcmap-trace --only None -- true", "--only: None not in {ActivateLAN,", 125},
      {"test \"$(mvq-qcmap-trace -- printf '<%s>' '[a,b]')\" = '<[a,b]>'", "", 0},
      {"mvq-qcmap-trace --record $0.1 -- sh -c 'trap \"exit 3\" USR2; kill -USR2 $PPID; "
       "trace_program requests >/dev/null; sleep 20 & wait'",
       "", 3},
      {"mvq-qcmap-trace --output /dev/full -- trace_program requests >/dev/null",
       "mvq-qcmap-trace: the trace ends here: No space left on device\n", 0},
      {"mvq-qcmap-trace --record /dev/full -- trace_program requests >/dev/null",
       "mvq-qcmap-trace: the recording ends here: No space left on device\n", 0},
      {"mvq-qcmap-trace --json -- trace_plugin " MVQ_QCMAP_LIBRARY " 2>&1 | grep -c ActivateLAN",
       "", 0},
      {"mvq-qcmap-trace --json -- trace_program requests 2>&1 >/dev/null | true", "", 0},
      {"LD_PRELOAD=" MVQ_QCMAP_THROWING " mvq-qcmap-trace -- trace_program throw",
       " ActivateLAN{} = exception\n", 7},
  };
  for (const auto& row : rows) {
    const Outcome outcome = ShellWithServer("", row.command);
    EXPECT_EQ(outcome.status, row.status) << row.command << "\n" << outcome.err;
    EXPECT_NE(outcome.err.find(row.err), std::string::npos) << row.command << "\n" << outcome.err;
  }
}

// A callback and the thread whose request has caused it may log in any order when it is recorded.
// All replays have the same order.
TEST(Replay, GivesTheSameEventsLogAndStatus) {
  const Outcome outcome = ShellWithServer(
      "--call-time 100",
      std::string(kRecordStory) +
          "grep laptop story && exit 1\n"
          "clean() { sed 's/pid \\[[0-9]*\\]//' \"$1\" >\"$2\"; }\n"
          "clean log recorded; sort -o recorded recorded; rm -f first\n"
          "for how in --fast --fast --fast ''; do\n"
          "  mvq-qcmap-sim --replay story $how -- trace_program story >out2 2>log; test $? = 3 || exit\n"
          "  clean log played; cp -n played first; cmp out out2 && diff first played || exit 1\n"
          "  sort played | diff recorded - || exit 1\n"
          "done");
  EXPECT_EQ(outcome.status, 0) << outcome.out << outcome.err;
}

TEST(Threads, AreTracedAndReplayed) {
  const Outcome threads =
      ShellWithServer("--call-time 1",
                      "mvq-qcmap-trace --record $0.1 -- trace_program threads && "
                      "mvq-qcmap-sim --replay $0.1 --fast -- trace_program threads");
  EXPECT_EQ(threads.status, 0) << threads.err;
}

TEST(Replay, ShowsACallThatWasNotRecorded) {
  const Outcome outcome = ShellWithServer(
      "--call-time 20",
      std::string(kRecordStory) + "mvq-qcmap-sim --replay story --fast -- qcmapctl lan activate");
  EXPECT_EQ(outcome.status, 1);
  EXPECT_NE(
      outcome.err.find(
          "recorded: SetVLANConfig{\"config\":{\"iface_name\":\"eth0\",\"vlan_id\":100}} in line"),
      std::string::npos)
      << outcome.err;
  EXPECT_NE(outcome.err.find("asked: ActivateLAN{}"), std::string::npos) << outcome.err;
}

TEST(Replay, RefusesWhatIsNotAWholeRecording) {
  const struct {
    const char *damage, *reason;
  } rows[] = {
      {"cat story", ""},
      {"head -n 5 story", "damaged:6: the recording is cut off here\n"},
      {"head -c 1100 story", "damaged:6: the recording is cut off here\n"},
      {"sed '4s/true/false/' story", "damaged:4: the line is damaged\n"},
      {"sed 3d story", "damaged:3: the line is damaged\n"},
      {"sed '1s/:3/:1/' story", "damaged:1: version 1 is unknown\n"},
      {"echo hello", "damaged:1: this is not a recording\n"},
      {"true", "damaged:1: the recording is cut off here\n"},
  };
  std::string script = kRecordStory, expected;
  for (const auto& row : rows) {
    script += std::string(row.damage) +
              " >damaged; mvq-qcmap-trace --replay damaged --fast -- trace_program story 2>&1 "
              ">/dev/null | sed -n 's/mvq-qcmap-trace: //p'\n";
    expected += row.reason;
  }
  EXPECT_EQ(ShellWithServer("--call-time 20", script).out, expected);
}

}  // namespace
