/// Many clients at once, some of which misbehave, and what the honest ones notice of that.
#include <sched.h>
#include <sys/prctl.h>
#include <sys/wait.h>

#include <atomic>
#include <random>

#include "every_request.h"
#include "measure.h"
#include "simulated_server.h"

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;
using std::chrono::seconds;

constexpr size_t kHonest = 60;
/// Between two requests of a client, and between two events.
constexpr milliseconds kRequestInterval{20}, kEventInterval{10};
constexpr unsigned kEventId = 0x5e;

/// Events are numbered by their status.
std::atomic<uint32_t> first_event{1}, received{0}, out_of_order{0};

void OnIndication(qmi_client_struct*, unsigned id, void* bytes, unsigned length, void*) {
  if (id != kEventId) return;
  // Each client has a thread of its own for its indications.
  thread_local uint32_t expected = first_event;
  qcmap_msgr_status_ind_msg_v01 record{};
  qmi_client_message_decode(nullptr, QMI_IDL_INDICATION, id, bytes, length, &record, sizeof record);
  if (record.status != expected) ++out_of_order;
  expected = record.status + 1;
  ++received;
}

void BeDeaf(const std::string& path) {
  const std::string request = sim::MakeDatagram(sim::message::ActivateLAN::kId, 2, 0, "");
  while (!testing::Test::HasFailure()) {
    const int requests = RawSocket(path), indications = RawSocket(path);
    Send(indications, OpenSession(OpenHalf(requests)));
    // The server cuts it off in the end.
    while (::send(requests, request.data(), request.size(), MSG_NOSIGNAL) > 0) continue;
    ::close(requests);
    ::close(indications);
  }
}

void SendGarbage(const std::string& path) {
  std::mt19937 random(1);
  while (!testing::Test::HasFailure()) {
    const int fd = RawSocket(path);
    if (random() % 2 == 0) OpenHalf(fd);
    std::string bytes;
    do {
      bytes.resize(1 + random() % 600);
      for (char& byte : bytes) byte = static_cast<char>(random());
    } while (::send(fd, bytes.data(), bytes.size(), MSG_NOSIGNAL) > 0);
    ::close(fd);
  }
}

void ComeAndGo(const std::string&) {
  while (!testing::Test::HasFailure())
    EXPECT_TRUE(QCMAP_Client(OnIndication).ActivateLAN(nullptr))
        << "the client that comes and goes";
}

void DieEverySecond(const std::string&) {
  for (;;) {
    const pid_t victim = ::fork();
    if (victim == 0) {
      ::prctl(PR_SET_PDEATHSIG, SIGKILL);
      QCMAP_Client client(OnIndication);
      for (;;) client.ActivateLAN(nullptr);
    }
    ::sleep(1);
    ::kill(victim, SIGKILL);
    ::waitpid(victim, nullptr, 0);
  }
}

/// The misbehaving clients, each in a process of its own. A process ends when it is treated other
/// than it expects.
class Misbehaving {
 public:
  explicit Misbehaving(const std::string& path) {
    for (void (*const misbehave)(const std::string&) :
         {BeDeaf, SendGarbage, ComeAndGo, DieEverySecond}) {
      processes_.push_back(::fork());
      if (processes_.back() != 0) continue;
      ::prctl(PR_SET_PDEATHSIG, SIGKILL);
      misbehave(path);
      ::_exit(1);
    }
  }
  ~Misbehaving() {
    for (const pid_t process : processes_) {
      int status = 0;
      ::kill(process, SIGKILL);
      ::waitpid(process, &status, 0);
      EXPECT_FALSE(WIFEXITED(status)) << "a misbehaving client was treated badly";
    }
  }

 private:
  std::vector<pid_t> processes_;
};

class Soak : public SimulatedServer {
 protected:
  /// Lets honest clients send requests and receive events. Returns how long requests took, in
  /// microseconds, in ascending order.
  std::vector<double> ServeHonest(seconds duration) {
    first_event = next_event_;
    received = out_of_order = 0;
    std::vector<std::unique_ptr<QCMAP_Client>> clients;
    while (clients.size() < kHonest)
      clients.push_back(std::make_unique<QCMAP_Client>(OnIndication));
    std::vector<std::vector<double>> delays(kHonest);
    std::vector<std::thread> threads;
    std::atomic<int> refused{0};
    const auto start = Clock::now();
    for (size_t number = 0; number < kHonest; ++number) {
      threads.emplace_back([&, number] {
        auto next = start + kRequestInterval * number / kHonest;
        for (; next < start + duration; next += kRequestInterval) {
          std::this_thread::sleep_until(next);
          delays[number].push_back(1e6 * SecondsOf([&] {
                                     if (!clients[number]->GetWWANPolicyList(kAnything, nullptr))
                                       ++refused;
                                   }));
        }
      });
    }
    for (auto next = start; next < start + duration; next += kEventInterval) {
      std::this_thread::sleep_until(next);
      server_->Write("indicate " + std::to_string(kEventId) + " " + std::to_string(next_event_++) +
                     "\n");
    }
    for (std::thread& thread : threads) thread.join();
    const size_t expected = kHonest * (next_event_ - first_event);
    EXPECT_TRUE(Eventually([&] { return received == expected; })) << received << " of " << expected;
    EXPECT_EQ(out_of_order, 0u) << "events are lost, repeated or in the wrong order";
    EXPECT_EQ(refused, 0) << "requests of honest clients failed";
    std::vector<double> all;
    for (const auto& of_one : delays) all.insert(all.end(), of_one.begin(), of_one.end());
    std::sort(all.begin(), all.end());
    return all;
  }

  uint32_t next_event_ = 1;
};

/// Keeps this thread, and what it starts, on the first processor or on all others.
void UseProcessors(bool first) {
  cpu_set_t set;
  CPU_ZERO(&set);
  static const unsigned count = std::thread::hardware_concurrency();
  for (unsigned number = first ? 0 : 1; number < (first ? 1 : count); ++number)
    CPU_SET(number, &set);
  ::sched_setaffinity(0, sizeof set, &set);
}

TEST_F(Soak, HonestClientsNoticeNothingOfTheOthers) {
  const char* const text = ::getenv("QCMAP_SOAK_SECONDS");
  const seconds duration(text != nullptr ? std::stoi(text) : 1);
  ::setenv("QCMAP_TIMEOUT_MS", "10000", 1);  // for machines that do other things too
  UseProcessors(true);
  Start({"--console"});
  UseProcessors(false);
  const auto descriptors = Descriptors();
  const auto quiet = ServeHonest(std::max(duration / 10, seconds(1)));
  const size_t kilobytes = Status("VmRSS:");
  std::vector<double> loud;
  {
    const Misbehaving misbehaving(path_);
    loud = ServeHonest(duration);
  }
  EXPECT_TRUE(Eventually([&] { return Descriptors() == descriptors; })) << Descriptors();
  EXPECT_LE(Status("VmRSS:"), kilobytes + 1024) << "memory of the server";
  std::printf("%zu requests and %u events to each of %zu honest clients\n", loud.size(),
              next_event_ - first_event, kHonest);
  std::printf("server: %zu kB before, %zu kB after\n", kilobytes, Status("VmRSS:"));
  const double alone = quiet[quiet.size() * 99 / 100], beside = loud[loud.size() * 99 / 100];
  std::printf(
      "99 of 100 requests took at most %.0f us without the others, %.0f us with them: %.2f\n",
      alone, beside, beside / alone);
  // Only in a long run, because other programs disturb a short one.
  if (text != nullptr) {
    EXPECT_LE(beside, 2 * alone);
  }
}

}  // namespace
