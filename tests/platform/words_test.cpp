/// What people type, and what the environment says.
#include "words/nearest_word.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include "protocol/control.h"

namespace {

TEST(NearestWord, HasTheFewestErrorsAndNoMoreThanAThirdOfItsCharacters) {
  const std::vector<std::string> known = {"nutwerk", "network", "drop", "traffic",
                                          "lane",    "lang",    "bcb"};
  const struct {
    const char* nearest;
    std::vector<std::string> words;
  } rows[] = {{"network", {"NETWORK", "netwrk", "netxwork", "netwark", "nxtworx", "entwxrk"}},
              {"drop", {"rop", "xdrop", "dropx", "drxp", "xrop", "drox", "rdop", "dorp", "drpo"}},
              {"traffic", {"traffi", "tr"}},
              {"lane", {"lans"}},
              {"", {"t", "xxop", "abab", "nxtxxrk", "qqqqqq"}}};
  for (const auto& [nearest, words] : rows) {
    for (const std::string& word : words)
      EXPECT_EQ(words::NearestWord(word, known), nearest) << word;
  }
}

TEST(SocketPath, ComesFromTheFirstVariableThatIsSet) {
  const std::string of_user = "/tmp/qcmap-" + std::to_string(::geteuid()) + "/server";
  const struct {
    const char* setting;
    std::string socket, control;
  } rows[] = {{"XDG_RUNTIME_DIR=", of_user, of_user + ".control"},
              {"XDG_RUNTIME_DIR=/r", "/r/qcmap/server", "/r/qcmap/server.control"},
              {"QCMAP_SOCKET=", "/r/qcmap/server", "/r/qcmap/server.control"},
              {"QCMAP_SOCKET=/s", "/s", "/s.control"},
              {"QCMAP_CONTROL=", "/s", "/s.control"},
              {"QCMAP_CONTROL=/c", "/s", "/c"}};
  ::clearenv();
  EXPECT_EQ(sim::DefaultControlPath(), of_user + ".control");
  for (const auto& [setting, socket, control] : rows) {
    ::putenv(const_cast<char*>(setting));
    EXPECT_EQ(sim::DefaultSocketPath(), socket) << setting;
    EXPECT_EQ(sim::DefaultControlPath(), control) << setting;
  }
}

}  // namespace
