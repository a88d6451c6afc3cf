"""How qcmapctl looks on a terminal, and how shells complete its command lines."""

import signal
import sys
import unittest

from simulator import SOURCE, Simulator, at_terminal


class Terminal(unittest.TestCase):
    def show(self, command, columns=80, **environment):
        with Simulator("--call-time", "0") as simulator:
            simulator.run("call up 1 -4")
            return at_terminal(["qcmapctl", *command.split()],
                                    dict(simulator.environment, TERM="xterm", **environment),
                                    columns=columns)

    def test_gets_lines_that_fit_and_are_broken_at_words(self):
        for command in ("", "--help", "call up all", "address"):
            wide = self.show("--color never " + command, 500)
            narrow = self.show("--color never " + command, 40)
            self.assertEqual([line for line in narrow.split("\n") if len(line) > 40], [])
            self.assertEqual(narrow.split(), wide.split())

    def test_gets_colours_unless_refused(self):
        coloured = "\x1b[32mconnected\x1b[0m"
        self.assertIn(coloured, self.show("call show 1"))
        self.assertIn("\x1b[33mHALF UP\x1b[0m", self.show("call show 1"))
        self.assertIn(coloured, self.show("--color always call show 1", NO_COLOR="1"))
        self.assertNotIn("\x1b", self.show("call show 1", NO_COLOR="1"))
        self.assertNotIn("\x1b", self.show("--color never call show 1"))


class Completion(unittest.TestCase):
    CASES = [("qcmapctl passt", "qcmapctl passthrough"), ("qcmapctl call u", "qcmapctl call up"),
             ("qcmapctl --key", "qcmapctl --keyvalue"),
             ("qcmapctl wait 1 --state connecte", "qcmapctl wait 1 --state connected"),
             ("qcmapctl call up 1", "qcmapctl call up 1 "),
             ("qcmapctl map add 10", "qcmapctl map add 100"),
             ("qcmapctl vlan delete e", "qcmapctl vlan delete eth0")]

    def test_completes_words_and_live_ids_in_bash(self):
        with Simulator("--profiles", "2") as simulator:
            simulator.run("vlan add eth0 100")
            script = SOURCE + "/tools/qcmapctl/completion/qcmapctl"
            for typed, expected in self.CASES:
                completed = "> " + expected.rstrip() + " #done"
                # On a busy machine, the program leaves out what the server is slow to tell.
                for _ in range(20):
                    printed = at_terminal(
                        ["bash", "--noprofile", "--rcfile", script, "-i"],
                        dict(simulator.environment, PROMPT_COMMAND="PS1='> '", TERM="dumb",
                             INPUTRC="/dev/null"),
                        200, prompt="> ", keys=typed + "\t#done", until="#done")
                    if completed in printed:
                        break
                self.assertIn(completed, printed)

    def test_is_quick_and_silent_without_a_server(self):
        with Simulator("--profiles", "2") as simulator:
            # How long it takes to start a program depends on the machine and on the sanitizer.
            start = min(simulator.run(["--version"]).seconds for _ in range(5))

            def complete(*words):
                outcomes = [simulator.run(["--complete", *words]) for _ in range(5)]
                self.assertEqual({(outcome.err, outcome.exit) for outcome in outcomes}, {("", 0)})
                self.assertLess(min(outcome.seconds for outcome in outcomes), start + 0.05)
                return {outcome.out for outcome in outcomes}

            self.assertIn("0\n1\n", complete("call", "up", ""))
            self.assertIn("on\noff\n", complete("switch", "set", "1", "--roaming", "o"))
            simulator.server.send_signal(signal.SIGSTOP)
            self.assertEqual(complete("call", "up", ""), {""})
            simulator.server.kill()
            simulator.server.wait()
            self.assertEqual(complete("call", "up", ""), {""})
            self.assertEqual(complete("call", "u"), {"up\n"})


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[2:]])
