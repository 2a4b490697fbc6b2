"""The trap destination table, as the tests of it see it."""

import re
from dataclasses import dataclass

from snmp_wire import Manager
from talvik_e2e import ROOT, WRITER, TalvikTest

TRAPS = ROOT + ".2.91.10.4.1"
TRAP_ENTRY = TRAPS + ".1"
USABLE, PORT, STATUS, INDEX, VERSION, ADDRESS, TYPE, USER = COLUMNS = range(1, 9)
ACTIVE, NOT_IN_SERVICE, NOT_READY, CREATE_AND_GO, CREATE_AND_WAIT, DESTROY = range(1, 7)

LETTERS = {USABLE: "s", PORT: "u", STATUS: "i", INDEX: "i", VERSION: "i", ADDRESS: "s", TYPE: "i", USER: "s"}
SHOWN = {"s": 'STRING: "{}"', "u": "Gauge32: {}", "i": "INTEGER: {}"}


def name(column, index):
    return f"{TRAP_ENTRY}.{column}.{index}"


def assign(column, index, value, letter=None):
    """One variable of a SET, for the stock tools and for `Manager` alike."""
    return name(column, index), letter or LETTERS[column], value


def create(index, address="192.0.2.1", port=162, **others):
    """The variables that create a row; others are version, type and user."""
    return [assign(STATUS, index, CREATE_AND_GO), assign(ADDRESS, index, address), assign(PORT, index, port),
            *change(index, **others)]


def change(index, **columns):
    """The variables that give a row's columns, named as the fields of a `Destination`, new values."""
    return [assign(FIELDS[field], index, value) for field, value in columns.items()]


def destroy(index):
    return [assign(STATUS, index, DESTROY)]


FIELDS = {"usable": USABLE, "port": PORT, "index": INDEX, "version": VERSION, "address": ADDRESS, "type": TYPE,
          "user": USER}


@dataclass(frozen=True)
class Destination:
    """A row. The usable address is the address unless it says otherwise."""

    index: int
    address: str = "192.0.2.1"
    port: int = 162
    version: int = 2
    type: int = 1
    user: str = "--"
    usable: str = None

    def cells(self):
        """The values by column."""
        values = {column: getattr(self, field) for field, column in FIELDS.items()}
        values[STATUS] = ACTIVE
        if self.usable is None:
            values[USABLE] = self.address
        return values


def creation_of(row):
    """The variables that create a row just so."""
    return [assign(STATUS, row.index, CREATE_AND_GO), *change_to(row)]


def change_to(row):
    """The variables that make the row of this index this one."""
    return change(row.index, address=row.address, port=row.port, version=row.version, type=row.type, user=row.user)


def walk_of(*destinations):
    """The lines of a numeric walk over a table of these, given by ascending index."""
    return [f"{name(column, row.index)} = {SHOWN[LETTERS[column]].format(row.cells()[column])}"
            for column in COLUMNS for row in destinations]


def destinations_in(bindings):
    """The rows that `Manager.walk` found, by index. Every row must have every column, and no other."""
    rows = {}
    for binding in bindings:
        column, index = (int(part) for part in binding.name[len(TRAP_ENTRY) + 1:].split("."))
        rows.setdefault(index, {})[column] = binding.value
    return {index: destination_of(cells) for index, cells in rows.items()}


def destination_of(cells):
    if set(cells) != set(COLUMNS) or cells[STATUS] != ACTIVE:
        raise AssertionError(f"no whole row: {cells}")
    values = {field: cells[column] for field, column in FIELDS.items()}
    for field in ("usable", "address", "user"):
        values[field] = values[field].decode()
    if values["usable"] == values["address"]:
        values["usable"] = None
    return Destination(**values)


class TrapTest(TalvikTest):
    """A test with an agent whose trap destinations it changes."""

    def traps(self, agent, user=WRITER):
        """The lines of a walk over the table."""
        # snmpwalk asks for the table's own name when there is nothing under it.
        return [line for line in self.walk(agent, user, TRAPS) if not line.startswith(f"{TRAPS} = No Such Object")]

    def manager(self, agent, community="writer"):
        manager = Manager(agent.port, community)
        self.addCleanup(manager.socket.close)
        return manager

    def snmpset(self, agent, user, *assignments):
        return self.tool("snmpset", agent, user, *[part for assignment in assignments for part in words(*assignment)])

    def set(self, agent, *assignments, user=WRITER):
        """Sets and fails if the agent refuses. The answer repeats what was set."""
        result = self.snmpset(agent, user, *assignments)
        self.assertEqual(result.returncode, 0, f"{assignments}: {result.stdout}{result.stderr}")
        self.assertEqual(re.findall(r"^\S+(?= = )", result.stdout, re.MULTILINE), [part[0] for part in assignments])

    def assert_refused(self, agent, reason, failed, *assignments, user=WRITER):
        """The agent answers `reason` for the variable `failed`, and the table stays as it is."""
        before = self.traps(agent)
        result = self.snmpset(agent, user, *assignments)
        self.assertEqual(result.returncode, 2, f"{assignments}: {result.stdout}{result.stderr}")
        self.assertRegex(result.stderr, rf"Reason: \(?{reason}\W")  # v1's reasons stand in brackets
        self.assertIn(f"Failed object: {failed}\n", result.stderr)
        self.assertEqual(self.traps(agent), before)


def words(object_name, letter, value):
    """An assignment on snmpset's command line; a text that this could not carry goes there as octets."""
    if letter == "s":
        octets = value if isinstance(value, bytes) else value.encode()
        if octets.startswith(b"-") or not octets.isascii() or not octets.decode().isprintable():
            return [object_name, "x", octets.hex()]
        return [object_name, "s", octets.decode()]
    return [object_name, letter, str(value)]
