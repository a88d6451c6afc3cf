"""What qcmapctl prints for scripts, and what it explains."""

import json
import os
import re
import shlex
import subprocess
import sys
import unittest

from simulator import SCHEMA, SOURCE, Simulator, validate


def read(name):
    with open(f"{SOURCE}/{name.removeprefix(SOURCE)}", encoding="utf-8") as file:
        return file.read()


LOG_PAGE = read("docs/log-lines.md")
# Each code with its meaning and what to do next.
CODES = re.findall(r"^\| (\d+) \(0x\w+\) \| ([^|]*) \| ([^|]*) \|$", LOG_PAGE, re.M)

STATUS_LAN = ('{"gateway":"192.168.7.1","netmask":"255.255.255.0","dhcp":true,'
              '"start":"192.168.7.9","end":"192.168.7.10","lease":60}')
POLICY = ('{"index":2,"handle":103,"tech":"%s","family":"%s","profile_v4":3,"profile_v6":%d}')


def family(state="disconnected"):
    return '{"state":"%s","addresses":null}' % state


def profile(index):
    return ('{"index":%d,"handle":%d,"tech":"3gpp","family":"ipv4v6","profile_v4":%d,'
            '"profile_v6":%d,"ipv4":%s,"ipv6":%s,"half_up":false}'
            % (index, 101 + index, 1 + index, 1 + index, family(), family()))


# Each command of a session with what it prints.
SESSION = [
    ("call up 1 -4", '{"index":1,"handle":102,"ipv4":"up"}'),
    ("call up 1 -4", '{"index":1,"handle":102,"ipv4":"already up"}'),
    ("call show 1", '{"index":1,"handle":102,"ipv4":"connected","ipv6":"disconnected",'
                    '"half_up":true}'),
    ("address 1", '{"index":1,"ipv4":["192.0.2.102","198.51.100.1","198.51.100.2"],"ipv6":null}'),
    ("call down 1", '{"index":1,"handle":102,"ipv4":"down","ipv6":"already down"}'),
    ("call up 0 -6 -w 0", '{"index":0,"handle":101,"ipv6":"requested"}'),
    ("wait 0 -6", '{"index":0,"ipv6":"connected"}'),
    ("call down 0 -6", '{"index":0,"handle":101,"ipv6":"down"}'),
    ("stats reset 1 -4", '{"result":"reset","index":1,"family":"ipv4"}'),
    ("stats show 1", '{"index":1,"family":"ipv4v6","counter64_1":0,"counter64_2":0,'
                     '"counter32_1":0,"counter32_2":0}'),
    ("switch set 1 --roaming on --autoconnect off --ipv6 off",
     '{"index":1,"autoconnect":false,"roaming":true,"ipv4":true,"ipv6":false}'),
    ("policy add --profile-v4 3 --tech 3gpp2",
     '{"result":"added","policy":' + POLICY % ("3gpp2", "ipv4v6", 3) + "}"),
    ("policy set 2 --family ipv6",
     '{"result":"set","policy":' + POLICY % ("3gpp2", "ipv6", 3) + "}"),
    ("policy set 2 --profile-v6 4 --tech any",
     '{"result":"set","policy":' + POLICY % ("any", "ipv6", 4) + "}"),
    ("policy delete 2", '{"result":"deleted","policy":' + POLICY % ("any", "ipv6", 4) + "}"),
    ("lan set --gateway 192.168.7.1 --lease 60",
     STATUS_LAN.replace("7.9", "7.2").replace("7.10", "7.254")),
    ("lan set --start 192.168.7.9 --end 192.168.7.10", STATUS_LAN),
    ("lan activate", '{"result":"activated"}'),
    ("vlan add 3 100", '{"result":"added","interface":"eth0","vlan_id":100}'),
    ("vlan list", '[{"interface":"eth0","vlan_id":100,"profiles":[]}]'),
    ("map add 100 1", '{"result":"added","vlan_id":100,"profile":1}'),
    ("map list", '[{"vlan_id":100,"profile":1}]'),
    ("passthrough enable it's", '{"enabled":true,"host":"it\'s","state":1}'),
    ("call up 0 -4", '{"index":0,"handle":101,"ipv4":"up"}'),
    ("passthrough show", '{"enabled":true,"host":"it\'s","state":2}'),
    ("call down 0 -4", '{"index":0,"handle":101,"ipv4":"down"}'),
    ("status", '{"server":"running","mobile_ap":"connected","profiles":[' + profile(0) + "," +
     profile(1) + '],"lan":' + STATUS_LAN +
     ',"vlans":[{"interface":"eth0","vlan_id":100,"profiles":[1]}],'
     '"passthrough":{"enabled":true,"host":"it\'s","state":1}}'),
    ("map delete 100", '{"result":"deleted","vlan_id":100,"profile":1}'),
    ("vlan delete eth0 100", '{"result":"deleted","interface":"eth0","vlan_id":100}'),
    ("vlan list", "[]"),
    ("explain 0x5A", '{"code":90,"meaning":"not possible in this state: the call is down, or what '
                     'is to be deleted is in use","next":"take the call down, or delete the '
                     'mapping, first"}'),
]
READING = ("show", "list", "address", "status", "wait", "explain")
READ_ALL = ["status", "policy", "switch", "call", "stats", "address", "lan", "vlan", "map",
            "passthrough", "explain 13"]


def flatten(value, name=""):
    """Each value with the name that it has for the shell."""
    if isinstance(value, (dict, list)) and value:
        items = value.items() if isinstance(value, dict) else enumerate(value)
        for key, element in items:
            starts = not name and isinstance(value, dict)
            yield from flatten(element, key if starts else f"{name}_{key}")
    elif name:
        empty = value is None or value == []
        yield name, "" if empty else value if isinstance(value, str) else json.dumps(value)


class Documents(unittest.TestCase):
    def test_are_as_documented_in_each_form(self):
        with Simulator("--profiles", "2", "--call-time", "20", "--traffic", "0") as simulator:
            for command, expected in SESSION:
                with self.subTest(command):
                    outcome = simulator.run(command + " -J")
                    printed = json.dumps(json.loads(outcome.out), separators=(",", ":"))
                    self.assertEqual((printed, outcome.err, outcome.exit), (expected, "", 0))
                    if not any(word in command for word in READING):
                        continue
                    values = dict(flatten(json.loads(expected)))
                    words = shlex.split(simulator.run(command + " -K").out)
                    self.assertEqual(dict(word.split("=", 1) for word in words), values)
                    if expected.startswith("{"):
                        self.assertEqual(simulator.run(command + " -g " + ",".join(values)).out,
                                         "\t".join(values.values()) + "\n")

    def test_are_the_same_under_each_locale(self):
        folder = sys.argv[1]
        for name, sunday in (("de_DE", "Sonntag"), ("tr_TR", "Pazar")):
            path = f"{folder}/{name}.UTF-8"
            if not os.path.exists(path):
                subprocess.run(["localedef", "-i", name, "-f", "UTF-8", path + ".new"], check=True)
                os.rename(path + ".new", path)
            day = subprocess.run(["date", "-d", "2023-01-01", "+%A"], check=True, text=True,
                                 env=self.locale(name), capture_output=True).stdout
            self.assertEqual(day, sunday + "\n", "the locale has no effect")
        with Simulator("--traffic", "0") as simulator:
            for command in [f"{read} {form}" for read in READ_ALL for form in ("", "-J", "-K")]:
                reference = simulator.run(command, self.locale("C"))
                for name in ("de_DE", "tr_TR"):
                    self.assertEqual(simulator.run(command, self.locale(name)).out, reference.out)

    @staticmethod
    def locale(name):
        return dict(os.environ, LOCPATH=sys.argv[1], LC_ALL=name if name == "C" else name + ".UTF-8")

    def test_of_events_have_handle_and_index(self):
        with Simulator("--profiles", "1", "--call-time", "10") as simulator:
            watch = subprocess.Popen(["qcmapctl", "-J", "watch", "--count", "2"], text=True,
                                     env=simulator.environment, stdout=subprocess.PIPE)
            lines = [watch.stdout.readline(), watch.stdout.readline()]
            simulator.run("call up 0 -4")
            simulator.run("call down 0 -4")
            lines += watch.communicate()[0].splitlines()
            for line in lines:
                validate(json.loads(line), "watch_line")
            shown = [{key: value for key, value in json.loads(line).items() if key != "time"}
                     for line in lines]
            common = {"handle": 101, "index": 0}
            self.assertEqual(shown, [
                {"event": event, **common, "family": family, "state": state}
                for event, family, state in (("initial", "ipv4", "disconnected"),
                                             ("initial", "ipv6", "disconnected"),
                                             ("wwan_connected", "ipv4", "connected"),
                                             ("wwan_disconnected", "ipv4", "disconnected"))])

    def test_of_counters_have_totals_and_rates(self):
        with Simulator("--profiles", "1", "--call-time", "0", "--traffic", "0") as simulator:
            simulator.run("call up 0 -4")
            simulator.tell("traffic 0 4 5000 400")
            outcome = simulator.run("-J -w 0.9 stats show 0 --watch 0.2")
            lines = [json.loads(line) for line in outcome.out.splitlines()]
            self.assertEqual((len(lines), outcome.exit), (4, 3), outcome)
            self.assertEqual(lines[-1]["counter64_1"], 5000)
            self.assertEqual(lines[-1]["counter64_1_per_s"], 0)

    def test_of_failures_are_one_object_on_standard_error(self):
        with Simulator() as simulator:
            self.assertEqual(simulator.run("call show 9 -J").err,
                             '{"error":{"operation":"call show",'
                             '"message":"profile 9: no such profile",'
                             '"hint":"\'qcmapctl policy list\' shows the profiles and their '
                             'indices","exit":10}}\n')
            for command in ("-qJ polcy", "-J -K call", "lan set -J", "-J explain 77"):
                self.assertEqual(list(json.loads(simulator.run(command).err)), ["error"])

    def test_of_the_status_keep_what_is_known(self):
        refused = "the server refused the request (the server said 48: the server does not accept an argument)"
        for request, part, message in (
                ("GetWWANStatus", "profiles.1.ipv6", "profile 1: " + refused),
                ("GetNetworkConfiguration", "profiles.1.ipv4", "profile 1: ipv4: " + refused),
                ("GetWWANPolicyList", "profiles", "policy list: " + refused),
                ("GetIPPassthroughConfig", "passthrough", refused),
                ("GetVLANConfig", "vlans", "VLAN list: " + refused)):
            with self.subTest(request), Simulator("--call-time", "0") as simulator:
                self.assertEqual(simulator.run("call up 1 -4").exit, 0)
                simulator.tell(f"fail {request}:48")
                outcome = simulator.run("-J")
                self.assertEqual((outcome.exit, outcome.err), (7, ""))
                status = json.loads(outcome.out)
                for key in part.split("."):
                    status = status[int(key) if key.isdigit() else key]
                self.assertEqual(status, {"error": message})
                known = "" if part.startswith("profiles") else "connected"
                self.assertEqual(simulator.run("-g profiles_1_ipv4_state,lan_lease").out,
                                 known + "\t86400\n")


def keys_in(schema):
    """All keys of objects in a schema or a part of it."""
    if isinstance(schema, list):
        return set().union(*map(keys_in, schema))
    if not isinstance(schema, dict):
        return set()
    if "$ref" in schema:
        return keys_in(SCHEMA["$defs"][schema["$ref"].rsplit("/", 1)[1]])
    return set(schema.get("properties", {})).union(*map(keys_in, schema.values()))


class Manual(unittest.TestCase):
    def test_and_help_have_each_key_and_code(self):
        page = read("docs/man/qcmapctl.1.scd")
        documents = list(SCHEMA["$defs"])
        for name in documents[:documents.index("failure")]:
            command = name.replace("_line", "").split("_")
            shown = subprocess.run(["qcmapctl", *command, "--help"], capture_output=True, text=True,
                                   check=True).stdout
            for key in keys_in(SCHEMA["$defs"][name]):
                self.assertRegex(page, f"\\b_{key}_\\b", name)
                self.assertRegex(shown[shown.index("Fields: "):], f"[ _]{key}(_|,|\\n)", name)
        shown = subprocess.run(["qcmapctl", "explain", "--help"], capture_output=True, text=True,
                               check=True).stdout
        for code, meaning, _ in CODES:
            self.assertIn(f" {code} {meaning}", " ".join(shown.split()))

    def test_shows_documents_that_the_schema_allows(self):
        # Another test compares what the page shows with what the tool prints.
        shown = re.findall(r"^\$ qcmapctl --json (\w+) (\w+)\n([^$`]*)", read("docs/man/qcmapctl.1.scd"),
                           re.M)
        self.assertTrue(shown)
        for command, verb, document in shown:
            validate(json.loads(document), f"{command}_{verb}")

    def test_and_hints_show_command_lines_that_work(self):
        texts = [read("docs/man/qcmapctl.1.scd"), read("tools/qcmapctl/failures.inc")]
        for folder, _, files in os.walk(SOURCE + "/tools/qcmapctl"):
            texts += [read(f"{folder}/{file}") for file in files if file.endswith(".cpp")]
        lines = set()
        for text in texts:
            lines |= set(re.findall(r"'(?:mvq-qcmap-sim -- )?(qcmapctl(?: [^'\"]+)?)'", text))
            lines |= set(re.findall(r"for example: (qcmapctl[^,\"]*)", text))
        self.assertGreater(len(lines), 12)
        with Simulator("--call-time", "0") as simulator:
            simulator.run("call up 1")
            for line in sorted(lines):
                words = re.sub(r"\bID\b", "1", line).split()[1:]
                if words in (["vlan", "add"], ["call", "down"], ["map", "delete"]):
                    words.append("--help")  # The name of the command alone.
                if words[-3:] == ["1", "--state", "down"]:
                    simulator.run("call down 1")
                outcome = simulator.run(words)
                self.assertEqual((outcome.exit, outcome.err), (0, ""), line)


class Explanations(unittest.TestCase):
    def test_cover_each_line_of_the_page(self):
        rows = re.findall(r"^\| `([^`]*)` \| (ERR|WARNING|DEBUG) \|", LOG_PAGE, re.M)
        self.assertGreater(len(rows), 60)
        head = "qcmapctl[9]: bool mox::vendor::qcom::qcmap::QcmapWrapper::F(uint32_t) 24: "
        samples = {"%d": "-7", "%u": "8", "%x": "c0a8", "%s": "[BRING_UP] V4", "%p": "0x7f00"}
        lines = [head + re.sub("%[duxsp]", lambda found: samples[found[0]],
                               line.removesuffix(r"\n")) for line, _ in rows]
        with Simulator() as simulator:
            outcome = simulator.run("-J explain", text="nothing known\n" + "\n".join(lines) + "\n")
        explained = [json.loads(line) for line in outcome.out.splitlines()]
        self.assertEqual([(line["line"], line["level"]) for line in explained], rows)

    def test_tell_each_code_with_the_refusal(self):
        for code, meaning, following in CODES:
            with Simulator("--fail", "GetLANConfig:" + code) as simulator:
                error = json.loads(simulator.run("-J lan").err)["error"]
            self.assertIn(f"(the server said {code}: {meaning})", error["message"])
            self.assertEqual(error["hint"], following.replace("`", "'"))


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[2:]])
