/// How the utility library finds processes.
#include <errno.h>
#include <gtest/gtest.h>
#include <mox/util/process_control.h>

#include "process.h"

namespace {

TEST(ProcessControl, FindsAProcessByTheNameOfItsProgram) {
  const auto find = [](const std::string& name) {
    return mox::util::ProcessControl::GetPidByProcessName(name, 1);
  };
  const std::string name = "qcmap-sleeper-" + std::to_string(::getpid());
  const Process sleeper("/bin/sleep", {"/a/b/" + name, "60"}), zombie("/bin/true", {"true"});
  EXPECT_TRUE(Eventually([&] { return find(name) == sleeper.pid(); }));
  EXPECT_GT(find(program_invocation_short_name), 0) << "/proc/self is no process";
  for (const std::string& wrong : {std::string(), "b/" + name, name + "x"})
    EXPECT_EQ(find(wrong), -1) << wrong;
}

}  // namespace
