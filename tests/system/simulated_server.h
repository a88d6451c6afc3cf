/// Gives each test a socket of its own and a simulated server that listens on it.
#pragma once

#include <gtest/gtest.h>
#include <qcmap_client.h>
#include <signal.h>
#include <stdlib.h>

#include <condition_variable>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <regex>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "mox/vendor/qcom/qcmap/subscription.h"
#include "process.h"
#include "protocol/control.h"
#include "raw_peer.h"

using mox::Result;
using mox::util::EventDic;
using mox::util::IPFamily;
using mox::vendor::qcom::qcmap::QcmapWrapper;

inline std::string ReadFile(const std::string& path) {
  std::ostringstream text;
  text << std::ifstream(path).rdbuf();
  return text.str();
}

class SimulatedServer : public testing::Test {
 protected:
  SimulatedServer() {
    char made[] = "/tmp/qcmap-test-XXXXXX";
    directory_ = ::mkdtemp(made);
    path_ = directory_ + "/made/server";
    log_ = directory_ + "/log";
    ::setenv("QCMAP_SOCKET", path_.c_str(), 1);
  }
  ~SimulatedServer() override {
    delete std::exchange(QcmapWrapper::s_ins_, nullptr);
    Stop();
    std::filesystem::remove_all(directory_);
  }

  static std::unique_ptr<Process> Run(std::vector<std::string> options) {
    options.insert(options.begin(), "QCMAP_ConnectionManager");
    return std::make_unique<Process>(MVQ_QCMAP_SERVER, options);
  }
  /// Expects that a server cannot start, and why.
  static void ExpectEnd(const std::string& reason, const std::vector<std::string>& options = {}) {
    const auto server = Run(options);
    EXPECT_EQ(server->Wait(), 1) << reason;
    EXPECT_EQ(server->output(), "QCMAP_ConnectionManager: " + reason + "\n");
  }
  void Start(const std::vector<std::string>& options = {}) {
    Stop();
    server_ = Run(options);
    ASSERT_TRUE(server_->WaitForOutput("listening on " + path_ + "\n")) << server_->output();
  }
  /// Ends the server, if there is one. Its complaints must be explained in its manual page.
  void Stop() {
    if (server_ == nullptr) return;
    server_->Signal(SIGKILL);
    server_->ReadAll();
    const std::string page = ReadFile(MVQ_QCMAP_SOURCE "/docs/man/QCMAP_ConnectionManager.1.scd");
    std::istringstream lines(server_->output());
    for (std::string line; std::getline(lines, line);) {
      // What ends in a bracket repeats the wrong words, with a hint.
      const bool is_explained = line.rfind("QCMAP_ConnectionManager: ", 0) == 0 ||
                                (line.rfind("console: ", 0) == 0 && line.back() != ')');
      line = std::regex_replace(line.substr(line.find(": ") + 2), std::regex("[0-9]+"), "N");
      EXPECT_TRUE(!is_explained || page.find("\n*" + line + "*") != std::string::npos) << line;
    }
    server_.reset();
  }
  /// Sends a command to the server's control socket and returns the answer, which must be of this
  /// kind.
  std::string Control(const std::string& command, char kind = sim::kTookEffect) const {
    const int fd = RawSocket(sim::ControlPath(path_));
    Send(fd, command);
    std::string answer, part;
    do {
      part = Receive(fd);
      answer += part.substr(std::min<size_t>(part.size(), 1));
    } while (part[0] == sim::kMoreFollows);
    ::close(fd);
    EXPECT_EQ(part[0], kind) << command << ": " << answer;
    return answer;
  }
  /// Sends commands to the server's console and waits until it has carried them out.
  void Console(const std::string& commands) {
    server_->Write(commands + "\necho end" + std::to_string(++commands_) + "\n");
    ASSERT_TRUE(server_->WaitForOutput("end" + std::to_string(commands_) + "\n"));
  }
  /// What the server has recorded in the file log_, without what differs from run to run.
  std::string Record() const {
    return std::regex_replace(ReadFile(log_), std::regex("\"(monotonic_us|pid)\":[0-9]+,"), "");
  }
  auto Descriptors() const {
    std::filesystem::directory_iterator all("/proc/" + std::to_string(server_->pid()) + "/fd");
    return std::distance(begin(all), end(all));
  }
  /// A number of the server's status: by default, the most kilobytes that have been in use at one
  /// time. 0 where a sanitizer uses much memory of its own.
  size_t Status(const std::string& field = "VmHWM:") const {
#ifdef __SANITIZE_ADDRESS__
    return 0;
#endif
    std::ifstream status("/proc/" + std::to_string(server_->pid()) + "/status");
    std::string word;
    size_t number = 0;
    while (status >> word && word != field) continue;
    status >> number;
    return number;
  }

  std::string directory_, path_, log_;
  std::unique_ptr<Process> server_;
  int commands_ = 0;
};

/// What a subscriber has received, for instance as "WWAN_CONNECTED 102 ipv4".
class Events {
 public:
  explicit Events(QcmapWrapper& wrapper, std::function<void()> then = {}) : wrapper_(wrapper) {
    Subscribe(wrapper, this, [this, then](EventDic& event) {
      if (then) then();
      const std::lock_guard<std::mutex> lock(mutex_);
      received_.push_back(Name(event.event_) + " " + event.params_[EventDic::PROFILE_HANDLE] +
                          " ipv" + event.params_[EventDic::IP_VERSION]);
      changed_.notify_all();
    });
  }
  ~Events() { Unsubscribe(wrapper_, this); }

  /// Waits until there are `count` events or time is up, and returns all there are.
  std::vector<std::string> WaitFor(size_t count) {
    std::unique_lock<std::mutex> lock(mutex_);
    changed_.wait_for(lock, kPatience, [&] { return received_.size() >= count; });
    return received_;
  }

 private:
  static std::string Name(uint32_t code) {
    using namespace mox::vendor::qcom::qcmap;
    static const std::map<uint32_t, std::string> names = {
        {BRING_UP_CONNECTED, "BRING_UP_CONNECTED"},
        {BRING_UP_CONNECTION_FAILED, "BRING_UP_CONNECTION_FAILED"},
        {TEAR_DOWN_DISCONNECTED, "TEAR_DOWN_DISCONNECTED"},
        {TEAR_DOWN_DISCONNECTION_FAILED, "TEAR_DOWN_DISCONNECTION_FAILED"},
        {WWAN_CONNECTED, "WWAN_CONNECTED"},
        {WWAN_DISCONNECTED, "WWAN_DISCONNECTED"}};
    const auto name = names.find(code);
    return name == names.end() ? "event " + std::to_string(code) : name->second;
  }

  QcmapWrapper& wrapper_;
  std::mutex mutex_;
  std::condition_variable changed_;
  std::vector<std::string> received_;
};
