/// Measures how long the server and the tool take to start.
#include <fcntl.h>
#include <qcmap_client.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <stdexcept>

#include "measure.h"
#include "road.h"

namespace {

constexpr int kRounds = 41;

void RunToEnd(std::vector<std::string> words) {
  std::vector<char*> argv;
  for (std::string& word : words) argv.push_back(word.data());
  argv.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  ::posix_spawn_file_actions_init(&actions);
  ::posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
  pid_t pid;
  int status = 0;
  const int error = ::posix_spawn(&pid, argv[0], &actions, nullptr, argv.data(), environ);
  ::posix_spawn_file_actions_destroy(&actions);
  if (error != 0 || ::waitpid(pid, &status, 0) != pid || status != 0)
    throw std::runtime_error(words[0] + " failed");
}

void StartServerAndAsk() {
  const auto server = StartServer();
  QCMAP_Client client(nullptr);
  qmi_error_type_v01 error;
  qcmap_msgr_mobile_ap_status_enum_v01 status;
  if (!client.GetMobileAPStatus(&status, &error)) throw std::runtime_error("no answer");
}

}  // namespace

void MeasureStarts() {
  const auto run_nothing = [] { RunToEnd({MVQ_QCMAP_BARE_TOOL}); };
  Print("server start to first answer", Compare(kRounds, 1, StartServerAndAsk, run_nothing));
  const auto server = StartServer();
  const auto show_status = [] { RunToEnd({MVQ_QCMAP_TOOL, "status"}); };
  Print("qcmapctl status", Compare(kRounds, 1, show_status, run_nothing));
  Print("only the requests of qcmapctl status", Compare(
                                                    kRounds, 1,
                                                    [] {
                                                      RunToEnd({MVQ_QCMAP_BARE_TOOL, "requests"});
                                                    },
                                                    run_nothing));
}
