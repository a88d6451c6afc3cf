/// Every request with every fault, and every fault of indications.
#include <atomic>
#include <future>

#include "every_request.h"
#include "simulated_server.h"

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

enum class Result {
  /// The model grants or refuses the request.
  ANSWER,
  /// Error 77.
  REFUSAL,
  /// Error 3 without waiting for the limit.
  FAILURE,
  /// Error 3 when the limit has passed.
  TIME_OUT,
  /// As ANSWER, but a list is invalid, and that is a FAILURE.
  ANSWER_UNLESS_LIST,
};

struct Cell {
  /// What follows the name of the request in the command.
  const char *fault, *argument;
  Result result;
  /// How long a client waits.
  milliseconds limit;
};

constexpr milliseconds kPatient{5000}, kImpatient{300};
constexpr Cell kFaults[] = {
    {"fail", "77", Result::REFUSAL, kPatient},
    {"late", "100", Result::ANSWER, kPatient},
    {"late", "400", Result::TIME_OUT, kImpatient},
    {"late-reply", "100", Result::ANSWER, kPatient},
    {"late-reply", "400", Result::TIME_OUT, kImpatient},
    {"hang", "", Result::TIME_OUT, kImpatient},
    {"garble", "size", Result::FAILURE, kPatient},
    {"garble", "id", Result::FAILURE, kPatient},
    {"garble", "transaction", Result::TIME_OUT, kImpatient},
    {"garble", "record", Result::ANSWER_UNLESS_LIST, kPatient},
    {"truncate", "", Result::FAILURE, kPatient},
    {"repeat", "", Result::ANSWER, kPatient},
};
constexpr Cell kDeaths[] = {{"die", "before", Result::FAILURE, kPatient},
                            {"die", "after", Result::FAILURE, kPatient},
                            {"die", "replied", Result::ANSWER, kPatient}};

class Matrix : public SimulatedServer {
 protected:
  std::unique_ptr<QCMAP_Client> Client(const Cell& cell) {
    ::setenv("QCMAP_TIMEOUT_MS", std::to_string(cell.limit.count()).c_str(), 1);
    return std::make_unique<QCMAP_Client>(nullptr);
  }
  void Provoke(const Cell& cell, const Request& request) {
    Control(std::string(cell.fault) + " " + request.name + " " + cell.argument + " 1");
  }
  static milliseconds Check(const Cell& cell, const Request& request, QCMAP_Client& client) {
    SCOPED_TRACE(std::string(request.name) + ": " + cell.fault + " " + cell.argument);
    const std::string name = request.name;
    const bool list =
        name == "GetWWANPolicyList" || name == "GetVLANConfig" || name == "GetPDNtoVLANMappings";
    const bool fails = cell.result == Result::FAILURE || cell.result == Result::TIME_OUT ||
                       (cell.result == Result::ANSWER_UNLESS_LIST && list);
    const auto start = steady_clock::now();
    qmi_error_type_v01 error{};
    request.send(client, &error);
    const auto took = std::chrono::duration_cast<milliseconds>(steady_clock::now() - start);
    EXPECT_EQ(error == QMI_ERR_INTERNAL_V01, fails) << error;
    EXPECT_EQ(error == qmi_error_type_v01{77}, cell.result == Result::REFUSAL) << error;
    EXPECT_EQ(took >= cell.limit, cell.result == Result::TIME_OUT) << took.count() << " ms";
    EXPECT_LE(took, cell.limit * 3 / 2) << took.count() << " ms";
    return took;
  }
};

TEST_F(Matrix, EachRequestWithEachFaultEndsAsDocumentedAndTheNextOneWorks) {
  for (const Cell& cell : kFaults) {
    Start();
    std::vector<std::future<void>> checks;
    for (const Request& request : kEveryRequest) {
      Provoke(cell, request);
      checks.push_back(std::async(std::launch::async, [&cell, &request, client = Client(cell)] {
        Check(cell, request, *client);
        constexpr Cell kHealed{"then nothing", "", Result::ANSWER, kPatient};
        Check(kHealed, request, *client);
      }));
    }
    checks.clear();
  }
}

TEST_F(Matrix, NothingWorksOnceTheServerHasDied) {
  constexpr Cell kDead{"then dead", "", Result::FAILURE, kPatient};
  std::vector<milliseconds> times;
  for (const Cell& cell : kDeaths) {
    for (const Request& request : kEveryRequest) {
      Start();
      const auto client = Client(cell);
      Provoke(cell, request);
      times.push_back(Check(cell, request, *client));
      EXPECT_EQ(server_->Wait(), -SIGKILL);
      times.push_back(Check(kDead, request, *client));
      Start();  // No client connects to a server that was started after it.
      Check(kDead, request, *client);
    }
  }
  std::sort(times.begin(), times.end());
  // A busy machine may delay a few.
  EXPECT_LE(times[times.size() * 9 / 10], milliseconds(100));
}

TEST_F(Matrix, HasARowForEachRequest) {
  ASSERT_EQ(std::size(kEveryRequest), size_t{sim::message::OpenSession::kId});
  for (size_t id = 0; id < std::size(kEveryRequest); ++id)
    EXPECT_STREQ(kEveryRequest[id].name, sim::kMessageNames[id]);
}

// The client discards the second reply, so only a peer that speaks bytes sees it.
TEST_F(Matrix, RepeatedReplyIsSentTwice) {
  Start();
  const int fd = RawSocket(path_);
  OpenHalf(fd);
  Control("repeat ActivateLAN 1");
  Send(fd, sim::MakeDatagram(sim::message::ActivateLAN::kId, 7, 0, ""));
  const std::string reply = Receive(fd);
  EXPECT_EQ(Receive(fd), reply);
  ::close(fd);
}

/// The indications that a client has received, such as " own malformed".
std::mutex received_mutex;
std::string received;
std::atomic<uint32_t> own_handle;

void Receive(qmi_client_struct*, unsigned int id, void* bytes, unsigned int length, void*) {
  qcmap_msgr_tear_down_wwan_ind_msg_v01 record{};
  const std::lock_guard<std::mutex> lock(received_mutex);
  if (id == QMI_QCMAP_MSGR_MOBILE_AP_STATUS_IND_V01) {
    received += " end";
  } else if (qmi_client_message_decode(nullptr, QMI_IDL_INDICATION, id, bytes, length, &record,
                                       sizeof record) != 0) {
    received += " malformed";
  } else {
    received += record.mobile_ap_handle == own_handle ? " own" : " foreign";
  }
}

TEST_F(Matrix, EachFaultOfAnIndicationReachesTheClient) {
  const struct {
    const char *fault, *received;
  } rows[] = {{"heal", " own own end"},
              {"lose TEAR_DOWN_WWAN_IND 1", " own end"},
              {"lose indications 2", " end"},
              {"repeat TEAR_DOWN_WWAN_IND 1", " own own own end"},
              {"malform TEAR_DOWN_WWAN_IND 1", " malformed own end"},
              {"misdirect TEAR_DOWN_WWAN_IND 1", " foreign own end"},
              {"delay TEAR_DOWN_WWAN_IND 100 1", " own end own"}};
  Start();
  const QCMAP_Client client(Receive);
  own_handle = client.mobile_ap_handle;
  for (const auto& row : rows) {
    received.clear();
    Control(row.fault);
    for (const char* command : {"indicate 0x23 6 101", "indicate 0x23 6 101", "indicate 0x29 1"})
      Control(command);
    EXPECT_TRUE(Eventually([&] {
      const std::lock_guard<std::mutex> lock(received_mutex);
      return received == row.received;
    })) << row.fault
        << ": " << received;
  }
}

}  // namespace
