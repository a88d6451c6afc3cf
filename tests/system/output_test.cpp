/// What the server prints when nobody reads it, and lines that are not commands.
#include <fcntl.h>
#include <sys/wait.h>

#include <fstream>
#include <regex>

#include "simulated_server.h"

namespace {

using Output = SimulatedServer;

std::string Repeat(const std::string& text, int times) {
  std::string repeated;
  while (times-- > 0) repeated += text;
  return repeated;
}

/// How many lines were printed, with those that were only counted.
size_t CountLines(const std::string& output) {
  static const std::regex note("(console: )?([0-9]+) (lines|more complaints) left out");
  std::istringstream lines(output);
  size_t count = 0;
  for (std::string line; std::getline(lines, line);) {
    std::smatch parts;
    const bool is_note = line.find("left out") != std::string::npos;
    count += is_note && std::regex_match(line, parts, note) ? std::stoul(parts[2]) : 1;
  }
  return count;
}

TEST_F(Output, ThatNobodyReadsStopsNeitherTheServerNorItsWriter) {
  const struct {
    const char* what;
    std::string lines;
    const char* note;
    size_t printed;
  } rows[] = {
      {"a full standard output", Repeat("show\n", 300), " lines left out\n", size_t{300} * 153},
      {"wrong lines", Repeat("bogus\n", 3000), " more complaints left out\n", 3000},
      {"an endless line", std::string(8000000, 'x') + "\n", "line 1: is too long\n", 1},
      {"an escape sequence", "\x1b[2J\n", "unknown command '\\x1b[2J'", 1}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.what);
    Start({"--console", "--profiles", "50"});
    const size_t kilobytes = Status();
    server_->Write(row.lines + "fail ActivateLAN\n");
    QCMAP_Client client(nullptr);
    EXPECT_TRUE(Eventually([&] { return !client.ActivateLAN(nullptr); })) << "all lines are read";
    EXPECT_TRUE(client.EnableMobileAP(nullptr));
    EXPECT_TRUE(server_->WaitForOutput(row.note)) << server_->output().substr(0, 1000);
    Console("echo again");  // the lines after it are carried out, and printed again
    EXPECT_LE(Status(), kilobytes + 4096);
    EXPECT_EQ(CountLines(server_->output()), 1 + row.printed + 2) << "nothing is lost uncounted";

    server_->Write(row.lines);
    EXPECT_TRUE(QCMAP_Client(nullptr).EnableMobileAP(nullptr));
    server_->Signal(SIGTERM);
    const auto start = std::chrono::steady_clock::now();
    siginfo_t ended{};
    EXPECT_TRUE(Eventually([&] {
      ::waitid(P_PID, static_cast<id_t>(server_->pid()), &ended, WEXITED | WNOHANG | WNOWAIT);
      return ended.si_pid != 0;
    }));
    EXPECT_LE(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));
    EXPECT_EQ(server_->Wait(), 0);
  }
}

TEST_F(Output, LeavesTheModeOfSharedDescriptorsAlone) {
  Start({"--console"});
  Console("show");
  for (const char* descriptor : {"0", "1", "2"}) {
    std::ifstream info("/proc/" + std::to_string(server_->pid()) + "/fdinfo/" + descriptor);
    std::string word;
    unsigned flags = O_NONBLOCK;
    while (info >> word && word != "flags:") continue;
    info >> std::oct >> flags;
    EXPECT_EQ(flags & O_NONBLOCK, 0u) << "descriptor " << descriptor;
  }
}

TEST_F(Output, TakesNoPlaceOfAClosedStandardStream) {
  server_ = std::make_unique<Process>(
      "/bin/sh", std::vector<std::string>{"sh", "-c", "exec " MVQ_QCMAP_SERVER " <&- >&- 2>&-"});
  EXPECT_TRUE(Eventually([&] { return QCMAP_Client(nullptr).mobile_ap_handle != 0; }));
  for (const char* descriptor : {"0", "1", "2"})
    EXPECT_EQ(std::filesystem::read_symlink("/proc/" + std::to_string(server_->pid()) + "/fd/" +
                                            descriptor),
              "/dev/null");
}

}  // namespace
