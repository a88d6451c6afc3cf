/// The server as a program: its options, its socket, its console, what it refuses.
#include <sys/stat.h>

#include <fstream>

#include "every_request.h"
#include "simulated_server.h"

namespace {

using Server = SimulatedServer;

TEST_F(Server, ReportsWhatIsWrongWithItsOptions) {
  ExpectEnd({"--bogus"}, 2, "--bogus");
  ExpectEnd({"--profiles", "51"}, 2, "--profiles");
  ExpectEnd({"--call-time", "soon"}, 2, "--call-time");
  ExpectEnd({"--network", "maybe"}, 2, "--network");
  ExpectEnd({"--fail", "Connect"}, 2, "unknown request 'Connect'");
  ExpectEnd({"--fail", "ActivateLAN:3:x"}, 2, "'x' is not a number from 1");
  std::ofstream(directory_ + "/wrong") << "# comment\nnetwrk off\n";
  ExpectEnd({"--scenario", directory_ + "/wrong"}, 2, "/wrong: line 2: unknown command 'netwrk'");
  ExpectEnd({"--scenario", directory_ + "/none"}, 1, "No such file");
}

TEST_F(Server, RefusesAPlaceThatIsNotSafe) {
  namespace fs = std::filesystem;
  for (const char* name : {"/open", "/own"}) fs::create_directory(directory_ + name);
  ::chmod((directory_ + "/open").c_str(), 0770);
  fs::create_directory_symlink(directory_ + "/own", directory_ + "/link");
  std::ofstream file(directory_ + "/own/file");
  ExpectEnd({"--socket", directory_ + "/open/s"}, 1, "others can write");
  ExpectEnd({"--socket", directory_ + "/link//s"}, 1, "cannot open the directory");
  ExpectEnd({"--socket", directory_ + "/none/none/s"}, 1, "cannot open the directory");
  ExpectEnd({"--socket", directory_ + "/own/file"}, 1, "not a socket");
  ExpectEnd({"--socket", directory_ + "/own/"}, 1, "is a directory");
  ExpectEnd({"--socket", directory_ + "/own/" + std::string(100, 'x')}, 1, "characters");
}

TEST_F(Server, LeavesNothingBehindAndNeverTakesALivingServersSocket) {
  // The last server starts on what the killed one has left, and does not own the directory.
  for (const int signal : {SIGTERM, SIGKILL, SIGINT}) {
    Start();
    ExpectEnd({}, 1, "already running");
    std::filesystem::remove(path_ + ".lock");
    ExpectEnd({}, 1, "already running");
    EXPECT_NE(QCMAP_Client(nullptr).mobile_ap_handle, 0u);
    server_->Signal(signal);
    EXPECT_EQ(server_->Wait(), signal == SIGKILL ? -SIGKILL : 0);
    EXPECT_EQ(std::filesystem::exists(path_), signal == SIGKILL);
    EXPECT_EQ(std::filesystem::exists(directory_ + "/made"), signal != SIGTERM);
  }
  EXPECT_TRUE(std::filesystem::is_empty(directory_ + "/made"));
}

TEST_F(Server, SaysWhatIsWrongWithACommandAndChangesNothing) {
  Start({"--console", "--profiles", "0"});
  const std::string before = Control("show");
  EXPECT_EQ(
      Control("advance 5h", sim::kIsWrong),
      "time is the machine's; start the server with --clock manual (usage: advance DURATION)");
  EXPECT_EQ(Control("drop 0", sim::kIsWrong), "there is no profile (usage: drop PROFILE [4|6])");
  EXPECT_EQ(Control(std::string(5000, 'x'), sim::kIsWrong), "the command is too long");
  EXPECT_EQ(Control("show"), before);
  server_->Write("\nsleep forever\n");
  EXPECT_TRUE(server_->WaitForOutput(
      "console: line 2: 'forever' is not a number from 0 to 86400000 (usage: sleep MILLISECONDS)\n"));
}

TEST_F(Server, RefusesWhatExceedsItsLists) {
  Start({"--profiles", "49", "--fail", "ActivateLAN:77:1"});
  QCMAP_Client client(nullptr);
  qmi_error_type_v01 error{};
  EXPECT_FALSE(client.ActivateLAN(&error));
  EXPECT_EQ(error, qmi_error_type_v01{77});
  EXPECT_TRUE(client.ActivateLAN(&error));
  EXPECT_TRUE(client.CreateWWANPolicy(kPolicy, &error));
  EXPECT_FALSE(client.CreateWWANPolicy(kPolicy, &error));
  EXPECT_EQ(error, QMI_ERR_NO_MEMORY_IN_LIST_V01);
  qcmap_msgr_vlan_config_v01 vlan{"eth0", 2, {}};
  for (size_t i = 0; i < QCMAP_MSGR_MAX_VLAN_ENTRIES_V01; ++i, ++vlan.vlan_id) {
    EXPECT_TRUE(client.SetVLANConfig(vlan, &error, kAnything));
    if (i < QCMAP_MSGR_MAX_MAPPINGS_V01) {
      EXPECT_TRUE(client.AddPDNToVLANMapping(vlan.vlan_id, 101, &error));
    }
  }
  EXPECT_FALSE(client.SetVLANConfig(vlan, &error, kAnything));
  EXPECT_EQ(error, QMI_ERR_NO_MEMORY_IN_LIST_V01);
  EXPECT_FALSE(client.AddPDNToVLANMapping(2000, 101, &error));
  EXPECT_EQ(error, QMI_ERR_NO_MEMORY_IN_LIST_V01);
}

}  // namespace
