/// The server as authors of tests use it: its record, time that they control, and many that
/// control.
#include <regex>
#include <set>

#include "simulated_server.h"

namespace {

using Lab = SimulatedServer;

TEST_F(Lab, DayIsTheSameEveryTimeAndTakesSeconds) {
  std::set<size_t> days;
  for (int run = 0; run < 10; ++run) {
    const auto start = std::chrono::steady_clock::now();
    Start({"--seed", "7", "--jitter", "9000", "--traffic", "100000", "--clock", "manual", "--log",
           log_});
    auto client = std::make_unique<QCMAP_Client>([](auto...) {});
    EXPECT_TRUE(client->EnableMobileAP(nullptr));
    EXPECT_TRUE(client->SetWWANProfileHandlePreference(102, nullptr));
    EXPECT_TRUE(client->DisableIPV6(nullptr));
    EXPECT_TRUE(client->SetAutoconnect(1, nullptr));
    for (int hour = 0; hour < 24; ++hour) {
      for (const char* command :
           {"advance 40min", "drop 1", "fail-call 1 4 3", "advance 5min", "drop 1", "advance 5min",
            "roaming on", "drop 1 4", "advance 4min", "roaming off", "advance 1min", "network off",
            "advance 5min", "network on"})
        Control(command);
    }
    const std::string model = Control("show --json");
    EXPECT_TRUE(std::regex_search(model, std::regex("\"received_bytes\":7[0-9]{9},"))) << model;
    client.reset();
    EXPECT_TRUE(Eventually([&] { return Record().find("\"closed\"") != std::string::npos; }));
    days.insert(std::hash<std::string>()(Record()));
    EXPECT_LE(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
    Stop();
  }
  EXPECT_EQ(days.size(), 1u) << Record();
}

TEST_F(Lab, AdvanceGoesNoFasterThanClientsRead) {
  Start({"--clock", "manual", "--call-time", "1"});
  QCMAP_Client client([](auto...) {
    const auto start = std::chrono::steady_clock::now();
    while (std::chrono::steady_clock::now() - start < std::chrono::microseconds(10)) continue;
  });
  EXPECT_TRUE(client.EnableMobileAP(nullptr));
  EXPECT_TRUE(client.SetAutoconnect(1, nullptr));
  Control("fail-call 0 4");
  for (int hour = 0; hour < 24; ++hour) Control("advance 1h");
  EXPECT_TRUE(client.EnableMobileAP(nullptr)) << "it was cut off";
}

TEST_F(Lab, FullDiskIsReportedOnceAndStopsNothing) {
  server_ = std::make_unique<Process>(
      "/bin/sh", std::vector<std::string>{
                     "sh", "-c", "ulimit -f 2; exec " MVQ_QCMAP_SERVER " --log \"$0\"", log_});
  ASSERT_TRUE(server_->WaitForOutput("listening on"));
  for (int i = 0; i < 20; ++i) Control("echo " + std::string(100, 'x'));
  EXPECT_TRUE(server_->WaitForOutput("\nlog: File too large, lines are left out\n"));
  const std::string log = Record();
  EXPECT_EQ(log.substr(log.size() - 2), "}\n") << "whole lines";
  Control("quit");
  EXPECT_EQ(server_->Wait(), 0);
  EXPECT_EQ(server_->output().find("log: "), server_->output().rfind("log: ")) << "once";
}

TEST_F(Lab, ManyThatControlDisturbNobody) {
  constexpr size_t kPlaces = 128;
  Start({"--profiles", "50"});
  const auto before = Descriptors();
  const size_t memory = Status();
  const std::string sent[] = {"show --json", std::string(8000, 'x'), "sleep 60000", ""};
  std::vector<int> deaf;
  size_t commands = 0;
  while (deaf.size() < kPlaces - 1) {
    const std::string& command = sent[deaf.size() % std::size(sent)];
    deaf.push_back(RawSocket(sim::ControlPath(path_)));
    while (::send(deaf.back(), command.data(), command.size(), MSG_DONTWAIT | MSG_NOSIGNAL) >= 0) {
      commands += deaf.size() == 1;
      if (command.empty()) break;
    }
  }
  QCMAP_Client client(nullptr);
  const auto start = std::chrono::steady_clock::now();
  unsigned char roaming;
  EXPECT_TRUE(client.GetRoaming(&roaming, nullptr));
  const std::string model = Control("show --json");
  EXPECT_LE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(500));
  const std::string answer = (sim::kTookEffect + model).substr(0, sim::kMaxDatagramBytes);
  for (size_t i = 0; i < commands; ++i) ASSERT_EQ(Receive(deaf[0]), answer) << i;
  EXPECT_EQ(Receive(deaf[1]), "!the command is too long");
  EXPECT_EQ(Receive(deaf[3]), "") << "an empty command ends the connection";
  for (const int fd : deaf) ::close(fd);
  EXPECT_TRUE(Eventually([&] { return Descriptors() == before + 2; })) << "those of the client";
  const int sleeper = RawSocket(sim::ControlPath(path_));
  Send(sleeper, "sleep 8000");
  for (int& fd : deaf) fd = RawSocket(sim::ControlPath(path_));
  for (int i = 0; i < 2; ++i) deaf.push_back(RawSocket(sim::ControlPath(path_)));
  EXPECT_EQ(Receive(deaf.back()), "");
  EXPECT_TRUE(server_->WaitForOutput("too many programs control the server, one refused\n"));
  const auto is_served = [&] {
    const int fd = RawSocket(sim::ControlPath(path_));
    ::send(fd, "echo here", 9, MSG_NOSIGNAL);
    const bool is_answered = Receive(fd) == "=here\n";
    ::close(fd);
    return is_answered;
  };
  EXPECT_TRUE(Eventually(is_served)) << "in the place of a silent program";
  // Each byte of these names becomes six of the answer.
  for (int16_t id = 1; id <= 2000; ++id)
    client.SetVLANConfig({"\2\2\2\2\2\2\2\2\2\2\2\2\2\2\2", id, {}}, nullptr, nullptr);
  for (const int fd : deaf) ::send(fd, "show --json", 11, MSG_NOSIGNAL);
  EXPECT_TRUE(Eventually([&] { return Descriptors() < before + 96; })) << "cut off by and by";
  EXPECT_LE(Status(), memory + 8192) << "kilobytes";
  for (const int fd : deaf) ::close(fd);
  EXPECT_EQ(Receive(sleeper), "=") << "who waits for the end of a command is not idle";
  ::close(sleeper);
}

TEST_F(Lab, TenThousandIndicationsAreDelayedAtMost) {
  Start();
  static std::atomic<int> received;
  received = 0;
  QCMAP_Client client([](auto...) { ++received; });
  Control("delay indications 3600000");
  for (int i = 0; i < 10001; ++i) Control("indicate 41 1");
  EXPECT_TRUE(server_->WaitForOutput(": too many indications are delayed, one sent at once\n"));
  EXPECT_TRUE(Eventually([&] { return received == 1; })) << received;
}

TEST_F(Lab, ScenarioMayComeFromAPipe) {
  const auto start = std::chrono::steady_clock::now();
  // The lines of a pipe come later, and the last one may end without its newline.
  server_ = std::make_unique<Process>(
      "/bin/sh", std::vector<std::string>{"sh", "-c",
                                          "{ sleep 0.1; echo echo one; echo sleep 300; sleep 0.1; "
                                          "echo echo two; printf quit; } | exec " MVQ_QCMAP_SERVER
                                          " --scenario /dev/stdin"});
  EXPECT_EQ(server_->Wait(), 0);
  const std::string order = "one\nlistening on " + path_ + "\ntwo\n";
  EXPECT_NE(server_->output().find(order), std::string::npos) << server_->output();
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(300));
}

TEST_F(Lab, AnotherUserControlsNothing) {
  Start();
  ::chmod(directory_.c_str(), 0755);
  ::chmod((directory_ + "/made").c_str(), 0755);
  ::chmod(sim::ControlPath(path_).c_str(), 0666);
  if (::seteuid(65534) != 0) GTEST_SKIP() << "only root can be another user";
  const int fd = RawSocket(sim::ControlPath(path_));
  EXPECT_EQ(Receive(fd), "") << "closed";
  ::close(fd);
  ASSERT_EQ(::seteuid(0), 0);
  EXPECT_TRUE(server_->WaitForOutput("another user's connection refused"));
}

}  // namespace
