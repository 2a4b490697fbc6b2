"""What the tests of notifications share: the names of things, and an agent with a back end and receivers."""

import json
import os
import shutil
import sqlite3

from backend_wire import BackendClient
from talvik_e2e import AUTH, CONFIG, PRIV, wait_until
from trap_receivers import Snmptrapd, TrapSocket
from trap_table import Destination, TrapTest, creation_of

UP_TIME, TRAP_OID = ".1.3.6.1.2.1.1.3.0", ".1.3.6.1.6.3.1.1.4.1.0"
COLD_START, WARM_START = ".1.3.6.1.6.3.1.1.5.1", ".1.3.6.1.6.3.1.1.5.2"
ALARM_TRAP, TEST_TRAP = ".1.3.6.1.4.1.99999.2.91.10.2.1.0.1", ".1.3.6.1.4.1.99999.2.91.10.2.1.0.2"
OWN_OID_ROOT = ".1.3.6.1.4.1.99999.2.251.20.1.2.2"
(NODE_CODE, LOCATION, ADVICE, TITLE, FAULT_TYPE, FAULT_LEVEL, ALARM_ID, FAULT_TIME, SERIAL_NO, DETAIL, CATEGORY,
 LONG_ALARM_ID, MODEL, SERIAL_OF_PRODUCT) = range(1, 15)
FAULT, CLEAR, EVENT = 1, 2, 3

DISK_FAILED = 501010001
DISK_ADVICE = ("Replace the disk with one of the same type and at least the same capacity. Its amber lamp is lit. "
               "Reconstruction starts by itself.")
V1, V2C, V3 = 1, 2, 3
ALARM, OWN_OID = 1, 7
TRAP_USER = "trapuser"


def users(auth=AUTH, priv=PRIV):
    return [{"name": TRAP_USER, "auth": "SHA-256", "authPassphrase": auth, "privacy": "AES", "privacyPassphrase": priv}]


def disk(number):
    """The parameters of an alarm about a disk."""
    return f"DAE000,{number},SN-{number},1".encode()


class NotificationTest(TrapTest):
    """A test with an agent that sends notifications and a back end that has alarms."""

    zone = "UTC"

    def setUp(self):
        self.config.write_text(CONFIG)
        self.settings = self.folder / "traps.json"
        self.write_settings(users=users())
        self.backend_socket = self.state / "agent.sock"

    def write_settings(self, **settings):
        """Replaces the trap settings in one step, as an operator should."""
        new = self.write("traps.json.new", json.dumps(settings))
        new.chmod(0o600)
        new.replace(self.settings)

    def start(self, **changes):
        """An agent with its back end embedded, unless `changes` say otherwise."""
        return self.start_agent(trap_settings=self.settings, environment=dict(os.environ, TZ=self.zone), **changes)

    def snmptrapd(self, config="", port=None):
        return self.keep(Snmptrapd(self.folder, config, port))

    def trap_socket(self, **others):
        receiver = TrapSocket(**others)
        self.addCleanup(receiver.close)
        return receiver

    def client(self, path=None):
        client = BackendClient(path or self.backend_socket)
        self.addCleanup(client.close)
        return client

    def add_receiver(self, agent, index, port, version=V2C, type=ALARM, user="--", address="127.0.0.1"):
        with self.manager(agent) as manager:
            answer = manager.set(*creation_of(Destination(index, address, port, version, type, user)))
            self.assertEqual(answer.error, "noError")

    def status(self, index):
        """What the agent counts for a receiver."""
        with BackendClient(self.state / "agent.sock") as client:
            return client.receivers()[index]

    def wait_for_status(self, index, condition, what):
        return wait_until(lambda: condition(status := self.status(index)) and status, what)

    def outbox_size(self, state):
        """How many notifications the back end keeps in that folder; None while that cannot be told."""
        copy = self.folder / "outbox-copy"
        shutil.rmtree(copy, ignore_errors=True)
        copy.mkdir()
        for file in sorted(state.glob("alarms.db*")):
            shutil.copy(file, copy)
        database = sqlite3.connect(copy / "alarms.db")
        try:
            return database.execute("SELECT count(*) FROM outbox").fetchone()[0]
        except sqlite3.DatabaseError:
            return None  # copied while it was written to
        finally:
            database.close()


def memory(pid, field):
    """A line of the process's memory, such as VmHWM, in KiB."""
    with open(f"/proc/{pid}/status", encoding="ascii") as status:
        return next(int(line.split()[1]) for line in status if line.startswith(f"{field}:"))
