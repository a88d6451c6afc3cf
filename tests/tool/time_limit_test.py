"""How commands end when the server does not answer or is lost: in time, and without effect later."""

import json
import os
import signal
import subprocess
import sys
import tempfile
import time
import unittest

from simulator import Simulator, validate


# A busy machine may make a command late, but not each time.
ATTEMPTS = 3


class TimeLimit(unittest.TestCase):
    def expect(self, outcome, code, message, least, most):
        self.assertEqual((outcome.exit, outcome.out), (code, ""), outcome)
        self.assertIn(message, " ".join(outcome.err.split()))
        self.assertIn("hint", outcome.err)
        self.assertTrue(least <= outcome.seconds <= most, outcome)

    def test_decides_unless_a_request_was_given_up_before(self):
        for options, stopped, command, code, message, seconds in (
                (["--latency", "300"], False, "-w 0.5", 3, "timed out", 0.5),
                ([], True, "-w 1 call up 1", 3, "call up: timed out", 1),
                ([], True, "-J -w 1 lan", 3, '"message":"timed out"', 1),
                ([], True, "-w 0.5 -K watch", 3, "watch: timed out", 0.5),
                ([], True, "call up 1", 8, "the server runs but does not answer", 2),
                ([], True, "-w 3", 8, "the server runs but does not answer", 2),
                (["--call-time", "60000"], False, "-w 0.3 call up 1 -4", 3, "ipv4: timed out", 0.3),
                (["--call-time", "60000"], False, "-w 0.3 wait 1", 3, "is disconnected: timed", 0.3)):
            with self.subTest(command), Simulator(*options) as simulator:
                # How long it takes to start a program depends on the machine and the sanitizer.
                start = min(simulator.run(["--version"]).seconds for _ in range(3))
                if stopped:
                    simulator.server.send_signal(signal.SIGSTOP)
                for _ in range(ATTEMPTS):
                    outcome = simulator.run(command)
                    if outcome.seconds < seconds + start + 0.2:
                        break
                self.expect(outcome, code, message, seconds, seconds + start + 0.2)

    def start(self, simulator, command, until):
        """Starts a command and waits until its output has that text."""
        process = subprocess.Popen(["qcmapctl", *command.split()], env=simulator.environment,
                                   stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
        for line in process.stdout:
            if until in line:
                return process
        self.fail(f"{command} has not printed {until}")

    def test_lets_no_request_take_effect_after_it(self):
        with Simulator("--call-time", "0") as simulator:
            simulator.tell("late ConnectBackHaul 300")
            call = self.start(simulator, "-v -w 0.5 call up 1 -4", "call_type [0x")
            simulator.server.send_signal(signal.SIGSTOP)
            self.assertIn("timed out", call.communicate()[0])
            self.assertEqual(call.returncode, 3)
            simulator.server.send_signal(signal.SIGCONT)
            self.assertEqual(simulator.run("-g ipv4 call show 1").out, "disconnected\n")

    def test_lets_output_end_whole(self):
        with Simulator("--profiles", "50", "--call-time", "0") as simulator:
            status = subprocess.Popen(["qcmapctl", "-J", "-w", "0.5"], env=simulator.environment,
                                      stdout=subprocess.PIPE, pipesize=4096)
            with self.assertRaises(subprocess.TimeoutExpired):
                status.wait(0.7)  # Nobody reads, so it cannot end.
            document = json.loads(status.communicate()[0])
            validate(document, "status_show")
            self.assertEqual(len(document["profiles"]), 50)
            self.assertEqual(status.returncode, 0)

            watch = self.start(simulator, "-J -w 0.5 watch", '"index":49')
            lines = watch.communicate()[0].splitlines()
            for line in lines[:-1]:
                validate(json.loads(line), "watch_line")
            validate(json.loads(lines[-1]), "failure")
            self.assertEqual(watch.returncode, 3)


class Server(unittest.TestCase):
    def test_that_is_lost_ends_commands_at_once(self):
        for sent, command, until, message in (
                (signal.SIGKILL, "watch", "profile 2", "watch: the connection to the server was lost"),
                (signal.SIGKILL, "-v wait 1", "AP is Connected", "wait: the connection to"),
                (signal.SIGKILL, "-v call up 1", "family [1] call", "call up: the connection to"),
                (signal.SIGKILL, "-v -w 60 stats show --watch 60", "AP is Connected", "stats show: the"),
                (signal.SIGSTOP, "-v call up 1", "family [1] call", "runs but does not answer")):
            fastest, most = 60, 0.1 if sent == signal.SIGKILL else 3
            for _ in range(ATTEMPTS):
                if fastest < most:
                    break
                with self.subTest(command), Simulator("--call-time", "60000") as simulator:
                    process = TimeLimit.start(self, simulator, command, until)
                    start = time.monotonic()
                    simulator.server.send_signal(sent)
                    printed = process.communicate()[0]
                    fastest = min(fastest, time.monotonic() - start)
                    self.assertIn(message, " ".join(printed.split()))
                    self.assertEqual(process.returncode, 8)
            self.assertLess(fastest, most, command)

    def test_that_cannot_be_used_is_told_from_others(self):
        with Simulator() as simulator:
            simulator.server.kill()
            simulator.server.wait()
            self.assertIn("the server is not running", simulator.run("call").err)
        with Simulator("--fail", "EnableMobileAP") as simulator:
            self.assertIn("the Mobile AP is not connected", simulator.run("call").err)

    @unittest.skipUnless(os.geteuid() == 0, "only root can start a server as another user")
    def test_of_another_user_is_named_with_its_owner(self):
        with Simulator() as simulator, tempfile.TemporaryDirectory() as folder:
            os.chmod(folder, 0o777)
            path = folder + "/private/server"
            other = subprocess.Popen(["setpriv", "--reuid", "65534", "--clear-groups",
                                      "QCMAP_ConnectionManager", "--socket", path],
                                     stdout=subprocess.PIPE, text=True)
            try:
                self.assertIn("listening", other.stdout.readline())
                outcome = simulator.run("call", {"QCMAP_SOCKET": path})
            finally:
                other.kill()
                other.communicate()
            self.assertEqual(outcome.exit, 8)
            self.assertIn("the server belongs to another user (the server at " + path +
                          " belongs to user 65534 and is not used)", " ".join(outcome.err.split()))


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[2:]])
