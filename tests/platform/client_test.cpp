/// What the client makes of any datagram, before a server that answers as it is told.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <qcmap_client.h>
#include <signal.h>
#include <sys/time.h>

#include <atomic>
#include <memory>
#include <vector>

#include "peer.h"
#include "process.h"

namespace {

using namespace std::literals;
using sim::MakeDatagram;
using std::chrono::steady_clock;

/// What has been delivered, as "id:length".
std::string delivered;
std::atomic<bool> is_last_delivered;
constexpr uint32_t kLast = 99;

void OnIndication(qmi_client_struct*, unsigned id, void*, unsigned length, void*) {
  delivered += " " + std::to_string(id) + ":" + std::to_string(length);
  sigset_t blocked;
  ::pthread_sigmask(SIG_BLOCK, nullptr, &blocked);
  if (::sigismember(&blocked, SIGALRM) != 1) delivered += " and may be interrupted";
  is_last_delivered = id == kLast;
}

class Client : public testing::Test {
 protected:
  Client() { Connect(); }

  /// Opens a session. Returns the deadlines of its two requests.
  std::vector<sim::MonotonicTime> Connect() {
    std::vector<sim::MonotonicTime> deadlines;
    client_.reset();
    client_ = peer_.Serve([] { return std::make_unique<QCMAP_Client>(OnIndication); },
                          [&](Peer::Connection connection, const sim::Header& request) {
                            deadlines.push_back(request.deadline);
                            peer_.OpenSession(connection, request);
                          });
    return deadlines;
  }
  /// Sends the reply to the next request.
  template <typename Message>
  void Answer(const std::string& record) {
    peer_.Send(Peer::kRequests, MakeDatagram(Message::kId, ++transaction_, 0, record));
  }
  bool Activate() {
    Answer<sim::message::ActivateLAN>("");
    return client_->ActivateLAN(nullptr);
  }

  Peer peer_;
  std::unique_ptr<QCMAP_Client> client_;
  uint32_t transaction_ = 2;
};

TEST_F(Client, RefusesAWrongReplyAndGoesOn) {
  const struct {
    const char* what;
    size_t size;
    int error_sent, error;
  } rows[] = {{"ends within its header", sizeof(sim::Header) - 1, 0, 3},
              {"has one byte", 1, 0, 3},
              {"has another length", sizeof(sim::Header) + 1, 0, 3},
              {"is too long", sim::kMaxDatagramBytes + 1, 0, 3},
              {"is a refusal", sizeof(sim::Header), 1, 1}};
  for (const auto& [what, size, error_sent, expected] : rows) {
    std::string reply =
        MakeDatagram(sim::message::ActivateLAN::kId, ++transaction_, error_sent, "");
    reply.resize(size);
    peer_.Send(Peer::kRequests, reply);
    qmi_error_type_v01 error{};
    errno = 0;
    const auto start = steady_clock::now();
    EXPECT_FALSE(client_->ActivateLAN(&error)) << what;
    EXPECT_EQ(error, expected) << what;
    EXPECT_LT(steady_clock::now() - start, 1s) << what;
    EXPECT_TRUE(Activate()) << what;
  }
  peer_.Send(Peer::kRequests, "");
  EXPECT_FALSE(client_->ActivateLAN(nullptr));
  EXPECT_FALSE(Activate()) << "an empty datagram ends the session";
}

TEST_F(Client, ReadsFlagsAndListsOfAnyLength) {
  for (const uint16_t count : std::vector<uint16_t>{2000, 1, 0}) {
    sim::VlanList sent, read;
    std::memset(&sent, count == 2000 ? 7 : 0, sizeof sent);
    sent.vlan_config_len = count;
    Answer<sim::message::GetVLANConfig>(Peer::Bytes(sent).substr(0, sim::WireSize(sent)));
    EXPECT_TRUE(client_->GetVLANConfig(&read, nullptr));
    EXPECT_EQ(std::memcmp(&read, &sent, sizeof sent), 0) << count;
    bool flag = count == 0;
    unsigned char enabled = 77;
    for (bool* const where : {&flag, static_cast<bool*>(nullptr)}) {
      Answer<sim::message::SetVLANConfig>(std::string(1, static_cast<char>(count)));
      EXPECT_TRUE(client_->SetVLANConfig({}, nullptr, where));
    }
    Answer<sim::message::GetRoaming>(std::string(1, static_cast<char>(count)));
    EXPECT_TRUE(client_->GetRoaming(&enabled, nullptr));
    EXPECT_EQ(flag, count != 0);
    EXPECT_EQ(enabled, count != 0);
    qcmap_msgr_lan_config_v01 lan{};
    lan.enable_dhcp = static_cast<uint8_t>(count);
    Answer<sim::message::GetLANConfig>(Peer::Bytes(lan));
    EXPECT_TRUE(client_->GetLANConfig(&lan, nullptr));
    EXPECT_EQ(lan.enable_dhcp, count != 0);
  }
}

TEST_F(Client, DeliversWholeIndicationsWithoutBeingInterrupted) {
  delivered.clear();
  for (const std::string& datagram :
       {"x"s, MakeDatagram(1, 0, 0, "").substr(1), MakeDatagram(2, 0, 0, ""),
        MakeDatagram(3, 0, 0, std::string(4064, 'x')),
        MakeDatagram(4, 0, 0, std::string(4065, 'x')), MakeDatagram(5, 0, 0, "") + "x",
        MakeDatagram(kLast, 0, 0, "x")})
    peer_.Send(Peer::kIndications, datagram);
  EXPECT_TRUE(Eventually([] { return is_last_delivered.load(); }));
  EXPECT_EQ(delivered, " 2:0 3:4064 99:1");
}

TEST_F(Client, GoesOnAfterSignalsAndAServerThatDoesNotRead) {
  ::setenv("QCMAP_TIMEOUT_MS", "100", 1);
  Connect();
  ::unsetenv("QCMAP_TIMEOUT_MS");
  // Whichever socket is the client's, it has room for few requests.
  for (int socket = 0, smallest = 0; socket < 64; ++socket)
    ::setsockopt(socket, SOL_SOCKET, SO_SNDBUF, &smallest, sizeof smallest);
  struct sigaction handler {};
  handler.sa_handler = [](int) {};
  ::sigaction(SIGALRM, &handler, nullptr);
  const itimerval often{{0, 1000}, {0, 1000}}, never{};
  ::setitimer(ITIMER_REAL, &often, nullptr);
  for (int i = 0; i < 10; ++i, ++transaction_) {
    const auto start = steady_clock::now();
    EXPECT_FALSE(client_->ActivateLAN(nullptr));
    EXPECT_GE(steady_clock::now() - start, 100ms) << "request " << i;
  }
  EXPECT_LT(peer_.TakeRequests(Peer::kRequests).transaction, transaction_) << "there was no room";
  EXPECT_TRUE(Activate());
  ::setitimer(ITIMER_REAL, &never, nullptr);
}

TEST_F(Client, MayHaveTheFirstDescriptorAndClosesIt) {
  client_.reset();
  peer_.HangUp();
  const int input = ::dup(0);
  ::close(0);
  Connect();
  EXPECT_TRUE(Activate());
  client_.reset();
  peer_.HangUp();
  EXPECT_EQ(::fcntl(0, F_GETFD), -1);
  ::dup2(input, 0);
  ::close(input);
}

TEST_F(Client, TakesItsTimeLimitFromTheEnvironment) {
  const std::pair<const char*, std::chrono::milliseconds> rows[] = {
      {"300", 300ms}, {"3600000", 1h}, {"3600001", 2s}, {"0", 2s}, {"1s", 2s}};
  for (const auto& [text, limit] : rows) {
    ::setenv("QCMAP_TIMEOUT_MS", text, 1);
    const auto earliest = sim::ToMonotonicTime(steady_clock::now() + limit);
    const auto deadlines = Connect();
    EXPECT_GE(deadlines[0], earliest) << text;
    EXPECT_LE(deadlines[0], sim::ToMonotonicTime(steady_clock::now() + limit)) << text;
    EXPECT_EQ(deadlines[0], deadlines[1]) << text;
  }
  ::unsetenv("QCMAP_TIMEOUT_MS");
}

}  // namespace
