/// Servers that die, hang or send nonsense, clients that send nonsense, and the damage to others.
#include <future>

#include "every_request.h"
#include "protocol/indication.h"
#include "protocol/messages.h"
#include "raw_peer.h"
#include "simulated_server.h"

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

/// How long the client waits for a reply.
constexpr milliseconds kLimit{600};
constexpr uint32_t kUnknownIndication = 0x0D;

class Fault : public SimulatedServer {
 protected:
  Fault() { ::setenv("QCMAP_TIMEOUT_MS", std::to_string(kLimit.count()).c_str(), 1); }
};

milliseconds Since(steady_clock::time_point start) {
  return std::chrono::duration_cast<milliseconds>(steady_clock::now() - start);
}

/// Calls `use` with every shorter form of `bytes`, with longer ones, and with some that differ in
/// one byte.
void ForEachMutant(const std::string& bytes, const std::function<void(const std::string&)>& use) {
  for (size_t size = 1; size < bytes.size(); ++size) use(bytes.substr(0, size));
  for (const size_t more : {1u, 4u, 500u, 5000u}) use(bytes + std::string(more, '\1'));
  for (size_t i = 0; i < 5 * bytes.size(); ++i) {
    std::string mutant = bytes;
    mutant[i / 5] = static_cast<char>(mutant[i / 5] ^ "\x01\x02\x10\x80\xFF"[i % 5]);
    use(mutant);
  }
}

TEST_F(Fault, EveryRequestFailsWithoutAServerAndAtOnceAfterItsEnd) {
  QCMAP_Client never_connected(nullptr);
  Start();
  QCMAP_Client left_alone(nullptr);
  server_.reset();
  Start();  // No client connects to a server that was started after it.
  for (QCMAP_Client* client : {&never_connected, &left_alone}) {
    for (const Request& request : kEveryRequest) {
      const auto start = steady_clock::now();
      qmi_error_type_v01 error{};
      EXPECT_FALSE(request.send(*client, &error)) << request.name;
      EXPECT_EQ(error, QMI_ERR_INTERNAL_V01) << request.name;
      EXPECT_LE(Since(start), kLimit / 2) << request.name;
    }
  }
}

TEST_F(Fault, HangingServerCostsNoMoreThanTheLimitAndIsUsableAfterwards) {
  Start();
  QCMAP_Client client(nullptr);
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
  ASSERT_TRUE(client.GetMobileAPStatus(&status, &error));
  EXPECT_EQ(status, QCMAP_MSGR_MOBILE_AP_STATUS_CONNECTED_V01);

  server_->Signal(SIGSTOP);
  auto pending = std::async([&] { return client.GetMobileAPStatus(&status, &error); });
  const auto killed = steady_clock::now();
  server_->Signal(SIGKILL);
  EXPECT_FALSE(pending.get());
  EXPECT_LE(Since(killed), kLimit / 2) << "no need to wait for the limit";
  EXPECT_EQ(error, QMI_ERR_INTERNAL_V01);
}

TEST_F(Fault, RequestOfAClientThatIsGoneIsNotCarriedOut) {
  Start({"--console"});
  const int leaving = RawSocket(path_, false);
  Send(leaving, OpenSession());
  EXPECT_FALSE(Receive(leaving).empty());
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
  Start();
  QCMAP_Client honest(nullptr);
  const std::string open = OpenSession();
  const std::string connect =
      sim::MakeDatagram(sim::message::ConnectBackHaul::kId, 8, 0, std::string("\1\0\0\0", 4));
  const auto descriptors = [&] {
    std::filesystem::directory_iterator all("/proc/" + std::to_string(server_->pid()) + "/fd");
    return std::distance(begin(all), end(all));
  };
  const auto before = descriptors();
  const auto send = [&](const std::vector<std::string>& datagrams) {
    const int fd = RawSocket(path_, false);
    size_t answered = 0;
    for (const std::string& datagram : datagrams) {
      Send(fd, datagram);
      answered += !Receive(fd).empty();
    }
    EXPECT_GE(answered + 1, datagrams.size()) << "well-formed ones first";
    ::close(fd);
  };
  const std::string into_honest = OpenSession({honest.mobile_ap_handle, {}});
  send({into_honest});
  ForEachMutant(into_honest, [&](const std::string& mutant) { send({mutant}); });
  ForEachMutant(connect, [&](const std::string& mutant) { send({open, mutant}); });
  EXPECT_TRUE(honest.GetMobileAPStatus(kAnything, nullptr));
  EXPECT_TRUE(Eventually([&] { return descriptors() == before; }));
}

/// Accepts one session. It sends the answer to each request twice: as an indication, and with the
/// request's transaction number as the reply.
class LyingServer {
 public:
  explicit LyingServer(const std::string& path)
      : listening_(RawSocket(path, true)), thread_([this] { Serve(); }) {}
  ~LyingServer() {
    thread_.join();
    ::close(listening_);
  }
  void SetAnswer(const std::string& answer) {
    const std::lock_guard<std::mutex> lock(mutex_);
    answer_ = answer;
  }

 private:
  void Serve() {
    const std::string ticket("\5\0\0\0\0\0\0\0\0\0\0", sizeof(sim::SessionTicket));
    int fds[2];
    for (uint32_t i = 0; i < 2; ++i) {
      fds[i] = ::accept(listening_, nullptr, nullptr);
      Receive(fds[i]);
      Send(fds[i], sim::MakeDatagram(sim::message::OpenSession::kId, 1 + i, 0, ticket));
    }
    for (std::string request; !(request = Receive(fds[0])).empty();) {
      const std::lock_guard<std::mutex> lock(mutex_);
      Send(fds[1], answer_);
      if (answer_.size() >= 8) answer_.replace(4, 4, request, 4, 4);
      Send(fds[0], answer_);
    }
    for (const int fd : fds) ::close(fd);
  }

  const int listening_;
  std::mutex mutex_;
  std::string answer_;
  std::thread thread_;
};

TEST_F(Fault, LyingServerIsNotBelieved) {
  std::filesystem::create_directory(directory_ + "/made");
  LyingServer server(path_);
  QCMAP_Client client(
      [](qmi_client_struct* handle, unsigned int id, void* bytes, unsigned int size, void*) {
        for (const unsigned int record_size : {8u, 28u, 108u}) {
          const std::unique_ptr<char[]> record(new char[record_size]);
          qmi_client_message_decode(handle, QMI_IDL_INDICATION, id, bytes, size, record.get(),
                                    record_size);
        }
      });
  ASSERT_EQ(client.mobile_ap_handle, 5u);
  qmi_error_type_v01 error{};
  for (int value = 0; value < 256; ++value) {
    unsigned char flag = 7;
    server.SetAnswer(
        sim::MakeDatagram(sim::message::GetRoaming::kId, 0, 0, {static_cast<char>(value)}));
    ASSERT_TRUE(client.GetRoaming(&flag, &error));
    EXPECT_EQ(flag, value != 0);
  }
  static qcmap_msgr_vlan_conf_t vlans;
  server.SetAnswer(
      sim::MakeDatagram(sim::message::GetVLANConfig::kId, 0, 0, std::string(sizeof vlans, '\xFF')));
  EXPECT_TRUE(client.GetVLANConfig(&vlans, &error));
  EXPECT_EQ(vlans.vlan_config_len, 2000) << "clamped to what there is";
  constexpr size_t kSize = sizeof(qcmap_msgr_lan_config_v01);
  for (const size_t size : {size_t{0}, kSize - 1, kSize, kSize + 1}) {
    server.SetAnswer(
        sim::MakeDatagram(sim::message::GetLANConfig::kId, 0, 0, std::string(size, '\1')));
    EXPECT_EQ(client.GetLANConfig(kAnything, &error), size == kSize) << size << " bytes";
  }
  server.SetAnswer(
      sim::MakeDatagram(sim::message::GetRoaming::kId, 0, 0, std::string(kSize, '\1')));
  EXPECT_FALSE(client.GetLANConfig(kAnything, &error)) << "the reply to another request";
  for (const uint32_t id :
       {QMI_QCMAP_MSGR_BRING_UP_WWAN_IND_V01, QMI_QCMAP_MSGR_TEAR_DOWN_WWAN_IND_V01,
        QMI_QCMAP_MSGR_WWAN_STATUS_IND_V01, QMI_QCMAP_MSGR_MOBILE_AP_STATUS_IND_V01,
        QMI_QCMAP_MSGR_STATION_MODE_STATUS_IND_V01, kUnknownIndication}) {
    ForEachMutant(sim::MakeIndication({id, 3, 101}, 1), [&](const std::string& mutant) {
      server.SetAnswer(mutant);
      EXPECT_FALSE(client.GetLANConfig(kAnything, &error));
      EXPECT_NE(error, 0);
    });
  }
}

}  // namespace
