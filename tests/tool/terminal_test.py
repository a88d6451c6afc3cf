"""How qcmapctl looks on a terminal."""

import sys
import unittest

from simulator import Simulator, at_terminal


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


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[2:]])
