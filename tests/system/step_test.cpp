/// A server that stops for a while at one step of a request, and what becomes of that request.
#include <sys/wait.h>

#include <algorithm>
#include <future>
#include <sstream>

#include "every_request.h"
#include "simulated_server.h"

namespace {

/// Brings a server into a state that most requests change, and selects the profile of the test.
const Request kPreparation[] = {
    SENDS(SetWWANProfileHandlePreference, 102, error),
    SENDS(DisableIPV6, error),
    SENDS(SetLANConfig, {0x0A000101, 0xFFFFFF00, 0, 0, 0, 60}, error),
    SENDS(SetVLANConfig, {"eth0", 6, {}}, error, kAnything),
    SENDS(SetVLANConfig, {"eth0", 7, {}}, error, kAnything),
    SENDS(AddPDNToVLANMapping, 6, 103, error),
};

/// A server of its own with one client.
class StoppingServer : public SimulatedServer {
 public:
  /// The server stops at `step` of `request`, or never if `step` is empty.
  StoppingServer(const std::string& step, const std::string& request,
                 std::chrono::milliseconds limit) {
    const auto is_same = [&](const Request& other) { return other.name == request; };
    const auto earlier = std::count_if(std::begin(kPreparation), std::end(kPreparation), is_same);
    if (!step.empty())
      ::setenv("QCMAP_TEST_STEP",
               (step + ":stop:" + request + ":" + std::to_string(earlier + 1)).c_str(), 1);
    Start({"--console", "--call-time", "600000", "--traffic", "0"});
    ::unsetenv("QCMAP_TEST_STEP");
    Console("traffic 1 4 1000 1000");
    ::setenv("QCMAP_TIMEOUT_MS", std::to_string(limit.count()).c_str(), 1);
    client_ = std::make_unique<QCMAP_Client>(nullptr);
    ::unsetenv("QCMAP_TIMEOUT_MS");
    for (const Request& preparation : kPreparation)
      EXPECT_TRUE(preparation.send(*client_, kAnything));
  }

  QCMAP_Client& client() { return *client_; }
  bool IsStopped() const {
    siginfo_t info{};
    ::waitid(P_PID, static_cast<id_t>(server_->pid()), &info, WSTOPPED | WNOHANG | WNOWAIT);
    return info.si_pid != 0;
  }
  void Continue() { server_->Signal(SIGCONT); }
  /// All that requests can change, as text.
  std::string Model() {
    Console("show");
    const std::string& output = server_->output();
    const size_t start = output.rfind("mobile ap ");
    const size_t end = output.find('\n', output.find("passthrough: ", start));
    std::ostringstream model;
    model << output.substr(start, end - start) << '\n';
    ::setenv("QCMAP_SOCKET", path_.c_str(), 1);
    QCMAP_Client reader(nullptr);
    qcmap_msgr_wwan_policy_list_resp_msg_v01 list{};
    EXPECT_TRUE(reader.GetWWANPolicyList(&list, kAnything));
    for (uint32_t i = 0; i < list.policy_list_len; ++i) {
      const auto& [handle, policy] = list.policy_list[i];
      qcmap_msgr_wwan_statistics_type_v01 counters{};
      EXPECT_TRUE(reader.SetWWANProfileHandlePreference(handle, kAnything));
      EXPECT_TRUE(reader.GetWWANStatistics(kFamily4, &counters, kAnything));
      model << "handle " << handle << ": IPv4 number " << int{policy.v4_profile_id[0]} << ", "
            << counters.bytes[0] << " bytes\n";
    }
    return model.str();
  }

 private:
  void TestBody() override {}

  std::unique_ptr<QCMAP_Client> client_;
};

struct Step {
  const char* name;
  std::chrono::milliseconds limit;
  bool is_answered;
  /// How many of the requests have changed the model in the end.
  int changes;
};

TEST(Steps, RequestTakesNoEffectAfterItsCallerGaveUp) {
  using std::chrono::milliseconds;
  const std::string unchanged = StoppingServer("", "", milliseconds(2000)).Model();
  const Step steps[] = {{"read", milliseconds(500), false, 0},
                        {"carried-out", milliseconds(2000), false, 18},
                        {"replied", milliseconds(10000), true, 18}};
  for (const Step& step : steps) {
    struct Round {
      const Request& request;
      std::unique_ptr<StoppingServer> server;
      qmi_error_type_v01 error;
      std::future<bool> granted;
    };
    std::vector<Round> rounds;
    for (const Request& request : kEveryRequest)
      rounds.push_back(
          {request, std::make_unique<StoppingServer>(step.name, request.name, step.limit), {}, {}});
    for (Round& round : rounds)
      round.granted = std::async(std::launch::async, [&round] {
        return round.request.send(round.server->client(), &round.error);
      });
    int changes = 0;
    for (Round& round : rounds) {
      SCOPED_TRACE(std::string(round.request.name) + " stopped when " + step.name);
      EXPECT_TRUE(Eventually([&] { return round.server->IsStopped(); }));
      const bool granted = round.granted.get();
      EXPECT_EQ(round.error != QMI_ERR_INTERNAL_V01, step.is_answered) << round.error;
      round.server->Continue();
      const std::string model = round.server->Model();
      changes += model != unchanged;
      if (step.changes == 0) {
        EXPECT_EQ(model, unchanged);
      }

      QCMAP_Client& client = round.server->client();
      const bool selects = std::string(round.request.name) == "SetWWANProfileHandlePreference";
      const std::string selected = granted && selects ? "handle 101" : "handle 102";
      if (client.SetAutoconnect(1, &round.error)) {
        EXPECT_NE(round.server->Model().find(selected + ", autoconnect on"), std::string::npos);
      } else {
        EXPECT_EQ(model.find(selected), std::string::npos) << "the profile was deleted";
      }
      EXPECT_TRUE(client.EnableMobileAP(kAnything)) << "the session stays usable";
    }
    EXPECT_EQ(changes, step.changes) << step.name;
  }
}

using Opening = SimulatedServer;

TEST_F(Opening, HasNoEffectOnceItWasGivenUp) {
  for (const char* step : {"accepted:stop", "accepted:stop:OpenSession:2", "read:stop:OpenSession",
                           "opened:stop", "read:stop:OpenSession:2"}) {
    SCOPED_TRACE(step);
    ::setenv("QCMAP_TEST_STEP", step, 1);
    ::setenv("QCMAP_TIMEOUT_MS", "200", 1);
    Start({"--console"});
    ::unsetenv("QCMAP_TEST_STEP");
    QCMAP_Client client(nullptr);
    ::unsetenv("QCMAP_TIMEOUT_MS");
    for (const Request& request : kEveryRequest)
      EXPECT_FALSE(request.send(client, kAnything)) << request.name;
    server_->Signal(SIGCONT);
    Console("show");
    EXPECT_NE(server_->output().find("mobile ap off"), std::string::npos);
    EXPECT_TRUE(QCMAP_Client(nullptr).EnableMobileAP(kAnything));
    server_.reset();
  }
  ::setenv("QCMAP_TEST_STEP", "read:stop:Nothing", 1);
  ExpectEnd({}, 1, "QCMAP_TEST_STEP: 'Nothing' is unknown");
  ::unsetenv("QCMAP_TEST_STEP");
}

}  // namespace
