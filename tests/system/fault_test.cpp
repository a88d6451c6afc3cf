/// Servers that die, hang or send nonsense, clients that send nonsense, and the damage to others.
#include <atomic>
#include <future>

#include "every_request.h"
#include "protocol/messages.h"
#include "raw_peer.h"
#include "simulated_server.h"

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

/// How long the client waits for a reply.
constexpr milliseconds kLimit{600};

class Fault : public SimulatedServer {
 protected:
  Fault() { ::setenv("QCMAP_TIMEOUT_MS", std::to_string(kLimit.count()).c_str(), 1); }
};

milliseconds Since(steady_clock::time_point start) {
  return std::chrono::duration_cast<milliseconds>(steady_clock::now() - start);
}

TEST_F(Fault, HangingServerCostsNoMoreThanTheLimitAndIsUsableAfterwards) {
  Start({"--log", log_});
  static std::atomic<bool> has_heard{false};
  QCMAP_Client client([](auto...) { has_heard = true; });
  qmi_error_type_v01 error{};
  qcmap_msgr_mobile_ap_status_enum_v01 status{};
  server_->Signal(SIGSTOP);
  const auto start = steady_clock::now();
  auto other = std::async([&] { return client.ActivateLAN(nullptr); });
  EXPECT_FALSE(client.GetMobileAPStatus(&status, &error));
  EXPECT_FALSE(other.get());
  EXPECT_EQ(error, QMI_ERR_INTERNAL_V01);
  EXPECT_GE(Since(start), kLimit);
  EXPECT_LE(Since(start), kLimit * 3 / 2) << "the wait for the other request counts";
  server_->Signal(SIGCONT);
  // The late replies arrive first. The client must not take them for those to its new requests.
  EXPECT_TRUE(client.EnableMobileAP(&error));
  EXPECT_TRUE(Eventually([] { return has_heard.load(); })) << "indications may take any time";
  ASSERT_TRUE(client.GetMobileAPStatus(&status, &error));
  EXPECT_EQ(status, QCMAP_MSGR_MOBILE_AP_STATUS_CONNECTED_V01);
  EXPECT_NE(Record().find("\"event\":\"given_up\""), std::string::npos) << Record();
}

TEST_F(Fault, RequestOfAClientThatIsGoneIsNotCarriedOut) {
  Start({"--console"});
  const int leaving = RawSocket(path_);
  OpenHalf(leaving);
  server_->Signal(SIGSTOP);
  Send(leaving, sim::MakeDatagram(sim::message::SetAutoconnect::kId, 2, 0, "\1"));
  ::close(leaving);
  server_->Signal(SIGCONT);
  EXPECT_TRUE(QCMAP_Client(nullptr).EnableMobileAP(kAnything));
  Console("show");
  EXPECT_EQ(server_->output().find("autoconnect on"), std::string::npos) << server_->output();
}

TEST_F(Fault, ProcessOfTheServersNameIsNoServer) {
  const Process sleeper("/bin/sleep", {"/somewhere/QCMAP_ConnectionManager", "60"});
  QcmapWrapper& wrapper = *QcmapWrapper::GetInstance();
  // A program that has just been started has no command line yet.
  EXPECT_TRUE(Eventually([&] { return wrapper.IsQcmapAlive(); }));
  const auto start = steady_clock::now();
  EXPECT_FALSE(wrapper.ActivateLan());
  EXPECT_LE(Since(start), kLimit / 2);
}

TEST_F(Fault, MalformedRequestsHarmNobodyElse) {
  constexpr uint32_t kHonest = 5001;
  const std::string open = OpenSession(), into_honest = OpenSession({kHonest, {}});
  const std::string connect =
      sim::MakeDatagram(sim::message::ConnectBackHaul::kId, 8, 0, std::string("\1\0\0\0", 4));
  std::string lying = connect;
  ++lying[offsetof(sim::Header, length)];
  const struct {
    const char* what;
    std::string opening, request;
    /// Why the connection is closed. If there is no reason, the request is refused.
    std::string reason;
  } rows[] = {
      {"names another client's session", "", into_honest,
       "a client opened a session that is not its own"},
      {"has half a ticket", "", open.substr(0, open.size() - 4),
       "a client did not open its session"},
      {"comes before the session", "", connect, "a client did not open its session"},
      {"ends within its header", "", connect.substr(0, 5), "a datagram has an invalid size"},
      {"is longer than any request", open, connect + std::string(5000, '\1'),
       "a datagram has an invalid size"},
      {"ends within its record", open, connect.substr(0, connect.size() - 1), ""},
      {"is longer than its record", open, connect + "\1", ""},
      {"has not the length that it gives", open, lying, ""},
      {"opens the session again", open, open, ""}};
  for (const auto& row : rows) {
    SCOPED_TRACE(std::string("a request that ") + row.what);
    Start();
    QCMAP_Client honest(nullptr);
    EXPECT_EQ(honest.mobile_ap_handle, kHonest);
    const auto before = Descriptors();
    const int fd = RawSocket(path_);
    if (!row.opening.empty()) {
      Send(fd, row.opening);
      EXPECT_FALSE(Receive(fd).empty());
    }
    Send(fd, row.request);
    const std::string reply = Receive(fd);
    sim::Header header{};
    reply.copy(reinterpret_cast<char*>(&header), sizeof header);
    EXPECT_EQ(header.error == QMI_ERR_INVALID_ARG_V01, row.reason.empty());
    EXPECT_EQ(reply.empty(), !row.reason.empty());
    const auto start = steady_clock::now();
    Send(fd, "");
    EXPECT_EQ(Receive(fd), "") << "an empty datagram ends a connection";
    EXPECT_LE(Since(start), std::chrono::seconds(1)) << "at once, not when time is up";
    EXPECT_TRUE(row.reason.empty() || server_->WaitForOutput("\nQCMAP_ConnectionManager: " +
                                                             row.reason + ", connection closed\n"))
        << server_->output();
    ::close(fd);
    EXPECT_TRUE(honest.GetMobileAPStatus(kAnything, nullptr));
    EXPECT_TRUE(Eventually([&] { return Descriptors() == before; }));
  }
}

}  // namespace
