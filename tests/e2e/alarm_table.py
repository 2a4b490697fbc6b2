"""The table of active alarms and the leaf that clears one, as the tests of them see both."""

import re
import sqlite3
import time
from typing import NamedTuple

from backend_wire import BackendClient
from notifications import DISK_ADVICE, DISK_FAILED, NotificationTest
from snmp_wire import COUNTER64, GAUGE, INTEGER, OCTETS
from talvik_e2e import ROOT, wait_until
from trap_receivers import value_of

ALARMS = ROOT + ".2.91.10.1.1"
ALARM_ENTRY = ALARMS + ".1"
CLEAR_SUBTREE = ROOT + ".2.91.10.1.2"
CLEAR_LEAF = CLEAR_SUBTREE + ".0"
(NODE_CODE, LOCATION, ADVICE, TITLE, TYPE, LEVEL, ID, TIME, SERIAL, DETAIL, CATEGORY,
 FULL_ID) = COLUMNS = range(1, 13)

LEVELS = {1: 4, 2: 5, 3: 4, 4: 3, 5: 2, 6: 1, 7: 1, 8: 4}  # as raised, and as managers see them
TAGS = {INTEGER: "INTEGER", GAUGE: "Gauge32", OCTETS: "Hex-STRING", COUNTER64: "Counter64"}
MOMENT = 1700000000  # 2023-11-14 22:13:20 UTC
OFFSET = 330  # minutes, of the zone that the agents of these tests are in
LAST_SERIAL = 2 ** 32 - 1


def name(column, serial):
    return f"{ALARM_ENTRY}.{column}.{serial}"


def clearing(serial, letter="u"):
    """The variable of a SET that clears an alarm."""
    return CLEAR_LEAF, letter, serial


def place_of(object_name):
    """Column and serial number of a cell's name."""
    column, serial = object_name[len(ALARM_ENTRY) + 1:].split(".")
    return int(column), int(serial)


def date_and_time(moment):
    """The octets of a DateAndTime in the zone of these tests."""
    local = time.gmtime(moment + OFFSET * 60)
    return (local.tm_year.to_bytes(2, "big") + bytes([*local[1:6], 0]) + b"+" + bytes(divmod(OFFSET, 60)))


class Alarm(NamedTuple):
    """A failed disk that is told apart from others by its number."""

    serial: int
    disk: int = 7
    level: int = 5
    time: int = MOMENT
    product: str = "SN-1"

    @property
    def parameters(self):
        return f"DAE000,{self.disk},{self.product},1"

    def cells(self):
        """Type and value by column."""
        detail = (f"Disk {self.disk} in enclosure DAE000 (serial number {self.product}) has failed: "
                  "too many media errors.")
        return {NODE_CODE: (OCTETS, b"TALVIK-0001"), LOCATION: (OCTETS, f"Enclosure DAE000, slot {self.disk}".encode()),
                ADVICE: (OCTETS, DISK_ADVICE.encode()), TITLE: (OCTETS, b"Disk failed"), TYPE: (INTEGER, 2),
                LEVEL: (INTEGER, LEVELS[self.level]), ID: (GAUGE, DISK_FAILED),
                TIME: (OCTETS, date_and_time(self.time)), SERIAL: (GAUGE, self.serial),
                DETAIL: (OCTETS, detail.encode()), CATEGORY: (INTEGER, 1), FULL_ID: (COUNTER64, DISK_FAILED)}


def alarms_numbered(serials):
    """Alarms that differ in whatever may differ."""
    return [Alarm(serial, serial % 1000, serial % 8 + 1, MOMENT + serial) for serial in serials]


def table_of(alarms, columns=COLUMNS):
    """The cells of a walk over these alarms, given by ascending serial number: name, kind as the tools say, value."""
    cells = [alarm.cells() for alarm in alarms]
    return [(name(column, alarm.serial), TAGS[row[column][0]], row[column][1])
            for column in columns for alarm, row in zip(alarms, cells)]


def shown_cells(output):
    """Name, kind and value of what a tool prints with -Ox; lines without a value are left out."""
    found = []
    for part in re.split(r"^(?=\.1\.|End of MIB)", output, flags=re.MULTILINE):
        object_name, _, shown = part.strip().partition(" = ")
        if shown and not shown.startswith("No "):
            found.append((object_name, *value_of(shown)))
    return found


def wire_cells(bindings):
    """Name, kind and value of bindings as `Manager` gives them."""
    return [(one.name, TAGS.get(one.tag, one.tag), number_in(one)) for one in bindings]


def number_in(binding):
    return int.from_bytes(binding.value, "big") if binding.tag == COUNTER64 else binding.value


class AlarmTableTest(NotificationTest):
    """A test with an agent whose active alarms it reads; the agent's zone is not UTC."""

    zone = "IST-5:30"

    def keep_alarms(self, alarms, last_serial=None, state=None):
        """Puts alarms into the file of a back end that does not run; their serial numbers ascend."""
        state = state or self.state
        if not (state / "alarms.db").exists():
            self.start(state_dir=state).stop()  # which makes the file
        database = sqlite3.connect(state / "alarms.db")
        with database:
            database.executemany("INSERT INTO active(serial, alarm_id, level, time, parameters) VALUES(?, ?, ?, ?, ?)",
                                 ((one.serial, DISK_FAILED, one.level, one.time, one.parameters) for one in alarms))
            database.execute("UPDATE counter SET last_serial = ?",
                             (last_serial or max((one.serial for one in alarms), default=0),))
        database.close()

    def start_with(self, alarms, last_serial=None, **changes):
        """An agent with these active alarms in its embedded back end."""
        self.keep_alarms(alarms, last_serial)
        return self.start(**changes)

    def start_apart(self, **changes):
        """A back end as a process of its own, and its agent."""
        self.apart = self.folder / "backend.sock"
        self.backend = self.start_backend(self.apart)
        return self.start(backend=f"unix:{self.apart}", **changes)

    def serials(self, manager, column=SERIAL):
        """The serial numbers that a walk over a column shows."""
        return [place_of(one.name)[1] for one in manager.walk(f"{ALARM_ENTRY}.{column}")]

    def wait_for_serials(self, manager, serials, what):
        wait_until(lambda: self.serials(manager) == serials, what)

    def alarm_client(self):
        """A client of the back end that is a process of its own."""
        client = BackendClient(self.apart)
        self.addCleanup(client.close)
        return client
