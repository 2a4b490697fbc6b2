"""The place in which the commands of a page run: a tree as a reader has it after ./dev build, and a running agent.

What the pages write for everybody stands for something here: HOST:1161 is the agent's port, /run/talvik a folder.
"""

import contextlib
import json
import os
import pathlib
import random
import re
import shutil
import signal
import socket
import sqlite3
import subprocess
import sys
import time
from typing import NamedTuple

from pages import SOURCE

sys.path.insert(0, str(SOURCE / "tests" / "e2e"))

from backend_wire import BackendClient  # noqa: E402 (the path comes first)
from talvik_e2e import AUTH, BIN, LIMIT, MODULE, PRIV, Daemon, wait_until  # noqa: E402

GOES_ON = ("talvikctl watch", "tail -f", "journalctl -f")
OURS = ("talvik-agentd", "talvik-backendd", "talvikctl")
READY = {"talvik-agentd": "ready, listening on", "talvik-backendd": None, "snmptrapd": "NET-SNMP version"}
ENDS_BY_ITSELF = ("--check", "--help", "--version", "-V")
COMMUNITY = "reader"
MOMENT = 1700000000  # 2023-11-14 22:13:20 UTC
ZONE = "IST-5:30"
# Serial number, id, level and parameters of the alarms that are active when a page begins.
ALARMS = ((1, 501010001, 5, "0,7,S3A1,1"), (2, 505010001, 5, "A,P2,0"))

AGENT = f"""
view all included .1
rocommunity {COMMUNITY} 127.0.0.1 -V all
rocommunity public 127.0.0.1 -V all
""" + "".join(f"""
createUser {user} SHA-256 "{AUTH}" AES "{PRIV}"
rwuser {user} authPriv -V all
""" for user in ("admin", "operator", "monitor", "receivers"))

CLIENT = """
{mibs}
defVersion 3
defSecurityName {user}
defSecurityLevel authPriv
defAuthType SHA-256
defAuthPassphrase {AUTH}
defPrivType AES
defPrivPassphrase {PRIV}
"""

# Options that the programs get in addition, so that what is the default on a reader's machine does not touch this one.
SHIM = """#!/bin/bash
program={program}
case "$(basename "$0") $*" in
    *--help* | *--version*) exec "$program" "$@" ;;
    talvikctl\\ trap\\ list* | talvikctl\\ trap\\ add* | talvikctl\\ trap\\ modify* | talvikctl\\ trap\\ remove* | \\
    talvikctl\\ trap\\ import*)
        case "$*" in *--agent*) ;; *) set -- "$@" --agent udp:127.0.0.1:{port} ;; esac ;;
    talvik-agentd*--check*) ;;
    talvik-agentd*)
        case "$*" in *--config*) ;; *) set -- "$@" --config {config} ;; esac
        case "$*" in *--listen*) ;; *) set -- "$@" --listen udp:127.0.0.1:{port} ;; esac ;;
esac
exec "$program" "$@"
"""
SUDO = """#!/bin/bash
exec "$@"
"""
DEV = """#!/bin/bash
[ "$1" = run ] || {{ echo "only ./dev run is here" >&2; exit 2; }}
shift
export TALVIK_BIN_DIR={bin}
exec bash {source}/tools/dev/run.sh --once --no-build --port {demo_port} --receiver-port {receiver_port} --folder {folder} "$@"
"""


def lasting_port():
    """A UDP port that nobody has, below those that the system gives away: it is used only later, and more than once."""
    while True:
        port = random.randrange(16000, 32000)
        with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as probe, contextlib.suppress(OSError):
            probe.bind(("127.0.0.1", port))
            return port


def names_for_the_tools():
    """The line of the snmp.conf for stock tools that has them load the MIBs."""
    return re.search(r"(?m)^mibs .*", (SOURCE / "contrib" / "net-snmp" / "snmp.conf").read_text(encoding="utf-8"))[0]


class Done(NamedTuple):
    status: int
    lines: list  # what a terminal would show


class Place:
    """A folder with everything; `user` is whom snmp.conf names, `names` whether the tools know the MIB by themselves."""

    def __init__(self, folder, user="admin", names=False):
        self.folder = pathlib.Path(folder)
        self.tree, self.shims, self.client = self.folder / "talvik", self.folder / "shims", self.folder / "client"
        self.port, self.demo_port, self.receiver_port = (lasting_port() for _ in range(3))
        self.daemons, self.prelude, self.agent = [], [], None
        self._make_tree()
        self.state = self.tree / "build" / "release" / "var" / "lib" / "talvik"
        self.config = self._write(self.folder / "agent.conf", AGENT)
        self._write(self.client / "snmp.conf", CLIENT.format(mibs=names_for_the_tools() if names else "mibs :", user=user,
                                                            AUTH=AUTH, PRIV=PRIV))
        (self.client / "cert_indexes").mkdir()  # the tools tell when they make it
        self._make_shims()
        self.words = [(str(self.folder / "run"), "/run/talvik"), (str(self.folder / "demo"), "run"),
                      (str(self.state), "/var/lib/talvik"), (str(self.tree / "etc"), "/etc/talvik"),
                      (f"127.0.0.1:{self.port}", "127.0.0.1:1161"),
                      (f"127.0.0.1:{self.demo_port}", "127.0.0.1:1161"), (str(self.receiver_port), "10162")]

    def _write(self, path, text, mode=0o600):
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text)
        path.chmod(mode)
        return path

    def _make_tree(self):
        """The source tree by links, but a copy of etc/, and programs that take this tree for theirs."""
        bin_folder, lib_folder = self.tree / "build" / "release" / "bin", self.tree / "build" / "release" / "lib"
        bin_folder.mkdir(parents=True)
        lib_folder.mkdir()
        for name in ("run", "demo", "home"):
            (self.folder / name).mkdir()
        for entry in SOURCE.iterdir():
            if entry.name not in ("build", "run", "etc", "dev", ".git"):
                (self.tree / entry.name).symlink_to(entry)
        shutil.copytree(SOURCE / "etc", self.tree / "etc")
        for program in BIN.iterdir():
            if program.name not in OURS:
                (bin_folder / program.name).symlink_to(program)
        for file, target in [(BIN / name, bin_folder) for name in OURS] + [(MODULE, lib_folder)]:
            try:
                os.link(file.resolve(), target / file.name)
            except OSError:
                shutil.copy(file, target)

    def _make_shims(self):
        bin_folder = self.tree / "build" / "release" / "bin"
        for program in OURS:
            self._write(self.shims / program, SHIM.format(program=bin_folder / program, port=self.port, config=self.config),
                        0o755)
        self._write(self.shims / "sudo", SUDO, 0o755)
        self._write(self.tree / "dev", DEV.format(bin=bin_folder, source=SOURCE, demo_port=self.demo_port,
                                                  receiver_port=self.receiver_port, folder=self.folder / "demo"), 0o755)

    # What the pages write, and what it is here.

    def here(self, text):
        text = text.replace("HOST:1161", "127.0.0.1:1161").replace("STATE-FOLDER", "/var/lib/talvik")
        text = text.replace("<this repository>", str(self.folder / "repository"))
        text = re.sub(r"-A AUTH\b", f"-A {AUTH}", re.sub(r"-X PRIV\b", f"-X {PRIV}", text))
        text = re.sub(r"(FILL-IN-)?AUTHENTICATION-PASSPHRASE", AUTH, text)
        text = re.sub(r"(FILL-IN-)?PRIVACY-PASSPHRASE", PRIV, text).replace("COMMUNITY", COMMUNITY)
        text = re.sub(rf"build/release/bin/({'|'.join(OURS)})", rf"{self.shims}/\1", text)
        for ours, theirs in self.words:
            text = text.replace(theirs, ours) if theirs != "run" else re.sub(r"(?<![\w/.-])run/", f"{ours}/", text)
        return text

    def there(self, text):
        for ours, theirs in self.words:
            text = text.replace(ours, theirs)
        return text

    # What runs.

    @property
    def environment(self):
        kept = {name: value for name, value in os.environ.items() if not name.startswith(("SNMP", "MIB", "TALVIK_"))}
        return {**kept, "PATH": f"{self.shims}:{os.environ['PATH']}:/usr/sbin:/sbin", "LC_ALL": "C.UTF-8", "TZ": ZONE,
                "HOME": str(self.folder / "home"),
                "SNMPCONFPATH": str(self.client), "SNMP_PERSISTENT_DIR": str(self.client),
                "MIBDIRS": f"{SOURCE / 'mibs'}:{SOURCE / 'tests' / 'mib' / 'stubs'}"}

    def _script(self, text):
        return "\n".join(["set -o pipefail", *self.prelude, text])

    def run(self, text):
        """Runs a command line to its end."""
        process = subprocess.Popen(["bash", "-c", self._script(self.here(text))], cwd=self.tree, env=self.environment,
                                   stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                                   start_new_session=True)
        try:
            output = process.communicate(timeout=LIMIT)[0]
        except subprocess.TimeoutExpired:
            os.killpg(process.pid, signal.SIGKILL)
            raise AssertionError(f"{text}: did not end within {LIMIT} seconds:\n{process.communicate()[0]}") from None
        return Done(process.returncode, self.there(output).splitlines())

    def run_for_a_while(self, text):
        """Runs what goes on until Ctrl-C, until it has printed something, and ends it so."""
        watcher = Daemon(self.tree, f"watcher-{time.monotonic_ns()}", ["bash", "-c", self._script("exec " + self.here(text))],
                         self.environment)
        self.daemons.append(watcher)
        wait_until(lambda: watcher.log() or not watcher.is_alive(), f"{text}: no output")
        return Done(watcher.stop(signal.SIGINT), self.there(watcher.log()).splitlines())

    def remember(self, text):
        """A line that sets something for those below it: a variable, the folder."""
        self.prelude.append(self.here(text))

    @staticmethod
    def is_daemon(program, text):
        return pathlib.PurePath(program).name in READY and not any(word in text.split() for word in ENDS_BY_ITSELF)

    def start(self, program, text):
        """Starts what runs on, and waits until it is ready. An agent or a back end takes the place of the agent before."""
        name = pathlib.PurePath(program).name
        if name in ("talvik-agentd", "talvik-backendd") and self.agent:
            self.agent.stop()  # which has the folder's alarms
        daemon = Daemon(self.tree, f"daemon-{time.monotonic_ns()}", ["bash", "-c", self._script("exec " + self.here(text))],
                        self.environment)
        self.daemons.append(daemon)
        if READY[name]:
            daemon.wait_for_log(READY[name])
        else:
            path = pathlib.Path(re.search(r"--socket[= ](\S+)", self.here(text))[1])
            wait_until(lambda: path.exists() or not daemon.is_alive(), f"{path}: {daemon.log()}")
        if name == "talvik-agentd":
            self.agent = daemon
        return daemon

    def start_agent(self):
        """The agent with its embedded back end, in place of what runs."""
        for daemon in self.daemons:
            daemon.stop()
        self.start("talvik-agentd", "talvik-agentd")

    def keep_alarms(self):
        """Makes the alarms of ALARMS active; the agent's first start makes the file."""
        self.start_agent()
        self.agent.stop()
        database = sqlite3.connect(self.state / "alarms.db")
        with database:
            database.executemany("INSERT INTO active(serial, alarm_id, level, time, parameters) VALUES(?, ?, ?, ?, ?)",
                                 [(serial, alarm, level, MOMENT, text) for serial, alarm, level, text in ALARMS])
            database.execute("UPDATE counter SET last_serial = ?", (ALARMS[-1][0],))
        database.close()
        self.start_agent()

    def raise_up_to(self, serial):
        """Raises alarms until one has that serial number, if none has had it yet."""
        with BackendClient(self.state / "agent.sock") as client:
            while client.raise_alarm(501010001, b"0,7,S3A1,1") < serial:
                pass

    def stop(self):
        for daemon in self.daemons:
            daemon.send(signal.SIGCONT) if daemon.is_alive() else None
            daemon.put_down()

    def logs(self):
        return "".join(f"--- {daemon.command[-1].splitlines()[-1]}\n{daemon.log()[-4000:]}" for daemon in self.daemons)


def write_files(place, page):
    """Files that the page shows: a block of JSON or configuration below a line that ends in `name`: ."""
    for block in page.blocks:
        text = "\n".join(block.lines) + "\n"
        if block.language == "json":
            json.loads(text)
        if block.language in ("json", "conf") and (named := re.search(r"`([\w./-]+)`:$", block.above)):
            (place.tree / place.here(named[1])).write_text(place.here(text) if block.language == "conf" else text)
