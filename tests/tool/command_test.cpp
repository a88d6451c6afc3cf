/// What commands print and how they end if the server answers.
#include <gtest/gtest.h>

#include "shell.h"

namespace {

TEST(Tool, PrintsTheDocumentedJson) {
  const struct {
    std::string command, json;
  } rows[] = {
      {"call up 1 -4", R"({"index":1,"handle":102,"ipv4":"up"})"},
      {"call up 1 -4", R"({"index":1,"handle":102,"ipv4":"already up"})"},
      {"call show 1",
       R"({"index":1,"handle":102,"ipv4":"connected","ipv6":"disconnected","half_up":true})"},
      {"address 1",
       R"({"index":1,"ipv4":["192.0.2.102","198.51.100.1","198.51.100.2"],"ipv6":null})"},
      {"call down 1", R"({"index":1,"handle":102,"ipv4":"down","ipv6":"already down"})"},
      {"call up 0 -6 -w 0", R"({"index":0,"handle":101,"ipv6":"requested"})"},
      {"wait 0 -6", R"({"index":0,"ipv6":"connected"})"},
      {"call down 0 -6", R"({"index":0,"handle":101,"ipv6":"down"})"},
      {"stats reset 1 -4", R"({"result":"reset","index":1,"family":"ipv4"})"},
      {"stats show 1",
       R"({"index":1,"family":"ipv4v6","counter64_1":0,"counter64_2":0,"counter32_1":0,"counter32_2":0})"},
      {"switch set 1 --roaming on --autoconnect off --ipv6 off",
       R"({"index":1,"autoconnect":false,"roaming":true,"ipv4":true,"ipv6":false})"},
      {"policy add --profile-v4 3 --tech 3gpp2",
       R"({"result":"added","policy":{"index":2,"handle":103,"tech":"3gpp2","family":"ipv4v6","profile_v4":3,"profile_v6":3}})"},
      {"policy set 2 --family ipv6",
       R"({"result":"set","policy":{"index":2,"handle":103,"tech":"3gpp2","family":"ipv6","profile_v4":3,"profile_v6":3}})"},
      {"policy set 2 --profile-v6 4 --tech any",
       R"({"result":"set","policy":{"index":2,"handle":103,"tech":"any","family":"ipv6","profile_v4":3,"profile_v6":4}})"},
      {"policy delete 2",
       R"({"result":"deleted","policy":{"index":2,"handle":103,"tech":"any","family":"ipv6","profile_v4":3,"profile_v6":4}})"},
      {"lan set --gateway 192.168.7.1 --lease 60",
       R"({"gateway":"192.168.7.1","netmask":"255.255.255.0","dhcp":true,"start":"192.168.7.2","end":"192.168.7.254","lease":60})"},
      {"lan set --start 192.168.7.9 --end 192.168.7.10",
       R"({"gateway":"192.168.7.1","netmask":"255.255.255.0","dhcp":true,"start":"192.168.7.9","end":"192.168.7.10","lease":60})"},
      {"lan activate", R"({"result":"activated"})"},
      {"vlan add 3 100", R"({"result":"added","interface":"eth0","vlan_id":100})"},
      {"map add 100 1", R"({"result":"added","vlan_id":100,"profile":1})"},
      {"map list", R"([{"vlan_id":100,"profile":1}])"},
      {"passthrough enable host1", R"({"enabled":true,"host":"host1","state":1})"},
      {"call up 0 -4", R"({"index":0,"handle":101,"ipv4":"up"})"},
      {"passthrough show", R"({"enabled":true,"host":"host1","state":2})"},
      {"call down 0 -4", R"({"index":0,"handle":101,"ipv4":"down"})"},
      {"status",
       R"({"server":"running","mobile_ap":"connected","profiles":[{"index":0,"handle":101,"tech":"3gpp","family":"ipv4v6","profile_v4":1,"profile_v6":1,"ipv4":{"state":"disconnected","addresses":null},"ipv6":{"state":"disconnected","addresses":null},"half_up":false},{"index":1,"handle":102,"tech":"3gpp","family":"ipv4v6","profile_v4":2,"profile_v6":2,"ipv4":{"state":"disconnected","addresses":null},"ipv6":{"state":"disconnected","addresses":null},"half_up":false}],"lan":{"gateway":"192.168.7.1","netmask":"255.255.255.0","dhcp":true,"start":"192.168.7.9","end":"192.168.7.10","lease":60},"vlans":[{"interface":"eth0","vlan_id":100,"profiles":[1]}],"passthrough":{"enabled":true,"host":"host1","state":1}})"},
      {"map delete 100", R"({"result":"deleted","vlan_id":100,"profile":1})"},
      {"vlan delete eth0 100", R"({"result":"deleted","interface":"eth0","vlan_id":100})"},
      {"vlan list", "[]"}};
  std::string script, expected;
  for (const auto& row : rows) {
    // On one line and without spaces, except inside texts.
    script += "echo '" + row.command + "' $(qcmapctl -J " + row.command +
              " | tr -d '\\n' | sed 's/\\([[{,:]\\) */\\1/g; s/  *\\([]}]\\)/\\1/g')\n";
    expected += row.command + " " + row.json + "\n";
  }
  const Outcome outcome = ShellWithServer("--profiles 2 --call-time 20 --traffic 0", script);
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(outcome.out, expected);
}

TEST(Tool, ShowsEverythingAndMarksTheProfileThatIsHalfUp) {
  const Outcome outcome = ShellWithServer(
      "--profiles 2 --call-time 0 --fail GetLANConfig:3",
      "qcmapctl -q call up 1 -6; qcmapctl -q vlan add eth0 7; qcmapctl -q map add 7 0; qcmapctl");
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "qcmapctl: status: lan: the server refused the request\n");
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
            "  not available\n"
            "VLANs\n"
            "  INTERFACE  VLAN  PROFILE\n"
            "  eth0       7     0\n"
            "Passthrough\n"
            "  disabled, state 0\n");
}

TEST(Tool, WatchesThePresentStateAndThenEventsWithHandleAndIndex) {
  const Outcome outcome = ShellWithServer(
      "--profiles 2 --call-time 10",
      "seen=$QCMAP_SOCKET.seen; :>$seen\n"
      "{ once grep -q '102.*ipv6' $seen; qcmapctl -q call up 1 -4; once grep -q wwan_conn $seen; "
      "qcmapctl -q policy delete 0; qcmapctl -q call down 0 -4; } &\n"
      "qcmapctl -J watch --count 2 --idle-timeout 20 | tee $seen; wait");
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(
      outcome.out,
      R"({"time":"TIME","event":"initial","handle":101,"index":0,"family":"ipv4","state":"disconnected"}
{"time":"TIME","event":"initial","handle":101,"index":0,"family":"ipv6","state":"disconnected"}
{"time":"TIME","event":"initial","handle":102,"index":1,"family":"ipv4","state":"disconnected"}
{"time":"TIME","event":"initial","handle":102,"index":1,"family":"ipv6","state":"disconnected"}
{"time":"TIME","event":"wwan_connected","handle":102,"index":1,"family":"ipv4","state":"connected"}
{"time":"TIME","event":"wwan_disconnected","handle":102,"index":0,"family":"ipv4","state":"disconnected"}
)");
}

TEST(Tool, LeavesTheCallAsItIsWhenInterruptedWhileWaiting) {
  const Outcome outcome = ShellWithServer(
      "--call-time 60000",
      "qcmapctl call up 1 & tool=$!; qcmapctl -q wait 1 --state connecting; kill -TERM $tool; "
      "wait $tool; echo $?; qcmapctl -q wait 1 --state connecting -w 0; echo $?");
  EXPECT_EQ(outcome.out, "143\n0\n");
}

/// How the launcher ends when it cannot run the program.
enum LauncherFailure : int { kFailed = 125, kNotExecutable = 126, kNotFound = 127 };

TEST(Launcher, EndsAsTheProgramDoesAndLeavesNothingBehind) {
  const struct {
    const char* command;
    int status;
    const char* out;
  } rows[] = {
      {"exec mvq-qcmap-sim -- sh -c 'exit 7'", 7, ""},
      {"exec mvq-qcmap-sim -- sh -c 'kill -USR1 $$'", -SIGUSR1, ""},
      {"exec mvq-qcmap-sim -- /nonexistent", kNotFound, ""},
      {"exec mvq-qcmap-sim -- /etc/passwd", kNotExecutable, ""},
      {"exec mvq-qcmap-sim --profiles 999 -- true", kFailed, ""},
      {"exec mvq-qcmap-sim -- ", kFailed, ""},
      {"echo in | mvq-qcmap-sim -- cat", 0, "in\n"},
      {"mvq-qcmap-sim -- sleep 60 & sim=$!; once pgrep -P $sim sleep >/dev/null; "
       "kill -TERM $sim; wait $sim; echo $?",
       0, "143\n"},
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
       "1\n"}};
  for (const auto& row : rows) {
    const Outcome outcome = Shell(row.command);
    EXPECT_EQ(outcome.status, row.status) << row.command << "\n" << outcome.err;
    EXPECT_EQ(outcome.out, row.out) << row.command << "\n" << outcome.err;
  }
}

}  // namespace
