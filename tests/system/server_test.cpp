/// The server as a program: its options, its socket, its console, what it refuses.
#include <sys/stat.h>

#include <fstream>

#include "every_request.h"
#include "simulated_server.h"

namespace {

using Server = SimulatedServer;

TEST_F(Server, TellsWhatIsWrongWithItsOptions) {
  const std::pair<std::vector<std::string>, const char*> rows[] = {
      {{"--bogus"}, "--bogus"},
      {{"stray"}, "stray"},
      {{"--profiles", "51"}, "--profiles"},
      {{"--profiles", "-1"}, "--profiles"},
      {{"--call-time", "soon"}, "--call-time"},
      {{"--network", "maybe"}, "--network"},
      {{"--fail", "Connect"}, "no request 'Connect'"},
      {{"--fail", "ActivateLAN:0"}, "not a number above 0"},
      {{"--fail", "ActivateLAN:3:x"}, "not a number above 0"},
      {{"--socket"}, "--socket"},
  };
  for (const auto& [options, message] : rows) {
    const auto server = Run(options);
    EXPECT_EQ(server->Wait(), 2) << message;
    EXPECT_NE(server->output().find(message), std::string::npos) << server->output();
  }
}

TEST_F(Server, LeavesNothingBehindAndNeverTakesALivingServersSocket) {
  // The last server starts on what the killed one has left, and does not own the directory.
  for (const int signal : {SIGTERM, SIGKILL, SIGINT}) {
    Start();
    const auto second = Run({});
    EXPECT_EQ(second->Wait(), 1);
    EXPECT_NE(second->output().find("already running"), std::string::npos) << second->output();
    EXPECT_NE(QCMAP_Client(nullptr).mobile_ap_handle, 0u);
    server_->Signal(signal);
    EXPECT_EQ(server_->Wait(), signal == SIGKILL ? -SIGKILL : 0);
    EXPECT_EQ(std::filesystem::exists(path_), signal == SIGKILL);
    EXPECT_EQ(std::filesystem::exists(directory_ + "/made"), signal != SIGTERM);
  }
  EXPECT_TRUE(std::filesystem::is_empty(directory_ + "/made"));
}

TEST_F(Server, RefusesAPlaceThatIsNotSafe) {
  namespace fs = std::filesystem;
  for (const char* name : {"open", "own"}) fs::create_directory(directory_ + "/" + name);
  ::chmod((directory_ + "/own").c_str(), 0700);
  ::chmod((directory_ + "/open").c_str(), 0770);
  fs::create_directory_symlink(directory_ + "/own", directory_ + "/link");
  std::ofstream(directory_ + "/own/file");
  const std::pair<std::string, const char*> rows[] = {
      {directory_ + "/open/s", "others can write"},
      {directory_ + "/link/s", "cannot open the directory"},
      {directory_ + "/link//s", "cannot open the directory"},
      {directory_ + "/own/file", "not a socket"},
      {directory_ + "/none/none/s", "cannot open the directory"},
      {directory_ + "/own/" + std::string(100, 'x'), "characters"},
      {directory_ + "/own/", "is a directory"},
  };
  for (const auto& [path, message] : rows) {
    const auto server = Run({"--socket", path});
    EXPECT_EQ(server->Wait(), 1) << path;
    EXPECT_NE(server->output().find(message), std::string::npos) << server->output();
  }
}

TEST_F(Server, TellsWhatIsWrongWithAConsoleLine) {
  Start({"--console"});
  const std::pair<const char*, const char*> rows[] = {
      {"bogus", "unknown command 'bogus'"},
      {"network", "usage: network on|off"},
      {"network maybe", "usage: network on|off"},
      {"drop 3", "no such profile"},
      {"drop -1", "no such profile"},
      {"traffic 0 5 1 1", "usage: traffic"},
      {"indicate 0x25", "usage: indicate"},
      {"indicate 0x25 4294967296", "usage: indicate"},
      {"raw 0x25 123", "usage: raw"},
      {"raw 0x25 zz", "usage: raw"},
      {"sleep forever", "usage: sleep"},
      {"fail Nothing", "no request 'Nothing'"},
  };
  int line = 0;
  for (const auto& [command, message] : rows) {
    server_->Write(std::string(command) + "\n");
    const std::string answer = "console: line " + std::to_string(++line) + ": ";
    EXPECT_TRUE(server_->WaitForOutput(answer)) << command;
    EXPECT_NE(server_->output().find(message, server_->output().find(answer)), std::string::npos)
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
  constexpr auto kV4 = QCMAP_MSGR_WWAN_CALL_TYPE_V4_V01;
  constexpr auto kV6 = QCMAP_MSGR_WWAN_CALL_TYPE_V6_V01;
  const auto policy = [](int family, uint8_t v4, uint8_t v6) {
    return qcmap_msgr_net_policy_info_v01{
        1, static_cast<qcmap_msgr_ip_family_enum_v01>(family), {v4, v4}, {v6, v6}};
  };
  const auto lan = [](uint32_t mask, uint32_t start, uint32_t end) {
    return qcmap_msgr_lan_config_v01{0x0A000001, mask, 1, start, end, 60};
  };
  struct Row {
    const char* before;
    const char* what;
    std::function<bool(qmi_error_type_v01*)> send;
    int error;
  };
#define ROW(before, call, error)                                             \
  {                                                                          \
    before, #call, [&](qmi_error_type_v01* e) { return client.call; }, error \
  }
  const Row rows[] = {
      ROW("", SetWWANProfileHandlePreference(0, e), 9),
      ROW("", SetWWANProfileHandlePreference(100, e), 9),
      ROW("", SetWWANProfileHandlePreference(149, e), 0),
      ROW("", CreateWWANPolicy(policy(4, 25, 0), e), 48),
      ROW("", CreateWWANPolicy(policy(5, 1, 1), e), 48),
      ROW("", CreateWWANPolicy(policy(4, 24, 0), e), 0),
      ROW("", CreateWWANPolicy(policy(6, 0, 1), e), 51),
      ROW("network off", ConnectBackHaul(kV4, e), 13),
      ROW("network on\nroaming on", ConnectBackHaul(kV4, e), 14),
      ROW("", SetRoaming(2, e), 48),
      ROW("", SetRoaming(1, e), 0),
      ROW("", DisableIPV6(e), 0),
      ROW("", ConnectBackHaul(kV6, e), 14),
      ROW("", ConnectBackHaul(QCMAP_MSGR_WWAN_CALL_TYPE_V4_V01, e), 0),
      ROW("", ConnectBackHaul(kV4, e), 26),
      ROW("", DeleteWWANPolicy(e), 90),
      ROW("", DisconnectBackHaul(kV6, e), 90),
      ROW("", DisconnectBackHaul(kV4, e), 0),
      ROW("", DisconnectBackHaul(kV4, e), 26),
      ROW("", ConnectBackHaul(static_cast<qcmap_msgr_wwan_call_type_v01>(3), e), 48),
      ROW("", SetWWANProfileHandlePreference(150, e), 0),
      ROW("", ConnectBackHaul(kV6, e), 14),
      ROW("", DeleteWWANPolicy(e), 0),
      ROW("", GetWWANPolicy(kOut, e), 9),
      ROW("", AddPDNToVLANMapping(7, 101, e), 48),
      ROW("", AddPDNToVLANMapping(7, 150, e), 9),
      ROW("", DeleteVLANConfig({"eth0", 7, {}}, e), 48),
      ROW("", SetVLANConfig({"eth0", 4095, {}}, e, nullptr), 48),
      ROW("", SetVLANConfig({"eth0", 7, {}}, e, nullptr), 0),
      ROW("", SetVLANConfig({"eth0", 7, {}}, e, nullptr), 26),
      ROW("", AddPDNToVLANMapping(7, 101, e), 0),
      ROW("", AddPDNToVLANMapping(7, 102, e), 90),
      ROW("", DeletePDNToVLANMapping(7, 102, e), 48),
      ROW("", SetLANConfig(lan(0xFFFFFF00, 0x0A000002, 0x0A0000FE), e), 0),
      ROW("", SetLANConfig(lan(0xFFFFFF00, 0x0A000001, 0x0A0000FE), e), 48),
      ROW("", SetLANConfig(lan(0xFFFFFF00, 0x0A000009, 0x0A000008), e), 48),
      ROW("", SetLANConfig(lan(0xFFFFFF00, 0x0A000002, 0x0A0000FF), e), 48),
      ROW("", SetLANConfig(lan(0xFF00FF00, 0x0A000002, 0x0A0000FE), e), 48),
  };
  for (const Row& row : rows) {
    Console(row.before);
    qmi_error_type_v01 error = QMI_ERR_INTERNAL_V01;
    EXPECT_EQ(row.send(&error), row.error == 0) << row.what;
    EXPECT_EQ(error, row.error) << row.what;
  }
}

}  // namespace
