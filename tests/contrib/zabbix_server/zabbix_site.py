"""A Zabbix of its own: PostgreSQL, server and frontend from Debian's packages in one folder, and the frontend's API.

Everything listens on the loopback or on a Unix socket in that folder, and runs as an ordinary user: `nobody` where the test is
root, for PostgreSQL refuses that.
"""

import atexit
import contextlib
import json
import os
import pathlib
import random
import shutil
import signal
import socket
import subprocess
import tempfile
import urllib.error
import urllib.request

from contrib_support import MIBS, SOURCE
from talvik_e2e import Daemon, wait_until

FRONTEND = pathlib.Path("/usr/share/zabbix")
SCHEMA = pathlib.Path("/usr/share/zabbix-server-pgsql")
POSTGRESQL = max(pathlib.Path("/usr/lib/postgresql").glob("*/bin"))
USER = "nobody"
AS_USER = ["setpriv", f"--reuid={USER}", "--regid=nogroup", "--clear-groups"] if os.geteuid() == 0 else []
STOPPING = 30  # seconds that a program may take to end; then its whole group is killed
IMPORTING = 120  # seconds for the schema, or for one answer of the API

CONFIG = """
DBHost={folder}
DBName=zabbix
DBUser=zabbix
ListenIP=127.0.0.1
ListenPort={port}
LogType=console
PidFile={folder}/zabbix_server.pid
SocketDir={folder}
SNMPTrapperFile={traps}
StartSNMPTrapper=1
CacheUpdateFrequency=1
HousekeepingFrequency=0
Timeout=1
UnreachableDelay=1
UnreachablePeriod=3
UnavailableDelay=1
StartPollers=3
StartTrappers=1
StartPingers=0
StartDiscoverers=0
StartHTTPPollers=0
StartDBSyncers=1
StartPreprocessors=1
StartLLDProcessors=1
"""

# What the package brings of templates, all but their names, is 130,000 rows that nothing here takes.
INSERT = b"\nINSERT INTO "
OF_TEMPLATES = (b"function", b"graph", b"host_discovery", b"hostmacro", b"http", b"item", b"lld_", b"sysmap", b"trigger",
                b"valuemap", b"widget")

# Where the frontend looks for its configuration is a constant of its own.
FRONTEND_CONSTANT = "/etc/zabbix/zabbix.conf.php"
FRONTEND_CONFIG = """<?php
$DB['TYPE'] = 'POSTGRESQL';
$DB['SERVER'] = '{folder}';
$DB['PORT'] = '0';
$DB['DATABASE'] = 'zabbix';
$DB['USER'] = 'zabbix';
$DB['PASSWORD'] = '';
$DB['DOUBLE_IEEE754'] = true;
"""


def free_tcp_port():
    """A TCP port of the loopback that nobody had a moment ago; the server takes none above 32767."""
    for port in random.sample(range(20000, 32000), 100):
        with socket.socket() as probe, contextlib.suppress(OSError):
            probe.bind(("127.0.0.1", port))
            return port
    raise AssertionError("no free TCP port among 100 between 20000 and 32000")


class Service(Daemon):
    """A program with processes of its own; they end with it."""

    def __init__(self, folder, name, command, environment, last_word=signal.SIGTERM):
        self.last_word = last_word
        super().__init__(folder, name, ["setsid", *AS_USER, *command], environment)

    def end(self):
        with contextlib.suppress(ProcessLookupError):  # it ended by itself
            self.send(self.last_word)
        with contextlib.suppress(subprocess.TimeoutExpired):
            self.process.wait(STOPPING)
        with contextlib.suppress(ProcessLookupError):  # nothing is left
            os.killpg(self.process.pid, signal.SIGKILL)
        self.process.wait(STOPPING)


class Site:
    """The three programs, and the API as its administrator."""

    def __init__(self):
        self.services = []
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="talvik-zabbix-"))
        self.traps = self.folder / "traps.txt"
        self.token = None
        self.calls = 0
        atexit.register(self.end)  # an interrupt leaves no other chance
        try:
            self.start()
        except BaseException:
            self.end(show=True)
            raise

    def start(self):
        self.traps.touch()
        for name in ("mibs", "snmp", "snmp/cert_indexes"):
            (self.folder / name).mkdir()
        # The tree may lie where the other user cannot read.
        for folder in (SOURCE / "mibs", SOURCE / "tests" / "mib" / "stubs"):
            shutil.copytree(folder, self.folder / "mibs", dirs_exist_ok=True)
        self.environment = {
            "PATH": os.environ["PATH"], "LC_ALL": "C.UTF-8", "TZ": "UTC", "HOME": str(self.folder), "MIBS": MIBS,
            "MIBDIRS": str(self.folder / "mibs"), "SNMPCONFPATH": str(self.folder / "snmp"),
            "SNMP_PERSISTENT_DIR": str(self.folder / "snmp")}
        self.own(self.folder)
        self.start_database()
        self.start_server()
        self.start_frontend()

    def own(self, folder):
        """Gives everything in a folder to the user that the programs run as."""
        if AS_USER:
            for path in (folder, *folder.rglob("*")):
                shutil.chown(path, USER)

    def run(self, *command, **options):
        done = subprocess.run([*AS_USER, *map(str, command)], cwd=self.folder, env=self.environment, capture_output=True,
                              timeout=IMPORTING, **options)
        if done.returncode:
            raise AssertionError(f"{command} ended with {done.returncode}:\n{done.stdout.decode()}{done.stderr.decode()}")

    def service(self, name, *command, **options):
        self.services.append(Service(self.folder, name, command, self.environment, **options))
        return self.services[-1]

    def start_database(self):
        data, psql = self.folder / "data", [POSTGRESQL / "psql", "-qX", "-h", self.folder, "-U", "zabbix"]
        self.run(POSTGRESQL / "initdb", "-D", data, "-U", "zabbix", "--auth=trust", "--encoding=UTF8", "--no-locale", "--no-sync")
        database = self.service("postgresql", POSTGRESQL / "postgres", "-D", data, "-k", self.folder, "-c", "listen_addresses=",
                                "-c", "fsync=off", "-c", "synchronous_commit=off", "-c", "full_page_writes=off",
                                last_word=signal.SIGINT)
        database.wait_for_log("ready to accept connections")
        self.run(*psql, "-d", "postgres", "-c", "CREATE DATABASE zabbix")
        for part in ("schema", "images", "data"):
            text = subprocess.run(["zcat", SCHEMA / f"{part}.sql.gz"], check=True, capture_output=True, timeout=IMPORTING).stdout
            kept = [one for one in text.split(INSERT) if not one.startswith(OF_TEMPLATES)]
            self.run(*psql, "-v", "ON_ERROR_STOP=1", "-1", "-d", "zabbix", input=INSERT.join(kept))

    def start_server(self):
        config = self.folder / "zabbix_server.conf"
        config.write_text(CONFIG.format(folder=self.folder, port=free_tcp_port(), traps=self.traps))
        server = self.service("zabbix_server", shutil.which("zabbix_server") or "/usr/sbin/zabbix_server", "-f", "-c", config)
        server.wait_for_log("server #0 started [main process]")

    def start_frontend(self):
        web, config = self.folder / "web", self.folder / "zabbix.conf.php"
        shutil.copytree(FRONTEND, web, ignore=shutil.ignore_patterns("locale"))
        constants = web / "include" / "classes" / "core" / "CConfigFile.php"
        text = constants.read_text()
        if text.count(FRONTEND_CONSTANT) != 1:
            raise AssertionError(f"{constants} has {FRONTEND_CONSTANT} not exactly once: look how this frontend finds its file")
        constants.write_text(text.replace(FRONTEND_CONSTANT, str(config)))
        config.write_text(FRONTEND_CONFIG.format(folder=self.folder))
        self.own(web)
        port = free_tcp_port()
        self.api = f"http://127.0.0.1:{port}/api_jsonrpc.php"
        self.service("frontend", "php", "-S", f"127.0.0.1:{port}", "-t", web).wait_for_log("started")
        self.token = self.call("user.login", username="Admin", password="zabbix")

    def call(self, method, *arguments, **parameters):
        """What the API answers; fails with its message when that is an error. Lists go as the only other argument."""
        self.calls += 1
        request = {"jsonrpc": "2.0", "method": method, "params": arguments[0] if arguments else parameters, "id": self.calls,
                   "auth": self.token}
        posted = urllib.request.Request(self.api, json.dumps(request).encode(), {"Content-Type": "application/json-rpc"})
        with urllib.request.urlopen(posted, timeout=IMPORTING) as reply:
            answer = json.load(reply)
        if "error" in answer:
            raise AssertionError(f"{method}: {answer['error']}")
        return answer["result"]

    def import_template(self, text):
        """Imports an export in YAML as Configuration, Templates, Import does, all boxes ticked."""
        both = {"createMissing": True, "updateExisting": True}
        rules = {name: both for name in ("templates", "valueMaps")}
        rules.update({name: {**both, "deleteMissing": True} for name in ("items", "triggers", "discoveryRules")})
        self.call("configuration.import", format="yaml", source=text, rules={**rules, "groups": both})

    def end(self, show=False):
        """Ends all, the database last, and removes the folder."""
        atexit.unregister(self.end)
        for service in reversed(self.services):
            service.end()
            if show:
                print(f"--- {service.log_path.name}\n{service.log()[-20000:]}")
        shutil.rmtree(self.folder)
