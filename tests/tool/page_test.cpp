/// Checks that manual pages and programs use the same words, and that examples print what is shown.
#include <gtest/gtest.h>

#include <set>
#include <vector>

#include "shell.h"

namespace {

using Words = std::set<std::string>;

std::string Page(const std::string& name) {
  return ReadFile(MVQ_QCMAP_SOURCE "/docs/man/" + name + ".scd");
}

/// All matches of the pattern's first group, or of the whole pattern if it has no group.
std::vector<std::string> FindAll(const std::string& text, const std::string& pattern) {
  const std::regex expression(pattern);
  const int group = expression.mark_count() > 0 ? 1 : 0;
  return {std::sregex_token_iterator(text.begin(), text.end(), expression, group), {}};
}

Words Find(const std::string& text, const std::string& pattern) {
  const auto found = FindAll(text, pattern);
  return Words(found.begin(), found.end());
}

/// The words that a help text lists under a heading such as "Verbs:".
Words Listed(const std::string& help, const std::string& head) {
  const size_t start = help.find("\n" + head + ":\n");
  if (start == std::string::npos) return {};
  const std::string list = help.substr(start + 1, help.find("\n\n", start) - start);
  return Find(list, "\n  ([a-z]+) ");
}

std::string Help(const std::string& command) {
  const Outcome outcome = Shell("exec " + command + " --help");
  EXPECT_EQ(outcome.status, 0) << command << "\n" << outcome.err;
  EXPECT_EQ(outcome.err, "") << command;
  EXPECT_NE(outcome.out.find("Usage: "), std::string::npos) << command;
  return outcome.out;
}

TEST(Page, HasTheOptionsVerbsAndCodesOfTheHelp) {
  const std::string top = Help("qcmapctl");
  std::string all = top;
  Words commands = {"watch", "wait", "explain"};
  for (const std::string& object : Listed(top, "Objects")) {
    const std::string help = Help("qcmapctl " + object);
    all += help;
    for (const std::string& verb : Listed(help, "Verbs")) {
      commands.insert(object + " " + verb);
      all += Help("qcmapctl " + object + " " + verb);
    }
  }
  const std::string page = Page("qcmapctl.1");
  const size_t start = page.find("# COMMANDS");
  EXPECT_EQ(Find(page.substr(start, page.find("# OPTIONS") - start),
                 "(?:^|\n)\\*([a-z]+(?: [a-z]+)?)\\*"),
            commands);
  EXPECT_EQ(Find(page, "--[a-z][a-z0-9-]*"), Find(all, "--[a-z][a-z0-9-]*"));
  EXPECT_EQ(Find(page.substr(page.find("# OPTIONS")), "\\*(-[a-zA-Z0-9])\\*, \\*--"),
            Find(all, " (-[a-zA-Z0-9]),--"));

  const std::string built = ReadFile(MVQ_QCMAP_BUILD "/docs/man/qcmapctl.1.scd");
  const std::string exit_status = built.substr(0, built.find("# ERROR CODES"));
  EXPECT_EQ(Find(exit_status, "\n\\*([0-9]+)\\*\n"), Find(top, "\n +([0-9]+)  "));
  const std::string table = ReadFile(MVQ_QCMAP_SOURCE "/tools/qcmapctl/failures.inc");
  EXPECT_EQ(Find(built, "\n\\*(.*)\\* \\(exit "),
            Find(table, "\nFAILURE\\([A-Z_]+, [0-9]+, \"([^\"]*)\""));
}

TEST(Page, HasTheOptionsOfTheServerAndTheLauncher) {
  for (const std::string program :
       {"QCMAP_ConnectionManager", "mvq-qcmap-sim", "mvq-qcmap-trace"}) {
    const std::string page = Page(program + ".1");
    const std::string outside_examples = page.substr(0, page.find("# EXAMPLES"));
    EXPECT_EQ(Find(outside_examples, "--[a-z][a-z-]*"), Find(Help(program), "--[a-z][a-z-]*"))
        << program;
  }
}

constexpr char kSession[] = "```[a-z]*\n(\\$ (?:[^`]|`[^`])*)```";

TEST(Page, ShowsWhatItsCommandLinesPrint) {
  size_t shown = 0;
  for (const std::string file :
       {"docs/man/qcmapctl.1.scd", "docs/man/mvq-qcmap-sim.1.scd",
        "docs/man/QCMAP_ConnectionManager.1.scd", "docs/man/mvq-qcmap-trace.1.scd", "README.md"}) {
    for (const std::string& session : FindAll(ReadFile(MVQ_QCMAP_SOURCE "/" + file), kSession)) {
      std::istringstream lines(session);
      std::string script, expected;
      for (std::string line; std::getline(lines, line);) {
        const bool command = line.rfind("$ ", 0) == 0 || line.rfind("> ", 0) == 0;
        (command ? script : expected) += (command ? line.substr(2) : line) + "\n";
      }
      const bool starts_servers = script.find("mvq-qcmap-sim ") != std::string::npos;
      const Outcome outcome = starts_servers ? Shell("exec 2>&1\n" + script)
                                             : ShellWithServer("", "exec 2>&1\n" + script);
      EXPECT_EQ(outcome.out, expected) << file << ":\n" << script;
      ++shown;
    }
  }
  EXPECT_GE(shown, 6u);
}

}  // namespace
