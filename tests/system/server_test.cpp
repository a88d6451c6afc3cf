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
  const struct {
    const char *command, *message;
  } rows[] = {
      {"netwrk off", "unknown command 'netwrk'; did you mean 'network'?"},
      {"bogus", "unknown command 'bogus' (try help)"},
      {"network", "a word is missing (usage: network on|off)"},
      {"network maybe", "unknown switch 'maybe'; known are off, on"},
      {"network off now", "'now' is one word too many"},
      {"drop 3", "'3' is not a number from 0 to 2"},
      {"traffic 0 5 1 1", "unknown family '5'; known are 4, 6"},
      {"indicate 0x25 4294967296", "'4294967296' is not a number from 0 to 4294967295"},
      {"raw 0x25 123", "'3' is not a byte"},
      {"fail ConectBackHaul", "unknown request 'ConectBackHaul'; did you mean 'ConnectBackHaul'?"},
      {"late WWAN_STATUS_IND 5", "unknown request 'WWAN_STATUS_IND'"},
      {"lose WWAN_STATUS", "did you mean 'WWAN_STATUS_IND'?"},
      {"late all 0", "'0' is not a number from 1 to 3600000"},
      {"advance 5hr", "unknown unit 'hr'; did you mean 'h'?"},
      {"advance 5", "unknown unit '(none)'; known are ms, s, min, h"},
      {"advance 5h", "start the server with --clock manual"},
  };
  Start({"--console"});
  const std::string before = Control("show");
  for (const auto& [command, message] : rows) {
    const std::string answer = Control(command, sim::kIsWrong);
    EXPECT_NE(answer.find(message), std::string::npos) << command << ": " << answer;
  }
  EXPECT_NE(Control(std::string(5000, 'x'), sim::kIsWrong).find("too long"), std::string::npos);
  EXPECT_EQ(Control("show"), before);
  EXPECT_EQ(Control("heal"), "");
  server_->Write("\nsleep forever\n");
  EXPECT_TRUE(server_->WaitForOutput("console: line 2: 'forever' is not a number"));
}

TEST_F(Server, RefusesWhatAModemRefuses) {
  Start({"--call-time", "600000", "--console", "--profiles", "49", "--fail", "ActivateLAN:77:1"});
  QCMAP_Client client(nullptr);
  constexpr auto kCall6 = QCMAP_MSGR_WWAN_CALL_TYPE_V6_V01;
  qcmap_msgr_net_policy_info_v01 policy4{};
  policy4.tech_pref = QCMAP_MSGR_TECH_PREF_3GPP_V01;
  policy4.ip_family = QCMAP_MSGR_IP_FAMILY_V4_V01;
  policy4.v4_profile_id[0] = policy4.v4_profile_id[1] = 24;
  qcmap_msgr_net_policy_info_v01 wrong_policy4 = policy4;
  wrong_policy4.v4_profile_id[1] = 25;
  qcmap_msgr_vlan_config_v01 vlan{"eth0", 7, {}}, wrong_vlan{"eth0", 4095, {}};
  qcmap_msgr_lan_config_v01 lan{};
  lan.gw_ip = 0x0A000001;
  lan.netmask = 0xFFFFFF00;
  lan.enable_dhcp = 1;
  lan.dhcp_start_ip = 0x0A000002;
  lan.dhcp_end_ip = 0x0A0000FE;
  qcmap_msgr_lan_config_v01 lan_with_gateway_in_range = lan;
  lan_with_gateway_in_range.dhcp_start_ip = lan.gw_ip;
  qmi_error_type_v01 e{};
  const auto expect = [&e](bool granted, qmi_error_type_v01 error, int line = __builtin_LINE()) {
    EXPECT_EQ(granted, error == QMI_ERR_NONE_V01) << "line " << line;
    EXPECT_EQ(e, error) << "line " << line;
  };
  expect(client.ActivateLAN(&e), qmi_error_type_v01{77});
  expect(client.ActivateLAN(&e), QMI_ERR_NONE_V01);
  expect(client.SetWWANProfileHandlePreference(100, &e), QMI_ERR_INVALID_HANDLE_V01);
  expect(client.SetWWANProfileHandlePreference(149, &e), QMI_ERR_NONE_V01);
  expect(client.CreateWWANPolicy(wrong_policy4, &e), QMI_ERR_INVALID_ARG_V01);
  expect(client.CreateWWANPolicy(policy4, &e), QMI_ERR_NONE_V01);
  expect(client.CreateWWANPolicy(policy4, &e), QMI_ERR_NO_MEMORY_IN_LIST_V01);
  Console("network off");
  expect(client.ConnectBackHaul(kCall4, &e), QMI_ERR_NO_NETWORK_FOUND_V01);
  Console("network on\nroaming on");
  expect(client.ConnectBackHaul(kCall4, &e), QMI_ERR_CALL_FAILED_V01);
  expect(client.SetRoaming(1, &e), QMI_ERR_NONE_V01);
  expect(client.DisableIPV6(&e), QMI_ERR_NONE_V01);
  expect(client.ConnectBackHaul(kCall6, &e), QMI_ERR_CALL_FAILED_V01);
  expect(client.ConnectBackHaul(kCall4, &e), QMI_ERR_NONE_V01);
  expect(client.ConnectBackHaul(kCall4, &e), QMI_ERR_NO_EFFECT_V01);
  expect(client.DeleteWWANPolicy(&e), QMI_ERR_INCOMPATIBLE_STATE_V01);
  expect(client.DisconnectBackHaul(kCall4, &e), QMI_ERR_NONE_V01);
  expect(client.DisconnectBackHaul(kCall4, &e), QMI_ERR_NO_EFFECT_V01);
  expect(client.SetWWANProfileHandlePreference(150, &e), QMI_ERR_NONE_V01);
  Console("roaming off");
  expect(client.ConnectBackHaul(kCall6, &e), QMI_ERR_CALL_FAILED_V01);
  expect(client.DeleteWWANPolicy(&e), QMI_ERR_NONE_V01);
  expect(client.GetWWANPolicy(kAnything, &e), QMI_ERR_INVALID_HANDLE_V01);
  expect(client.DeleteVLANConfig(vlan, &e), QMI_ERR_INVALID_ARG_V01);
  expect(client.SetVLANConfig(wrong_vlan, &e, kAnything), QMI_ERR_INVALID_ARG_V01);
  expect(client.SetVLANConfig(vlan, &e, kAnything), QMI_ERR_NONE_V01);
  expect(client.AddPDNToVLANMapping(7, 150, &e), QMI_ERR_INVALID_HANDLE_V01);
  expect(client.AddPDNToVLANMapping(7, 101, &e), QMI_ERR_NONE_V01);
  expect(client.AddPDNToVLANMapping(7, 102, &e), QMI_ERR_INCOMPATIBLE_STATE_V01);
  expect(client.DeletePDNToVLANMapping(7, 102, &e), QMI_ERR_INVALID_ARG_V01);
  expect(client.SetLANConfig(lan, &e), QMI_ERR_NONE_V01);
  expect(client.SetLANConfig(lan_with_gateway_in_range, &e), QMI_ERR_INVALID_ARG_V01);
}

}  // namespace
