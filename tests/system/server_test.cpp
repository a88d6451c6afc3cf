/// The server as a program: its options, its socket, its console, what it refuses.
#include <sys/stat.h>

#include <fstream>

#include "every_request.h"
#include "simulated_server.h"

namespace {

using Server = SimulatedServer;

TEST_F(Server, RefusesWhatBelongsToAnotherUser) {
  constexpr uid_t kNobody = 65534;
  const std::string made = directory_ + "/made";
  Start();
  server_->Signal(SIGKILL);
  EXPECT_EQ(server_->Wait(), -SIGKILL);
  if (::chown(path_.c_str(), kNobody, kNobody) != 0) GTEST_SKIP() << "only root can give it away";
  ExpectEnd(path_ + ": is another user's socket");
  EXPECT_EQ(::chown(made.c_str(), kNobody, kNobody), 0);
  ExpectEnd(made + ": the directory is another user's");
}

TEST_F(Server, LeavesNothingBehindAndNeverTakesALivingServersSocket) {
  // The last server starts on what the killed one has left, and does not own the directory.
  for (const int signal : {SIGTERM, SIGKILL, SIGINT}) {
    Start({"--log", log_});
    Control("echo here");
    ExpectEnd(path_ + ": a server is already running", {"--log", log_});
    EXPECT_NE(Record().find("here"), std::string::npos) << "the living server's record";
    std::filesystem::remove(path_ + ".lock");
    ExpectEnd(path_ + ": a server is already running");
    EXPECT_NE(QCMAP_Client(nullptr).mobile_ap_handle, 0u);
    server_->Signal(signal);
    EXPECT_EQ(server_->Wait(), signal == SIGKILL ? -SIGKILL : 0);
    EXPECT_EQ(std::filesystem::exists(path_), signal == SIGKILL);
    EXPECT_EQ(std::filesystem::exists(directory_ + "/made"), signal != SIGTERM);
  }
  EXPECT_TRUE(std::filesystem::is_empty(directory_ + "/made"));
}

TEST_F(Server, SleepsWhileNothingHappens) {
  Start({"--console"});
  const QCMAP_Client client(nullptr);
  Console("echo ready");
  const size_t before = Status("voluntary_ctxt_switches:");
  std::this_thread::sleep_for(std::chrono::milliseconds(300));
  EXPECT_LT(Status("voluntary_ctxt_switches:") - before, 5u) << "how often it woke up";
}

TEST_F(Server, RefusesWhatExceedsItsLists) {
  Start({"--profiles", "49"});
  QCMAP_Client client(nullptr);
  qmi_error_type_v01 error{};
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
  EXPECT_NE(Control("show").find("\nvlan 2001 on eth0\nvlan 2 mapped to"), std::string::npos)
      << "an answer in several parts";
  EXPECT_FALSE(client.SetVLANConfig(vlan, &error, kAnything));
  EXPECT_EQ(error, QMI_ERR_NO_MEMORY_IN_LIST_V01);
  EXPECT_FALSE(client.AddPDNToVLANMapping(2000, 101, &error));
  EXPECT_EQ(error, QMI_ERR_NO_MEMORY_IN_LIST_V01);
}

}  // namespace
