"""Runs qcmapctl against a simulated server of its own, and checks every JSON document it prints."""

import json
import os
import pty
import re
import select
import subprocess
import tempfile
import time

import jsonschema

SOURCE = os.environ["MVQ_QCMAP_SOURCE"]
with open(SOURCE + "/tools/qcmapctl/qcmapctl.schema.json", encoding="utf-8") as file:
    SCHEMA = json.load(file)


def validate(document, name):
    """Fails unless `document` is what the schema of that name allows."""
    schema = {"$ref": "#/$defs/" + name, "$defs": SCHEMA["$defs"]}
    jsonschema.Draft202012Validator(schema).validate(document)


def name_of(words):
    """The name of the schema for a command line, and whether each line is a document."""
    names = list(SCHEMA["$defs"])
    names = names[:names.index("failure")]
    objects = {name.split("_")[0] for name in names}
    while words and words[0] not in objects:
        words = words[1:]
    plain = [word for word in words if not word.startswith("-")]
    if "--watch" in words:
        return "stats_show_line", True
    if plain[:1] == ["watch"] or plain == ["explain"]:
        return plain[0] + "_line", True
    default = next((name for name in names if plain and name.startswith(plain[0])), "status_show")
    return next((name for name in ["_".join(plain[:2])] if name in names), default), False


class Outcome:
    def __init__(self, process, seconds):
        self.exit, self.out, self.err = process.returncode, process.stdout, process.stderr
        self.seconds = seconds

    def __str__(self):
        return f"exit {self.exit} after {self.seconds:.2f} s\n{self.out}{self.err}"


class Simulator:
    """A server while a with statement runs."""

    def __init__(self, *options):
        self.options = options

    def __enter__(self):
        self.folder = tempfile.TemporaryDirectory(prefix="qcmap-tool-")
        self.environment = dict(os.environ, QCMAP_SOCKET=self.folder.name + "/private/server")
        os.mkdir(self.folder.name + "/private", 0o700)
        self.server = subprocess.Popen(["QCMAP_ConnectionManager", "--console", *self.options],
                                       env=self.environment, stdin=subprocess.PIPE,
                                       stdout=subprocess.PIPE, text=True)
        assert self.server.stdout.readline().startswith("listening on ")
        return self

    def __exit__(self, *_):
        self.server.kill()
        self.server.communicate()
        self.folder.cleanup()

    def tell(self, line):
        """Gives the server a line for its console."""
        self.server.stdin.write(line + "\n")
        self.server.stdin.flush()

    def run(self, command, environment=None, text=None):
        """Runs qcmapctl. If it prints JSON, checks that the schema allows it."""
        words = command.split() if isinstance(command, str) else command
        start = time.monotonic()
        process = subprocess.run(["qcmapctl", *words], env=dict(self.environment, **environment or {}),
                                 input=text, stdin=None if text else subprocess.DEVNULL,
                                 capture_output=True, encoding="utf-8", check=False)
        outcome = Outcome(process, time.monotonic() - start)
        if any(re.fullmatch("-[a-z]*J|--json", word) for word in words):
            name, is_stream = name_of(words)
            for document in outcome.out.splitlines() if is_stream else [outcome.out]:
                if document:
                    validate(json.loads(document), name)
            if outcome.err:
                validate(json.loads(outcome.err), "failure")
        return outcome


def at_terminal(arguments, environment, columns=80, prompt="", keys="", until=None):
    """What a program prints on a terminal of that width, until it ends or has printed `until`. Types
    `keys` when the program has printed `prompt`."""
    child, terminal = pty.fork()
    if child == 0:
        os.environ.update(environment)
        subprocess.run(["stty", "cols", str(columns)], check=False)
        os.execvp(arguments[0], arguments)
    printed = ""
    while until is None or until not in printed:
        if not select.select([terminal], [], [], 20)[0]:
            raise TimeoutError(f"only this was printed: {printed!r}")
        try:
            printed += os.read(terminal, 4096).decode()
        except OSError:
            break
        if keys and prompt in printed:
            os.write(terminal, keys.encode())
            keys = ""
    os.close(terminal)
    os.waitpid(child, 0)
    return printed.replace("\r\n", "\n")
