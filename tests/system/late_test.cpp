/// A server that is late or stops, and what becomes of requests whose callers have given up.
#include <future>
#include <sstream>

#include "every_request.h"
#include "simulated_server.h"

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

/// Bring a server into a state that most requests change.
const Request kPreparation[] = {
    SENDS(DisableIPV6, error),
    SENDS(SetWWANProfileHandlePreference, 102, error),
    SENDS(DisableIPV6, error),
    SENDS(SetLANConfig, {0x0A000101, 0xFFFFFF00, 0, 0, 0, 60}, error),
    SENDS(SetVLANConfig, {"eth0", 6, {}}, error, kAnything),
    SENDS(SetVLANConfig, {"eth0", 7, {}}, error, kAnything),
    SENDS(AddPDNToVLANMapping, 6, 103, error),
};

constexpr milliseconds kLimit{300};

/// A server of its own with one client, which gives a request up after kLimit.
class PreparedServer : public SimulatedServer {
 public:
  explicit PreparedServer(bool selects = true) {
    Start({"--call-time", "600000", "--traffic", "0"});
    Control("traffic 0 4 1000 1000");
    Control("traffic 1 4 1000 1000");
    Open();
    for (const Request& preparation : kPreparation)
      EXPECT_TRUE(preparation.send(*client_, kAnything));
    if (!selects) Open();
  }

  using SimulatedServer::Control;
  /// Opens a new session, in which no profile is selected.
  void Open() {
    ::setenv("QCMAP_TIMEOUT_MS", std::to_string(kLimit.count()).c_str(), 1);
    // On a busy machine, opening a session can take longer than the limit.
    EXPECT_TRUE(Eventually([this] {
      client_ = std::make_unique<QCMAP_Client>(nullptr);
      return client_->mobile_ap_handle != 0;
    }));
    ::unsetenv("QCMAP_TIMEOUT_MS");
  }
  void Continue() const { server_->Signal(SIGCONT); }
  QCMAP_Client& client() { return *client_; }
  /// All that requests can change, as text.
  std::string Model() {
    std::ostringstream model;
    model << Control("show");
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

TEST(Late, RequestTakesNoEffectAfterItsCallerGaveUp) {
  const std::string unchanged = PreparedServer().Model();
  const struct {
    const char *fault, *argument;
    /// Whether the client has selected the second profile.
    bool selects;
    /// How many of the requests have changed the model in the end.
    int changes;
  } rows[] = {{"late", "400", true, 0},
              {"late-reply", "400", true, 18},
              {"stop", "before", true, 0},
              {"stop", "after", false, 18},
              {"stop", "replied", true, 18}};
  for (const auto& row : rows) {
    // Then it is the next request that is given up.
    const bool is_answered = row.argument == std::string("replied");
    struct Round {
      const Request& request;
      std::unique_ptr<PreparedServer> server;
      qmi_error_type_v01 error;
      std::future<milliseconds> took;
    };
    std::vector<Round> rounds;
    for (const Request& request : kEveryRequest)
      rounds.push_back({request, std::make_unique<PreparedServer>(row.selects), {}, {}});
    for (Round& round : rounds) {
      round.server->Control(std::string(row.fault) + " " + round.request.name + " " + row.argument +
                            " 1");
      round.took = std::async(std::launch::async, [&round, is_answered] {
        if (is_answered) round.request.send(round.server->client(), &round.error);
        EXPECT_NE(round.error, QMI_ERR_INTERNAL_V01) << round.request.name;
        const auto start = steady_clock::now();
        round.request.send(round.server->client(), &round.error);
        return std::chrono::duration_cast<milliseconds>(steady_clock::now() - start);
      });
    }
    int changes = 0;
    for (Round& round : rounds) {
      SCOPED_TRACE(std::string(row.fault) + " " + round.request.name + " " + row.argument);
      const milliseconds took = round.took.get();
      EXPECT_GE(took, kLimit);
      EXPECT_LE(took, kLimit * 3 / 2);
      EXPECT_EQ(round.error, QMI_ERR_INTERNAL_V01);
      round.server->Continue();
      QCMAP_Client& client = round.server->client();
      // It is answered when the server is done with the request before it.
      EXPECT_TRUE(Eventually([&] { return client.GetMobileAPStatus(kAnything, kAnything); }));
      const std::string model = round.server->Model();
      changes += model != unchanged;
      EXPECT_TRUE(row.changes > 0 || model == unchanged) << model;
      const bool reselects = round.request.name == std::string("SetWWANProfileHandlePreference");
      const bool is_first = !row.selects || (is_answered && reselects);
      const std::string right = is_first ? "handle 101" : "handle 102";
      if (client.SetAutoconnect(1, &round.error)) {
        EXPECT_NE(round.server->Model().find(right + ", autoconnect on"), std::string::npos);
      } else {
        EXPECT_EQ(model.find(right), std::string::npos) << "the profile was deleted";
      }
    }
    EXPECT_EQ(changes, row.changes) << row.fault;
  }
}

using Opening = SimulatedServer;

TEST_F(Opening, HasNoEffectOnceItWasGivenUp) {
  Start();
  // When each of the two connections takes 200 ms, the second one is opened after the limit.
  for (const char* fault :
       {"fail OpenSession", "hang OpenSession", "late OpenSession 400", "late OpenSession 200",
        "late-reply OpenSession 200", "stop connection before 1", "stop connection after 1",
        "stop OpenSession before 1", "stop OpenSession after 1", "stop OpenSession replied 1"}) {
    SCOPED_TRACE(fault);
    Control(fault);
    ::setenv("QCMAP_TIMEOUT_MS", "300", 1);
    QCMAP_Client client(nullptr);
    ::unsetenv("QCMAP_TIMEOUT_MS");
    server_->Signal(SIGCONT);
    Control("heal");
    for (const Request& request : kEveryRequest)
      EXPECT_FALSE(request.send(client, kAnything)) << request.name;
    EXPECT_NE(Control("show").find("mobile ap off"), std::string::npos);
  }
  EXPECT_TRUE(QCMAP_Client(nullptr).EnableMobileAP(kAnything));
}

TEST_F(Opening, FailsAtOnceWhenTheServerDies) {
  for (const char* step : {"connection before", "connection after", "OpenSession before",
                           "OpenSession after", "OpenSession replied"}) {
    SCOPED_TRACE(step);
    Start({"--log", log_});
    Control(std::string("die ") + step);
    const auto start = steady_clock::now();
    QCMAP_Client client(nullptr);
    for (const Request& request : kEveryRequest)
      EXPECT_FALSE(request.send(client, kAnything)) << request.name;
    EXPECT_LT(steady_clock::now() - start, std::chrono::seconds(1));
    EXPECT_EQ(server_->Wait(), -SIGKILL);
    const std::string record = Record();
    EXPECT_NE(record.find("\"fault\":\"die\""), std::string::npos) << record;
    EXPECT_EQ(record.substr(record.size() - 2), "}\n") << "no line is lost";
  }
}

}  // namespace
