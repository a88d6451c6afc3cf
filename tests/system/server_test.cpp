/// The server as a program: its options, its socket, its console, what it refuses.
#include <sys/stat.h>

#include <fstream>

#include "every_request.h"
#include "simulated_server.h"

namespace {

using Server = SimulatedServer;

TEST_F(Server, TellsWhatIsWrongWithItsOptions) {
  ExpectEnd({"--bogus"}, 2, "--bogus");
  ExpectEnd({"--profiles", "51"}, 2, "--profiles");
  ExpectEnd({"--call-time", "soon"}, 2, "--call-time");
  ExpectEnd({"--network", "maybe"}, 2, "--network");
  ExpectEnd({"--fail", "Connect"}, 2, "no request 'Connect'");
  ExpectEnd({"--fail", "ActivateLAN:3:x"}, 2, "not a number above 0");
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

TEST_F(Server, TellsWhatIsWrongWithAConsoleLine) {
  Start({"--console"});
  const std::pair<const char*, const char*> rows[] = {
      {"bogus", "unknown command 'bogus'"},
      {"network maybe", "usage: network on|off"},
      {"drop 3", "there is no such profile"},
      {"traffic 0 5 1 1", "usage: traffic"},
      {"indicate 0x25 4294967296", "usage: indicate"},
      {"raw 0x25 123", "usage: raw"},
      {"sleep forever", "usage: sleep"},
      {"fail Nothing", "there is no request 'Nothing'"}};
  int line = 0;
  for (const auto& [command, message] : rows) {
    server_->Write(std::string(command) + "\n");
    EXPECT_TRUE(server_->WaitForOutput("line " + std::to_string(++line) + ": " + message))
        << server_->output();
  }
  server_->Write("sleep 1\nshow\nquit\n");
  EXPECT_EQ(server_->Wait(), 0);
  EXPECT_NE(server_->output().find("network on"), std::string::npos) << "changed nothing";
}

TEST_F(Server, FailsEachRequestByItsNameWithTheErrorAskedFor) {
  std::vector<std::string> options;
  for (const Request& request : kEveryRequest)
    options.insert(options.end(), {"--fail", std::string(request.name) + ":77:1"});
  Start(options);
  QCMAP_Client client(nullptr);
  for (const Request& request : kEveryRequest) {
    qmi_error_type_v01 error{};
    EXPECT_FALSE(request.send(client, &error)) << request.name;
    EXPECT_EQ(error, 77) << request.name;
    request.send(client, &error);
    EXPECT_NE(error, 77) << request.name << " fails only once";
  }
}

TEST_F(Server, RefusesWhatAModemRefuses) {
  Start({"--call-time", "600000", "--console", "--profiles", "49"});
  QCMAP_Client client(nullptr);
  constexpr auto kCall6 = QCMAP_MSGR_WWAN_CALL_TYPE_V6_V01;
  const auto policy = [](int family, uint8_t v4, uint8_t v6) {
    return qcmap_msgr_net_policy_info_v01{
        1, static_cast<qcmap_msgr_ip_family_enum_v01>(family), {v4, v4}, {v6, v6}};
  };
  const auto lan = [](uint32_t start) {
    return qcmap_msgr_lan_config_v01{0x0A000001, 0xFFFFFF00, 1, start, 0x0A0000FE, 60};
  };
  qmi_error_type_v01 e{};
  const auto expect = [&e](bool granted, int error, int line = __builtin_LINE()) {
    EXPECT_EQ(granted, error == 0) << "line " << line;
    EXPECT_EQ(e, error) << "line " << line;
  };
  expect(client.SetWWANProfileHandlePreference(100, &e), 9);
  expect(client.SetWWANProfileHandlePreference(149, &e), 0);
  expect(client.CreateWWANPolicy(policy(4, 25, 0), &e), 48);
  expect(client.CreateWWANPolicy(policy(4, 24, 0), &e), 0);
  expect(client.CreateWWANPolicy(policy(6, 0, 1), &e), 51);
  Console("network off");
  expect(client.ConnectBackHaul(kCall4, &e), 13);
  Console("network on\nroaming on");
  expect(client.ConnectBackHaul(kCall4, &e), 14);
  expect(client.SetRoaming(1, &e), 0);
  expect(client.DisableIPV6(&e), 0);
  expect(client.ConnectBackHaul(kCall6, &e), 14);
  expect(client.ConnectBackHaul(kCall4, &e), 0);
  expect(client.ConnectBackHaul(kCall4, &e), 26);
  expect(client.DeleteWWANPolicy(&e), 90);
  expect(client.DisconnectBackHaul(kCall4, &e), 0);
  expect(client.DisconnectBackHaul(kCall4, &e), 26);
  expect(client.SetWWANProfileHandlePreference(150, &e), 0);
  Console("roaming off");
  expect(client.ConnectBackHaul(kCall6, &e), 14);
  expect(client.DeleteWWANPolicy(&e), 0);
  expect(client.GetWWANPolicy(kAnything, &e), 9);
  expect(client.DeleteVLANConfig({"eth0", 7, {}}, &e), 48);
  expect(client.SetVLANConfig({"eth0", 4095, {}}, &e, kAnything), 48);
  expect(client.SetVLANConfig({"eth0", 7, {}}, &e, kAnything), 0);
  expect(client.AddPDNToVLANMapping(7, 150, &e), 9);
  expect(client.AddPDNToVLANMapping(7, 101, &e), 0);
  expect(client.AddPDNToVLANMapping(7, 102, &e), 90);
  expect(client.DeletePDNToVLANMapping(7, 102, &e), 48);
  expect(client.SetLANConfig(lan(0x0A000002), &e), 0);
  expect(client.SetLANConfig(lan(0x0A000001), &e), 48);
}

}  // namespace
