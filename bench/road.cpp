/// Compares requests and indications with a bare exchange of as many bytes, on one core.
#include "road.h"

#include <qcmap_client.h>
#include <sched.h>
#include <semaphore.h>
#include <stdlib.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <stdexcept>

#include "bare_server.h"
#include "crowd.h"
#include "measure.h"
#include "protocol/messages.h"

namespace {

constexpr size_t kMostClients = 64;
constexpr int kRounds = 101;
/// A round must be short, so that little else happens on the core meanwhile.
constexpr int kExchangesPerRound = 100;
constexpr size_t kRequestBytes = sizeof(sim::Header);
constexpr size_t kStatusReplyBytes =
    sizeof(sim::Header) + sizeof(qcmap_msgr_mobile_ap_status_enum_v01);
constexpr size_t kIndicationBytes = sizeof(sim::Header) + 14;

/// Keeps this thread, and what it starts, on the core on which it runs.
class OneCore {
 public:
  OneCore() {
    ::sched_getaffinity(0, sizeof before_, &before_);
    cpu_set_t one;
    CPU_ZERO(&one);
    CPU_SET(::sched_getcpu(), &one);
    ::sched_setaffinity(0, sizeof one, &one);
  }
  ~OneCore() { ::sched_setaffinity(0, sizeof before_, &before_); }

 private:
  cpu_set_t before_;
};

void AskForStatus(QCMAP_Client& client) {
  qmi_error_type_v01 error;
  qcmap_msgr_mobile_ap_status_enum_v01 status;
  if (!client.GetMobileAPStatus(&status, &error)) throw std::runtime_error("status refused");
}

void AskForPolicies(QCMAP_Client& client) {
  qmi_error_type_v01 error;
  sim::PolicyList list;
  if (!client.GetWWANPolicyList(&list, &error) || list.policy_list_len != 50)
    throw std::runtime_error("no list of 50 policies");
}

void CompareExchanges(const std::string& name, size_t reply_bytes, void (*ask)(QCMAP_Client&)) {
  QCMAP_Client client(nullptr);
  const BareServer bare(Duty::ANSWER_ONE, 1, reply_bytes);
  const auto own = [&] {
    for (int i = 0; i < kExchangesPerRound; ++i) ask(client);
  };
  const auto reference = [&] {
    for (int i = 0; i < kExchangesPerRound; ++i) {
      bare.Send(0, kRequestBytes);
      bare.Receive(0);
    }
  };
  Print(name, Compare(kRounds, kExchangesPerRound, own, reference));
}

void CompareClientsAtOnce(size_t clients) {
  const int exchanges = static_cast<int>(std::max<size_t>(kExchangesPerRound / clients, 4));
  std::vector<std::unique_ptr<QCMAP_Client>> clients_of_server;
  for (size_t i = 0; i < clients; ++i)
    clients_of_server.push_back(std::make_unique<QCMAP_Client>(nullptr));
  const BareServer bare(Duty::ANSWER_MANY, clients, kStatusReplyBytes);
  Crowd crowd(clients);
  const auto own = [&] {
    crowd.Run([&](size_t number) {
      for (int i = 0; i < exchanges; ++i) AskForStatus(*clients_of_server[number]);
    });
  };
  const auto reference = [&] {
    crowd.Run([&](size_t number) {
      for (int i = 0; i < exchanges; ++i) {
        bare.Send(number, kRequestBytes);
        bare.Receive(number);
      }
    });
  };
  Print("small request, " + std::to_string(clients) + " at once",
        Compare(kRounds, exchanges * static_cast<int>(clients), own, reference));
}

/// How many indications the clients have received.
std::atomic<size_t> received{0};
sem_t all_received;

void Count() {
  if (++received % kMostClients == 0) ::sem_post(&all_received);
}
void AwaitAll() {
  while (::sem_wait(&all_received) != 0) {
  }
}

void CompareIndications(Process& server) {
  ::sem_init(&all_received, 0, 0);
  const auto on_indication = [](qmi_client_struct*, unsigned, void*, unsigned, void*) { Count(); };
  std::vector<std::unique_ptr<QCMAP_Client>> clients;
  for (size_t i = 0; i < kMostClients; ++i)
    clients.push_back(std::make_unique<QCMAP_Client>(on_indication));
  const BareServer bare(Duty::INDICATE_TO_ALL, kMostClients, kIndicationBytes);
  std::vector<std::thread> receivers;
  std::atomic<bool> ends{false};
  for (size_t number = 0; number < kMostClients; ++number) {
    receivers.emplace_back([&bare, &ends, number] {
      while (!ends) {
        bare.Receive(number);
        Count();
      }
    });
  }
  const std::string command =
      "indicate " + std::to_string(QMI_QCMAP_MSGR_MOBILE_AP_STATUS_IND_V01) + " 1\n";
  const auto own = [&] {
    server.Write(command);
    AwaitAll();
  };
  const auto reference = [&] {
    bare.Send(0, command.size());
    AwaitAll();
  };
  Print("one indication to 64 clients", Compare(kRounds, 1, own, reference));
  ends = true;
  bare.Send(0, command.size());  // for those that wait already
  for (std::thread& receiver : receivers) receiver.join();
}

void MeasureAll() {
  std::printf("%-45s %12s %9s %6s\n", "road to the server", "microseconds", "reference", "ratio");
  {
    const OneCore one_core;
    const auto server = StartServer({"--profiles", "50", "--console"});
    CompareExchanges("small request", kStatusReplyBytes, AskForStatus);
    CompareExchanges("policy list of 50", sizeof(sim::Header) + sizeof(sim::PolicyList),
                     AskForPolicies);
    for (const size_t clients : {size_t{1}, size_t{8}, kMostClients}) CompareClientsAtOnce(clients);
    CompareIndications(*server);
  }
  MeasureStarts();
  MeasureEventStream();
}

}  // namespace

std::unique_ptr<Process> StartServer(const std::vector<std::string>& options) {
  std::vector<std::string> words = {"QCMAP_ConnectionManager"};
  words.insert(words.end(), options.begin(), options.end());
  auto server = std::make_unique<Process>(MVQ_QCMAP_SERVER, words);
  if (!server->WaitForOutput("listening on ")) throw std::runtime_error(server->output());
  return server;
}

int main() {
  char directory[] = "/tmp/qcmap-bench-XXXXXX";
  if (::mkdtemp(directory) == nullptr) return 1;
  ::setenv("QCMAP_SOCKET", (std::string(directory) + "/server").c_str(), 1);
  int status = 0;
  try {
    MeasureAll();
  } catch (const std::exception& error) {
    std::fprintf(stderr, "bench_road: %s\n", error.what());
    status = 1;
  }
  for (const char* left : {"/server", "/server.lock", ""})
    ::remove((std::string(directory) + left).c_str());
  return status;
}
