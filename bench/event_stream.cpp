/// Sends events to several client programs, one of which is stopped, and checks what they receive.
#include <poll.h>
#include <qcmap_client.h>
#include <qmi_client.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <syslog.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstring>
#include <stdexcept>
#include <thread>

#include "measure.h"
#include "road.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr int kEvents = 100000;
constexpr std::chrono::microseconds kInterval{100};
/// More than the server keeps for a client that does not read.
constexpr int kMostEvents = 4 * kEvents;
constexpr size_t kClients = 8;
constexpr size_t kSleeper = kClients - 1;
constexpr std::chrono::seconds kPatience{10};

/// What a client program has received. Event N has the status N.
struct Received {
  std::atomic<int> next;
  std::atomic<int> out_of_order;
  /// Nanoseconds from the command to the server to the client's callback.
  int64_t delays[kEvents];
};

/// Shared by all programs.
struct Board {
  std::atomic<size_t> clients_ready;
  std::atomic<int64_t> sent_at[kEvents];
  Received received[kClients];
};
Board* board;
size_t own_number;

int64_t Now() {
  return std::chrono::nanoseconds(Clock::now().time_since_epoch()).count();
}

void OnIndication(qmi_client_struct* client, unsigned id, void* bytes, unsigned length, void*) {
  qcmap_msgr_bring_up_wwan_ind_msg_v01 record;
  if (qmi_client_message_decode(client, QMI_IDL_INDICATION, id, bytes, length, &record,
                                sizeof record) != 0)
    return;
  Received& own = board->received[own_number];
  const int event = static_cast<int>(record.call.conn_status);
  if (event != own.next) ++own.out_of_order;
  if (event < kEvents) own.delays[event] = Now() - board->sent_at[event];
  own.next = event + 1;
}

/// A program of its own, whose log goes to `log`.
pid_t StartClient(size_t number, int log) {
  const pid_t pid = ::fork();
  if (pid < 0) throw std::runtime_error("no process");
  if (pid > 0) return pid;
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
  ::dup2(log, STDERR_FILENO);
  ::openlog("client", LOG_PERROR, LOG_USER);
  own_number = number;
  const QCMAP_Client client(OnIndication);
  if (client.mobile_ap_handle == 0) ::_exit(1);
  ++board->clients_ready;
  for (;;) ::pause();
}

template <typename Condition>
bool Await(Condition condition) {
  const auto end = Clock::now() + kPatience;
  while (!condition() && Clock::now() < end)
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  return condition();
}

void Send(Process& server, int event) {
  if (event < kEvents) board->sent_at[event] = Now();
  server.Write("indicate " + std::to_string(QMI_QCMAP_MSGR_WWAN_STATUS_IND_V01) + " " +
               std::to_string(event) + "\n");
}

/// Sends further events until the server has cut off the client that does not read. Returns how
/// many events there were in all.
int SendUntilCut(Process& server) {
  int event = kEvents;
  while (event < kMostEvents && server.output().find("connection closed") == std::string::npos) {
    for (int i = 0; i < 1000; ++i) Send(server, event++);
    const std::string mark = "sent " + std::to_string(event) + "\n";
    server.Write("echo " + mark);
    if (!server.WaitForOutput(mark)) throw std::runtime_error("the server hangs");
  }
  return event;
}

/// Returns the first line of a log that appears in time.
std::string ReadLine(int log) {
  pollfd waited{log, POLLIN, 0};
  char text[512];
  ssize_t size = 0;
  if (::poll(&waited, 1, std::chrono::milliseconds(kPatience).count()) > 0)
    size = ::read(log, text, sizeof text);
  const std::string line(text, static_cast<size_t>(std::max<ssize_t>(size, 0)));
  return line.substr(0, line.find('\n'));
}

void Report(int cut_after, const std::string& log) {
  int lost = 0, out_of_order = 0;
  std::vector<int64_t> delays;
  for (size_t number = 0; number < kSleeper; ++number) {
    const Received& received = board->received[number];
    const int count = std::min<int>(received.next, kEvents);
    lost += kEvents - count;
    out_of_order += received.out_of_order;
    delays.insert(delays.end(), received.delays, received.delays + count);
  }
  std::sort(delays.begin(), delays.end());
  Print("100,000 events to 7 of 8 programs: lost", lost);
  Print("- out of order", out_of_order);
  if (delays.empty()) throw std::runtime_error("no events");
  Print("- command to callback, median", static_cast<double>(delays[delays.size() / 2]) / 1e3);
  Print("- command to callback, 99 of 100",
        static_cast<double>(delays[delays.size() / 100 * 99]) / 1e3);
  std::printf("- the eighth program sleeps and is cut off at event %d at the latest\n", cut_after);
  std::printf("- its log: %s\n", log.c_str());
}

}  // namespace

void MeasureEventStream() {
  void* const memory =
      ::mmap(nullptr, sizeof(Board), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  int log[2];
  if (memory == MAP_FAILED || ::pipe(log) != 0) throw std::runtime_error("no memory or pipe");
  board = new (memory) Board;
  const auto server = StartServer({"--console"});
  std::vector<pid_t> clients;
  for (size_t number = 0; number < kClients; ++number)
    clients.push_back(StartClient(number, log[1]));
  if (!Await([] { return board->clients_ready == kClients; }))
    throw std::runtime_error("the clients do not start");
  ::kill(clients[kSleeper], SIGSTOP);

  const auto start = Clock::now();
  for (int event = 0; event < kEvents; ++event) {
    std::this_thread::sleep_until(start + event * kInterval);
    Send(*server, event);
  }
  Await([] {
    return std::all_of(board->received, board->received + kSleeper,
                       [](const Received& received) { return received.next >= kEvents; });
  });
  const int cut_after = SendUntilCut(*server);
  ::kill(clients[kSleeper], SIGCONT);
  Report(cut_after, ReadLine(log[0]));
  for (const pid_t client : clients) {
    ::kill(client, SIGKILL);
    ::waitpid(client, nullptr, 0);
  }
  ::munmap(memory, sizeof(Board));
}
