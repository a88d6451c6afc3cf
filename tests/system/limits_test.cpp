/// What the server grants its clients: places, memory, and time for each other.
#include <atomic>
#include <future>

#include "protocol/indication.h"
#include "raw_peer.h"
#include "simulated_server.h"

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr size_t kPlaces = 256;

class Limits : public SimulatedServer {
 protected:
  /// Has deaf clients and an honest one. Returns the longest that the honest one waited.
  milliseconds LongestPauseBesideDeafClients();
};

TEST_F(Limits, PlacesOfClientsThatDoNotOpenTheirSessionAreFreeInTime) {
  Start();
  QCMAP_Client open(nullptr);
  const auto before = Descriptors();
  const auto start = steady_clock::now();
  // The first one reads no replies, and then opens its second connection.
  std::vector<int> peers = {RawSocket(path_), RawSocket(path_)};
  const auto ticket = OpenHalf(peers[0]);
  const std::string request = sim::MakeDatagram(sim::message::GetWWANPolicyList::kId, 2, 0, "");
  // Once the server has taken nothing for a while, it waits for room for a reply.
  for (auto last = steady_clock::now(); steady_clock::now() - last < milliseconds(50);)
    if (::send(peers[0], request.data(), request.size(), MSG_DONTWAIT) > 0)
      last = steady_clock::now();
  Send(peers[1], OpenSession(ticket));
  EXPECT_FALSE(Receive(peers[1]).empty());
  while (peers.size() < kPlaces - 2) {
    peers.push_back(RawSocket(path_));
    if (peers.size() % 2 == 0) OpenHalf(peers.back());
  }
  EXPECT_EQ(QCMAP_Client(nullptr).mobile_ap_handle, 0u) << "refused, since there are too many";
  EXPECT_TRUE(Eventually([&] { return Descriptors() == before; }));
  EXPECT_GE(steady_clock::now() - start, std::chrono::seconds(5));
  EXPECT_LE(steady_clock::now() - start, std::chrono::seconds(7));
  EXPECT_TRUE(server_->WaitForOutput("a client does not read its replies"));
  EXPECT_TRUE(open.EnableMobileAP(nullptr)) << "the client that has opened its session stays";
  for (const int fd : peers) ::close(fd);
}

TEST_F(Limits, PlaceOfAClientThatIsGoneIsFreeAtOnce) {
  Start({"--latency", "3600000"});
  const auto before = Descriptors();
  std::vector<int> peers;
  while (peers.size() < kPlaces - 1) {
    peers.push_back(RawSocket(path_));
    const auto ticket = OpenHalf(peers.back());
    Send(peers.back(), sim::MakeDatagram(sim::message::ActivateLAN::kId, 2, 0, ""));
    if (peers.size() % 3 == 0) continue;  // a client that never gets its second connection
    peers.push_back(RawSocket(path_));
    Send(peers.back(), OpenSession(ticket));
    EXPECT_FALSE(Receive(peers.back()).empty());
  }
  const auto start = steady_clock::now();
  for (const int fd : peers) ::close(fd);
  EXPECT_TRUE(Eventually([&] { return Descriptors() == before; }));
  EXPECT_LE(steady_clock::now() - start, std::chrono::seconds(1));
}

// UndefinedBehaviorSanitizer needs descriptors to look at an object, so its server ends without.
#ifndef __SANITIZE_ADDRESS__
TEST_F(Limits, ServerWithoutDescriptorsAcceptsAgainWhenSomeAreFree) {
  server_ = std::make_unique<Process>(
      "/bin/sh", std::vector<std::string>{"sh", "-c", "ulimit -n 40; exec " MVQ_QCMAP_SERVER});
  ASSERT_TRUE(server_->WaitForOutput("listening on"));
  std::vector<int> peers;
  while (peers.size() < 40) peers.push_back(RawSocket(path_));
  EXPECT_TRUE(server_->WaitForOutput("cannot accept: Too many open files\n"));
  EXPECT_TRUE(server_->WaitForOutput(" more complaints left out\n"));
  const std::string complaints = server_->output();
  EXPECT_LE(std::stoul(complaints.substr(complaints.rfind(": ") + 2)), 20u) << "ten in a second";
  const auto start = steady_clock::now();
  for (const int fd : peers) ::close(fd);
  EXPECT_TRUE(Eventually([&] { return QCMAP_Client(nullptr).mobile_ap_handle != 0; }));
  EXPECT_LE(steady_clock::now() - start, milliseconds(500));
}
#endif

TEST_F(Limits, GuessedTicketHarmsOnlyTheGuesser) {
  Start();
  const int requests = RawSocket(path_), indications = RawSocket(path_);
  const auto ticket = OpenHalf(requests);
  for (uint32_t bit = 1; bit != 0; bit <<= 1) {
    const int guesser = RawSocket(path_);
    Send(guesser, OpenSession({ticket.handle, {ticket.key[0] ^ bit, ticket.key[1]}}));
    EXPECT_TRUE(Receive(guesser).empty());
    ::close(guesser);
  }
  Send(indications, OpenSession(ticket));
  EXPECT_FALSE(Receive(indications).empty()) << "the owner still gets in";
  const int third = RawSocket(path_);
  Send(third, OpenSession(ticket));
  EXPECT_TRUE(Receive(third).empty()) << "a session has two connections";
  ::close(third);
  Send(indications, OpenSession(ticket));
  EXPECT_TRUE(Receive(indications).empty()) << "a request on the wrong connection ends the session";
  EXPECT_TRUE(Receive(requests).empty());
  ::close(requests);
  ::close(indications);
}

/// The received indications of one client. They are numbered by their status.
struct Subscriber {
  std::mutex gate;
  std::atomic<uint32_t> received{0}, out_of_order{0};
} subscriber;

void Count(qmi_client_struct*, unsigned int id, void* bytes, unsigned int length, void*) {
  const std::lock_guard<std::mutex> lock(subscriber.gate);
  qcmap_msgr_status_ind_msg_v01 record{};
  qmi_client_message_decode(nullptr, QMI_IDL_INDICATION, id, bytes, length, &record, sizeof record);
  subscriber.out_of_order += record.status != subscriber.received + 1;
  ++subscriber.received;
}

// Four times what a busy modem indicates in a minute, 100 a second.
TEST_F(Limits, SubscriberThatSleepsForAMinuteStaysBelowAQuarter) {
  constexpr uint32_t kCount = 4 * 60 * 100;
  subscriber.received = subscriber.out_of_order = 0;
  Start({"--console"});
  const size_t kilobytes = Status();
  const QCMAP_Client client(Count);
  std::string commands;
  for (uint32_t i = 1; i <= kCount; ++i) commands += "indicate 0x5e " + std::to_string(i) + "\n";
  {
    const std::lock_guard<std::mutex> asleep(subscriber.gate);
    Console(commands);
  }
  EXPECT_TRUE(Eventually([&] { return subscriber.received == kCount; })) << subscriber.received;
  EXPECT_EQ(subscriber.out_of_order, 0u);
  EXPECT_LE(Status(), kilobytes + 2048);
}

milliseconds Limits::LongestPauseBesideDeafClients() {
  constexpr size_t kDeaf = 120;
  constexpr uint32_t kCount = 3000;
  subscriber.received = subscriber.out_of_order = 0;
  Start({"--console"});
  const size_t kilobytes = Status();
  std::vector<int> deaf;
  while (deaf.size() < 2 * kDeaf) {
    deaf.push_back(RawSocket(path_));
    const auto ticket = OpenHalf(deaf.back());
    deaf.push_back(RawSocket(path_));
    Send(deaf.back(), OpenSession(ticket));
  }
  QCMAP_Client honest(Count);
  std::string commands;
  for (uint32_t i = 1; i <= kCount; ++i) {
    std::string elements;
    sim::AppendElement(elements, sim::kMobileApHandleElement, 1);
    sim::AppendElement(elements, sim::kStatusElement, i);
    // An element that no client knows fills the indication.
    elements += std::string("\x7f\xca\x07", 3) + std::string(0x7ca, '\0');
    commands += "raw 0x5e ";
    for (const char c : elements) {
      char digits[sizeof "ff"];
      std::snprintf(digits, sizeof digits, "%02x", static_cast<unsigned char>(c));
      commands += digits;
    }
    commands += '\n';
  }
  auto writing = std::async(std::launch::async, [&] { Console(commands); });
  milliseconds longest{0};
  while (writing.wait_for(milliseconds(0)) != std::future_status::ready) {
    const auto start = steady_clock::now();
    EXPECT_TRUE(honest.ActivateLAN(nullptr));
    longest =
        std::max(longest, std::chrono::duration_cast<milliseconds>(steady_clock::now() - start));
  }
  EXPECT_TRUE(Eventually([&] { return subscriber.received == kCount; })) << subscriber.received;
  EXPECT_EQ(subscriber.out_of_order, 0u);
  EXPECT_TRUE(server_->WaitForOutput("a client does not read its indications"));
  EXPECT_TRUE(server_->WaitForOutput(std::to_string(kDeaf - 1) + " more complaints left out\n"));
  for (const int fd : deaf) ::close(fd);
  Console("indicate 0x5e " + std::to_string(kCount + 1));
  EXPECT_LE(Status("VmRSS:"), kilobytes + 1024) << "nothing is kept";
  EXPECT_LE(Status(), kilobytes + 16384);
  std::printf("waited at most %d ms, and the server grew by %zu kB\n",
              static_cast<int>(longest.count()), Status() - kilobytes);
  return longest;
}

TEST_F(Limits, DeafClientsCostLittleMemoryAndNobodyElseWaits) {
  // A busy machine may cause a pause, too, but hardly three times in a row.
  for (int rounds = 3; LongestPauseBesideDeafClients() > milliseconds(50); --rounds)
    ASSERT_GT(rounds, 1) << "each time somebody else waited longer than 50 ms";
}

}  // namespace
