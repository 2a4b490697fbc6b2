"""What the end-to-end tests share: real processes in a folder of their own, and the stock SNMP tools.

TALVIK_BIN_DIR names the folder of the built programs; the module lies in ../lib from there. TALVIK_EMULATOR has the words,
quoted as in a shell, that run a program built for another machine.
"""

import itertools
import os
import pathlib
import re
import shlex
import shutil
import signal
import socket
import subprocess
import sys
import tempfile
import time
import unittest

SOURCE = pathlib.Path(__file__).resolve().parents[2]
BIN = pathlib.Path(os.environ.get("TALVIK_BIN_DIR", SOURCE / "build" / "release" / "bin"))
MODULE = BIN.parent / "lib" / "libSnmpTalvikMibModule.so"
TEST_MODULES = BIN.parent / "lib" / "test-modules"

EMULATOR = shlex.split(os.environ.get("TALVIK_EMULATOR", ""))

LIMIT = 30  # seconds that anything here may take; only a hanging program ever needs them
SHOWN_OF_A_LOG = 200000  # characters, the last ones; a storm of alarms writes a hundred times as many

ROOT = ".1.3.6.1.4.1.99999"
TABLE = ROOT + ".2.91.9.1"
HEALTH = ROOT + ".2.91.20"  # what the agent says of itself
ENTRY = TABLE + ".1"
ENGINE_ID = ".1.3.6.1.6.3.10.2.1.1.0"
ENGINE_BOOTS = ".1.3.6.1.6.3.10.2.1.2.0"

# Column, type and value of the topology row as the sample device configuration and a running back end make it.
TOPOLOGY = [
    (1, 'STRING: "TALVIK-0001"'),
    (2, "Gauge32: 1"),
    (3, "INTEGER: 1"),
    (4, 'STRING: "192.168.2.10"'),
    (5, 'STRING: "Array"'),
    (6, 'STRING: " "'),
    (7, 'STRING: " "'),
    (8, "INTEGER: 1"),
]

# What the leaf that clears an alarm reads as, whatever was written.
CLEAR_ALARM = f"{ROOT}.2.91.10.1.2.0"
CLEAR_ALARM_LINE = f"{CLEAR_ALARM} = Gauge32: 0"

AUTH = "authentication-passphrase"
PRIV = "privacy-passphrase"

CONFIG = f"""
view talvik included {ROOT}
view talvik excluded {HEALTH}
rocommunity reader 127.0.0.1 -V talvik
rocommunity everything 127.0.0.1
rwcommunity writer 127.0.0.1
view noAddress included {ROOT}
view noAddress excluded {HEALTH}
view noAddress excluded {ENTRY}.4
rocommunity limited 127.0.0.1 -V noAddress
createUser operator SHA-256 "{AUTH}" AES "{PRIV}"
rouser operator authPriv -V talvik
createUser admin SHA-256 "{AUTH}" AES "{PRIV}"
rwuser admin authPriv
sysDescr end-to-end test
"""

READER = ["-v2c", "-c", "reader"]
EVERYTHING = ["-v2c", "-c", "everything"]
WRITER = ["-v2c", "-c", "writer"]
V1 = ["-v1", "-c", "reader"]


def v3(user, auth=AUTH, priv=PRIV):
    return ["-v3", "-u", user, "-l", "authPriv", "-a", "SHA-256", "-A", auth, "-x", "AES", "-X", priv]


OPERATOR = v3("operator")


def topology(status=1):
    """The lines of a numeric walk over the topology table."""
    rows = [(column, text) for column, text in TOPOLOGY if column != 8]
    rows.append((8, f"INTEGER: {status}"))
    return [f"{ENTRY}.{column}.1 = {text}" for column, text in rows]


def private_mib(trap_rows=()):
    """The lines of a numeric walk over the whole private MIB, but the agent's health, while no alarm is active."""
    return topology() + [CLEAR_ALARM_LINE] + list(trap_rows)


def program(name):
    """The words that run a built program."""
    return [*EMULATOR, str(BIN / name)]


def free_port():
    """A UDP port of the loopback that nobody had a moment ago."""
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


def wait_until(condition, what, limit=LIMIT, pause=0.02):
    """Waits for condition() to be true and returns its value; fails after the limit."""
    end = time.monotonic() + limit
    while True:
        value = condition()
        if value:
            return value
        if time.monotonic() > end:
            raise AssertionError(f"{what}: not within {limit} seconds")
        time.sleep(pause)


class Daemon:
    """A program under test that runs until it is stopped. Its log goes to a file in the test's folder."""

    def __init__(self, folder, name, command, environment=None):
        self.log_path = folder / f"{name}.log"
        self.command = [str(part) for part in command]
        with open(self.log_path, "ab") as log:
            self.process = subprocess.Popen(self.command, stdin=subprocess.DEVNULL, stdout=log, stderr=log,
                                            cwd=folder, close_fds=True, env=environment)

    def log(self):
        return self.log_path.read_text(errors="replace")

    def wait_for_log(self, text):
        def seen():
            if text in self.log():
                return True
            if self.process.poll() is not None:
                raise AssertionError(f"{self.command[0]} ended with {self.process.returncode}:\n{self.log()}")
            return False

        wait_until(seen, f'"{text}" in {self.log_path.name}')

    def send(self, number):
        self.process.send_signal(number)

    def is_alive(self):
        return self.process.poll() is None

    def stop(self, number=signal.SIGTERM):
        """Ends the process and returns its exit code."""
        if self.is_alive():
            self.send(number)
        return self.wait()

    def kill(self):
        return self.stop(signal.SIGKILL)

    def wait(self):
        return self.process.wait(LIMIT)

    def put_down(self):
        """Ends the process whatever state it is in, a stopped one included."""
        if self.is_alive():
            self.process.kill()
            self.process.wait(LIMIT)


class Agent(Daemon):
    """talvik-agentd, ready to answer."""

    def __init__(self, folder, port, arguments, environment=None):
        self.port = port
        super().__init__(folder, f"agentd-{time.monotonic_ns()}", [*program("talvik-agentd"), *arguments], environment)
        self.wait_for_log("ready, listening on")


class TalvikTest(unittest.TestCase):
    """A test in a folder of its own, whose processes end with it. Logs are shown when it fails."""

    maxDiff = None

    def run(self, result=None):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="talvik-e2e-"))
        self.daemons = []
        self.config = self.write("talvik-agentd.conf", CONFIG)
        self.state = self.folder / "state"
        (self.folder / "client" / "cert_indexes").mkdir(parents=True)  # the tools tell when they make it
        before = self._bad(result)
        try:
            return super().run(result)
        finally:
            for daemon in self.daemons:
                daemon.put_down()
            if self._bad(result) > before:
                self._show_logs()
            shutil.rmtree(self.folder)

    @staticmethod
    def _bad(result):
        return 0 if result is None else len(result.failures) + len(result.errors)

    def _show_logs(self):
        print(f"--- logs of {self.id()}", file=sys.stderr)
        for log in sorted(self.folder.glob("*.log")):
            print(f"--- {log.name}\n{log.read_text(errors='replace')[-SHOWN_OF_A_LOG:]}", file=sys.stderr)

    def write(self, name, text):
        path = self.folder / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text)
        return path

    def arguments(self, port=None, **changes):
        """The agent's command line; a keyword replaces an option, None leaves it out."""
        options = {
            "config": self.config,
            "device": SOURCE / "etc" / "talvik-device.xml",
            "module": MODULE,
            "mib-dir": SOURCE / "mibs",
            "state-dir": self.state,
            "listen": f"udp:127.0.0.1:{port}" if port else None,
        }
        options.update({name.replace("_", "-"): value for name, value in changes.items()})
        return [part for name, value in options.items() if value is not None for part in (f"--{name}", str(value))]

    def start_agent(self, port=None, environment=None, **changes):
        port = port or free_port()
        return self.keep(Agent(self.folder, port, self.arguments(port, **changes), environment))

    def start_backend(self, socket_path):
        daemon = self.keep(Daemon(self.folder, f"backendd-{time.monotonic_ns()}",
                                  [*program("talvik-backendd"), "--socket", socket_path, "--device",
                                   SOURCE / "etc" / "talvik-device.xml", "--state-dir",
                                   self.folder / "backend-state"]))

        def answers():
            with socket.socket(socket.AF_UNIX, socket.SOCK_STREAM) as probe:
                try:
                    probe.connect(str(socket_path))
                    return True
                except OSError:
                    if not daemon.is_alive():
                        raise AssertionError(f"talvik-backendd ended:\n{daemon.log()}")
                    return False

        wait_until(answers, "talvik-backendd listening")
        return daemon

    def keep(self, daemon):
        self.daemons.append(daemon)
        return daemon

    def run_agent(self, *extra, **changes):
        """Runs the agent to its end; for starts that must fail and for --check."""
        return subprocess.run([*program("talvik-agentd"), *self.arguments(free_port(), **changes), *extra],
                              stdin=subprocess.DEVNULL, capture_output=True, text=True, timeout=LIMIT, cwd=self.folder)

    def assert_refuses_to_start(self, *expected, **changes):
        """The agent ends with 1 and says each of the expected texts in one error line."""
        result = self.run_agent(**changes)
        self.assertEqual(result.returncode, 1, result.stderr)
        errors = [line for line in result.stderr.splitlines() if "cannot start" in line]
        self.assertEqual(len(errors), 1, result.stderr)
        for text in expected:
            self.assertIn(str(text), errors[0])
        return errors[0]

    def tool(self, name, agent, user, *arguments, mib_text=False, numeric=True):
        """Runs a stock SNMP tool against the agent; nothing of this machine's SNMP set-up takes part.

        What stands first in `arguments` and begins with a hyphen is an option, the rest are objects and values.
        """
        client = self.folder / "client"
        environment = dict(os.environ, SNMPCONFPATH=str(client), SNMP_PERSISTENT_DIR=str(client), LC_ALL="C", MIBS="",
                           MIBDIRS=str(client))
        if mib_text:
            environment["MIBDIRS"] = f"{SOURCE / 'mibs'}:{SOURCE / 'tests' / 'mib' / 'stubs'}"
            environment["MIBS"] = "KEL-TALVIK-MIB"
        options = list(itertools.takewhile(lambda argument: argument.startswith("-"), arguments))
        objects = arguments[len(options):]
        command = [name, "-t", "5", "-r", "1", *user, *(["-On"] if numeric else []), *options, "--",
                   f"udp:127.0.0.1:{agent.port}", *objects]
        return subprocess.run(command, env=environment, stdin=subprocess.DEVNULL, capture_output=True, text=True,
                              timeout=LIMIT)

    def lines(self, name, agent, user, *arguments):
        """The lines of a tool's answer; fails when the tool does."""
        result = self.tool(name, agent, user, *arguments)
        self.assertEqual(result.returncode, 0, f"{name} {arguments}: {result.stdout}{result.stderr}")
        lines = result.stdout.splitlines()
        return shown(lines) if name in ("snmpwalk", "snmpbulkwalk") else lines

    def walk(self, agent, user=None, start=ROOT):
        """The lines of a GETNEXT walk."""
        return self.lines("snmpwalk", agent, user or READER, start)

    def engine(self, agent):
        """The engine's ID and boots as the agent tells them."""
        engine_id, boots = self.lines("snmpget", agent, EVERYTHING, ENGINE_ID, ENGINE_BOOTS)
        octets = re.sub(r"\s", "", engine_id.split("Hex-STRING:")[1]).lower()
        return octets, int(boots.split("INTEGER:")[1])


def shown(lines):
    """The lines without those that say that there is nothing more."""
    return [line for line in lines if " = No more" not in line and line != "End of MIB"]


def oid_of(line):
    """The object identifier that a line of a tool's answer begins with, as numbers."""
    return tuple(int(part) for part in line.split(" = ")[0].strip(".").split("."))


def increases(lines):
    oids = [oid_of(line) for line in lines]
    return all(low < high for low, high in zip(oids, oids[1:]))
