/// The example program: it works whatever it finds and whatever other programs do meanwhile.
#include <gtest/gtest.h>

#include "shell.h"

namespace {

TEST(Example, BringsTheCallUpAndDown) {
  const std::string start = "data_call >out 2>log & example=$!\n";
  const std::string events_up =
      "event 0x200 IPv4\nevent 0x204 IPv4\nevent 0x200 IPv6\nevent 0x204 IPv6\n";
  const struct {
    const char* situation;
    std::string script, events;
  } rows[] = {
      {"the call is down", start, events_up},
      {"the call is up", "qcmapctl -q call up 1\n" + start, ""},
      {"IPv4 is up", "qcmapctl -q call up 1 -4\n" + start, "event 0x200 IPv6\nevent 0x204 IPv6\n"},
      {"its index comes to mean another profile while the call comes up",
       start +
           "once sh -c 'qcmapctl call show 1 | grep -qwE \"connecting|connected\"'\nqcmapctl -q policy delete 0\n",
       events_up},
  };
  const std::string rest =
      "state 2 and 2\n"
      "192.0.2.102 198.51.100.1 198.51.100.2\n"
      "2001:db8::66 2001:db8:53::1 2001:db8:53::2\n"
      "event 0x202 IPv4\nevent 0x205 IPv4\nevent 0x202 IPv6\nevent 0x205 IPv6\n";
  for (const auto& row : rows) {
    SCOPED_TRACE(row.situation);
    const Outcome outcome =
        ShellWithServer("--call-time 300", "cd \"${0%/*}\"\n" + row.script +
                                               "wait $example; status=$?; cat out; exit $status");
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(outcome.out, row.events + rest);
  }
}

}  // namespace
