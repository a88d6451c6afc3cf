/// Repeats what is kept in files, and expects the server to answer the same.
#include <fstream>
#include <map>
#include <regex>
#include <sstream>

#include "mox/vendor/qcom/qcmap/version.h"
#include "protocol/message_text.h"
#include "records/reader.h"
#include "simulated_server.h"

namespace {

using seam::Reader;
using sim::MessageId;

const std::string kFolder = MVQ_QCMAP_SOURCE "/tests/system/recorded/";

/// The record that a request carries, as bytes. None if nothing was recorded of it.
template <typename Record>
std::string ReadRecord(Reader& reader, MessageId id) {
  if (reader.StartsWith("}")) return {};
  Record record{};
  size_t i = 0;
  const auto read = [&](const auto& value) {
    using Value = std::remove_const_t<std::remove_reference_t<decltype(value)>>;
    reader.Member(sim::NamesOf(id).arguments[i++], const_cast<Value&>(value));
  };
  std::apply([&](const auto&... values) { (read(values), ...); }, sim::ValuesOf(record));
  return {reinterpret_cast<const char*>(&record), sizeof record};
}

std::string ReadArguments(Reader& reader, MessageId id) {
  switch (id) {
#define READ(name, request, reply) \
  case MessageId::name:            \
    return ReadRecord<sim::message::name::Request>(reader, id);
    SIM_MESSAGES(READ)
#undef READ
    default:
      return {};
  }
}

class Recorded : public SimulatedServer {
 protected:
  ~Recorded() override {
    for (const int fd : connections_) ::close(fd);
  }

  /// Repeats the command or the request of a line.
  void Repeat(const std::string& line) {
    Reader reader(std::string_view(line).substr(std::min(line.size(), line.find("\"event\":"))));
    std::string event;
    reader.Member("event", event);
    if (event == "command") RepeatCommand(reader);
    if (event == "request") RepeatRequest(reader);
    EXPECT_TRUE(bool(reader)) << line;
  }

  /// The commands that have printed something, and what they have printed.
  std::string answers_;

 private:
  struct Session {
    sim::SessionTicket ticket;
    int requests;
  };

  void RepeatCommand(Reader& reader) {
    std::string command, error;
    reader.Member("command", command);
    reader.Member("error", error);
    const std::string answer = Control(command, error.empty() ? sim::kTookEffect : sim::kIsWrong);
    if (!answer.empty()) answers_ += "> " + command + "\n" + answer;
  }
  void RepeatRequest(Reader& reader) {
    uint32_t handle = 0, transaction = 0, profile = 0;
    std::string name;
    reader.Expect(R"(,"client":{"program":"system_test")");
    reader.Member("handle", handle);
    reader.Expect("}");
    reader.Member("name", name);
    reader.Member("transaction", transaction);
    reader.Member("profile", profile);
    reader.Expect(",\"arguments\":{");
    const auto names = std::begin(sim::kMessageNames), end = std::end(sim::kMessageNames);
    const auto id = static_cast<uint32_t>(std::find(names, end, name) - names);
    const std::string arguments = ReadArguments(reader, MessageId{id});
    if (id == sim::message::OpenSession::kId) return Open(arguments);
    const int fd = sessions_[handle].requests;
    Send(fd, sim::MakeDatagram(id, transaction, 0, arguments, profile));
    EXPECT_FALSE(Receive(fd).empty()) << name;
  }
  /// Opens a session, or the second connection of one.
  void Open(const std::string& arguments) {
    sim::SessionTicket ticket{};
    arguments.copy(reinterpret_cast<char*>(&ticket), sizeof ticket);
    connections_.push_back(RawSocket(path_));
    if (ticket.handle == 0) {
      ticket = OpenHalf(connections_.back());
      sessions_[ticket.handle] = {ticket, connections_.back()};
    } else {
      Send(connections_.back(), OpenSession(sessions_[ticket.handle].ticket));
      EXPECT_FALSE(Receive(connections_.back()).empty());
    }
  }

  std::map<uint32_t, Session> sessions_;
  std::vector<int> connections_;
};

/// Compares a text with a kept one, or keeps it instead if that is wanted.
void ExpectKept(const std::string& text, const std::string& name) {
  if (std::getenv("MVQ_QCMAP_KEEP") != nullptr) std::ofstream(kFolder + name) << text;
  std::istringstream lines(text), kept_lines(ReadFile(kFolder + name));
  std::string line, kept;
  for (int number = 1; lines || kept_lines; ++number) {
    if (!std::getline(lines, line)) line = "(the end)";
    if (!std::getline(kept_lines, kept)) kept = "(the end)";
    ASSERT_EQ(line, kept) << name << ", line " << number
                          << ". With MVQ_QCMAP_KEEP=1 in the environment, the test keeps the new "
                             "lines.";
  }
}

// Each kept line that begins with "$ " has the options of a server. Lines before it that begin with
// "< " are those of its scenario. Below it stand what the server prints and its exit status.
TEST_F(Recorded, StartsEndTheSame) {
  const std::filesystem::path here = directory_;
  for (const char* name : {"open", "own", "own/folder", "own/locked.lock"})
    create_directory(here / name);
  ::chmod((here / "open").c_str(), 0770);
  create_directory_symlink(here / "own", here / "link");
  std::ofstream(here / "quit") << "sleep 0\nquit\n";
  const std::regex varying(directory_ + "|" + MVQ_QCMAP_VERSION);
  std::istringstream kept(ReadFile(kFolder + "starts.txt"));
  std::string outcomes, scenario;
  for (std::string line; std::getline(kept, line);) {
    const bool is_scenario = line.rfind("< ", 0) == 0, is_start = line.rfind("$ ", 0) == 0;
    if (is_scenario || is_start) outcomes += line + "\n";
    if (is_scenario) scenario += line.substr(2) + "\n";
    if (!is_start) continue;
    std::ofstream(here / "lines") << std::exchange(scenario, "");
    std::vector<std::string> arguments = {"env", "-C", here, MVQ_QCMAP_SERVER};
    std::istringstream words(line.substr(2));
    for (std::string word; words >> word;) arguments.push_back(word);
    Process server("/usr/bin/env", arguments);
    const int status = server.Wait();
    outcomes += std::regex_replace(server.output(), varying, "...");
    outcomes += "= " + std::to_string(status) + "\n";
  }
  ExpectKept(outcomes, "starts.txt");
}

TEST_F(Recorded, SessionIsRecordedAgainTheSame) {
  std::ofstream(log_) << std::string(1000000, 'x');  // is replaced
  Start({"--clock", "manual", "--log", log_, "--profiles", "2", "--call-time", "400", "--traffic",
         "100000"});
  std::istringstream kept(ReadFile(kFolder + "session.jsonl"));
  for (std::string line; std::getline(kept, line) && !HasFailure();) Repeat(line);
  ASSERT_FALSE(HasFailure());
  EXPECT_EQ(server_->Wait(), 0) << "the last command is quit";
  ExpectKept(Record(), "session.jsonl");
  ExpectKept(answers_, "answers.txt");
}

}  // namespace
