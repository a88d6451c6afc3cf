/// What commands print and how they end if the server answers.
#include <gtest/gtest.h>

#include "shell.h"

namespace {

TEST(Tool, ShowsEverythingAndMarksTheProfileThatIsHalfUp) {
  const Outcome outcome = ShellWithServer(
      "--profiles 2 --call-time 0 --fail GetLANConfig:48",
      "qcmapctl -q call up 1 -6; qcmapctl -q vlan add eth0 7; qcmapctl -q map add 7 0; qcmapctl");
  EXPECT_EQ(outcome.status, 7);
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(outcome.out,
            "Server     running\n"
            "Mobile AP  connected\n\n"
            "Profile 0  handle 101, 3gpp, ipv4v6, profile numbers 1 and 1\n"
            "  ipv4  disconnected\n"
            "  ipv6  disconnected\n"
            "Profile 1  handle 102, 3gpp, ipv4v6, profile numbers 2 and 2  HALF UP\n"
            "  ipv4  disconnected\n"
            "  ipv6  connected  2001:db8::66 2001:db8:53::1 2001:db8:53::2\n\n"
            "LAN\n"
            "  not available: the server refused the request (the server said 48: the server\n"
            "    does not accept an argument)\n"
            "VLANs\n"
            "  INTERFACE  VLAN-ID  PROFILES\n"
            "  eth0       7        0\n"
            "Passthrough\n"
            "  enabled  off\n"
            "  host     none\n"
            "  state    off\n");
}

TEST(Tool, LeavesTheCallAsItIsWhenInterruptedWhileWaiting) {
  const Outcome outcome = ShellWithServer(
      "--call-time 60000",
      "qcmapctl call up 1 & tool=$!; qcmapctl -q wait 1 --state connecting; kill -TERM $tool; "
      "wait $tool; echo $?; qcmapctl -q wait 1 --state connecting -w 0; echo $?");
  EXPECT_EQ(outcome.out, "143\n0\n");
}

struct Row {
  const char* command;
  int status;
  const char* out;
};
void Expect(const Row& row) {
  const Outcome outcome = Shell(row.command);
  EXPECT_EQ(outcome.status, row.status) << row.command << "\n" << outcome.err;
  EXPECT_EQ(outcome.out, row.out) << row.command << "\n" << outcome.err;
}

/// How the launcher ends when it cannot run the program.
enum LauncherFailure : int { kFailed = 125, kNotExecutable = 126, kNotFound = 127 };

TEST(Launcher, EndsAsTheProgramDoesAndLeavesNothingBehind) {
  const Row rows[] = {
      {"exec mvq-qcmap-sim -- sh -c 'exit 7' <&- >&- 2>&-", 7, ""},
      {"exec mvq-qcmap-sim -- sh -c 'kill -USR1 $$'", -SIGUSR1, ""},
      {"exec mvq-qcmap-sim -- /nonexistent", kNotFound, ""},
      {"exec mvq-qcmap-sim -- /etc/passwd", kNotExecutable, ""},
      {"exec mvq-qcmap-sim --profiles 999 -- true", kFailed, ""},
      {"cd ${0%/*}; cp $(command -v mvq-qcmap-sim) .; ln -s /bin/sh QCMAP_ConnectionManager\n"
       "timeout -s KILL 20 ./mvq-qcmap-sim -c 'exec sleep 60 >&-' -- true",
       kFailed, ""},
      {"exec mvq-qcmap-sim -- ", kFailed, ""},
      {"echo in | mvq-qcmap-sim -- cat", 0, "in\n"},
      {"mvq-qcmap-sim -- sleep 60 & sim=$!; once pgrep -P $sim sleep >/dev/null; "
       "kill -TERM $sim; wait $sim; echo $?",
       0, "143\n"},
      {"mkfifo $0.fifo; mvq-qcmap-sim --scenario $0.fifo -- true & sim=$!\n"
       "server=$(once pgrep -P $sim QCMAP); kill -INT $sim; kill -TERM $sim; wait $sim; "
       "echo $?; kill -0 $server 2>&-; echo $?",
       0, "143\n1\n"},
      {"folder=$(mvq-qcmap-sim -- sh -c 'dirname $QCMAP_SOCKET'); test -e $folder; echo $?", 0,
       "1\n"},
      {"seen=$QCMAP_SOCKET.seen\n"
       "mvq-qcmap-sim -- sh -c 'trap \"\" TERM; echo program=$$ server=$(pgrep -P $PPID QCMAP) "
       "socket=$QCMAP_SOCKET >$0.new; mv $0.new $0; exec sleep 60' $seen & sim=$!\n"
       "once test -e $seen; . $seen; kill -KILL $sim\n"
       "once sh -c '! grep -qs State:.[^Z] /proc/$1/status /proc/$2/status && ! test -e $3' - "
       "$program $server ${socket%/*}; echo gone",
       0, "gone\n"},
      {"server=$(mvq-qcmap-sim -- sh -c 'pgrep -P $PPID QCMAP'); kill -0 $server 2>&-; echo $?", 0,
       "1\n"},
      {"mvq-qcmap-sim 2>&1 | head -n 1", 0, "mvq-qcmap-sim: no program is given\n"},
      {"mvq-qcmap-sim -V | cut -d' ' -f1", 0, "mvq-qcmap-sim\n"},
      {"TMPDIR= mvq-qcmap-sim -- sh -c 'echo ${QCMAP_SOCKET%-*}'", 0, "/tmp/qcmap-sim\n"},
      {"TMPDIR=${0%/*} mvq-qcmap-sim -- sh -c 'echo ${QCMAP_SOCKET#$TMPDIR}' | cut -c1-10", 0,
       "/qcmap-sim\n"},
      {"echo echo first >$0.txt; mvq-qcmap-sim --scenario $0.txt -- true", 0, ""},
      {"echo echo hello | mvq-qcmap-sim --console -- "
       "timeout 20 sh -c 'until grep -qs hello $0; do sleep 0.01; done' ${0%/*}/err",
       0, ""}};
  for (const Row& row : rows) Expect(row);
}

TEST(Control, SendsCommandsAndReportsWhatIsWrong) {
  constexpr int kWrong = 2, kNoServer = 8;
  const Row rows[] = {
      {"mvq-qcmap-sim ctl", kWrong, ""},
      {"mvq-qcmap-sim ctl show", kNoServer, ""},
      {"QCMAP_CONTROL=$(printf %0200d 0) mvq-qcmap-sim ctl show", kNoServer, ""},
      {"echo echo one | mvq-qcmap-sim -- mvq-qcmap-sim ctl -", 0, "one\n"},
      {"printf 'echo one\n\nshout\necho two\n' | mvq-qcmap-sim -- mvq-qcmap-sim ctl -", kWrong,
       "one\n"},
      {"printf 'quit\nshow\n' | mvq-qcmap-sim -- mvq-qcmap-sim ctl -", kNoServer, ""},
      {"mvq-qcmap-sim -- sh -c 'mvq-qcmap-sim ctl sleep 60000 & ctl=$!; mvq-qcmap-sim ctl quit; "
       "wait $ctl'",
       kNoServer, ""}};
  for (const Row& row : rows) Expect(row);
}

}  // namespace
