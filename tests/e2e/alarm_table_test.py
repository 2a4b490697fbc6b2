"""The table of active alarms, whole and cell by cell: what was raised is what managers see."""

import unittest

from alarm_table import (ALARM_ENTRY, ALARMS, CLEAR_LEAF, CLEAR_SUBTREE, COLUMNS, DETAIL, FULL_ID, ID,
                         LAST_SERIAL, LEVELS, LOCATION, MOMENT, NODE_CODE, SERIAL, TIME, TITLE, Alarm,
                         AlarmTableTest, alarms_numbered, name, shown_cells, table_of, wire_cells)
from notifications import DISK_ADVICE, DISK_FAILED
from snmp_wire import COUNTER64, END_OF_VIEW, GAUGE, GET_BULK, OCTETS
from talvik_e2e import OPERATOR, READER, ROOT

NO_OBJECT = "No Such Object available on this agent at this OID"
NO_INSTANCE = "No Such Instance currently exists at this OID"
NO_MORE = "No more variables left in this MIB View (It is past the end of the MIB tree)"
SEPARATOR = "-|-"  # one that TalvikTest.tool takes for an option
COLUMN_NAMES = ["index"] + [f"talvikAlarm{part}" for part in (
    "NodeCode", "Location", "Advice", "Title", "Type", "Level", "Id", "Time", "SerialNo", "Detail", "Category",
    "FullId")]
LEVEL_NAMES = {1: "critical", 2: "major", 3: "minor", 4: "warning", 5: "info"}
GAPS = alarms_numbered([3, 4, 9, 70, 4000000000, LAST_SERIAL])
LEAF = f"{CLEAR_LEAF} = Gauge32: 0"


def table_row(alarm):
    """A row as snmptable shows it."""
    cells = alarm.cells()
    stamp = cells[TIME][1]
    moment = (f"{int.from_bytes(stamp[:2], 'big')}-{stamp[2]}-{stamp[3]},{stamp[4]}:{stamp[5]}:{stamp[6]}"
              f".{stamp[7]},+{stamp[9]}:{stamp[10]}")
    return [str(alarm.serial), "TALVIK-0001", cells[LOCATION][1].decode(), DISK_ADVICE, "Disk failed", "alarm",
            LEVEL_NAMES[LEVELS[alarm.level]], str(DISK_FAILED), moment, str(alarm.serial), cells[DETAIL][1].decode(),
            "fault", str(DISK_FAILED)]


class Whole(AlarmTableTest):
    """All rows, with each of the stock tools."""

    def show(self, tool, agent, start, user=READER):
        result = self.tool(tool, agent, user, "-Ox", start)
        self.assertEqual(result.returncode, 0, result.stdout + result.stderr)
        return shown_cells(result.stdout)

    def check_same(self, found, expected):
        """As assertEqual, without a comparison line by line of what may be very long."""
        for one, other in zip(found, expected):
            self.assertEqual(one, other)
        self.assertEqual(len(found), len(expected))

    def check(self, count, walked=COLUMNS):
        """Every tool shows so many alarms; snmpwalk, which asks for each cell, these columns."""
        alarms = alarms_numbered(range(7, 7 + count))
        agent = self.start_with(alarms)
        for user in (READER, OPERATOR):
            with self.subTest(tool="snmpbulkwalk", user=user[0]):
                self.check_same(self.show("snmpbulkwalk", agent, ALARMS, user), table_of(alarms))
        if walked == COLUMNS:
            self.check_same(self.show("snmpwalk", agent, ALARMS), table_of(alarms))
        else:
            for column in walked:
                found = self.show("snmpwalk", agent, f"{ALARM_ENTRY}.{column}")
                self.check_same(found, table_of(alarms, [column]))
        result = self.tool("snmptable", agent, READER, "-Cf", SEPARATOR, "-Ci", ALARMS, mib_text=True, numeric=False)
        self.assertEqual(result.returncode, 0, result.stdout + result.stderr)
        rows = [line.split(SEPARATOR) for line in result.stdout.splitlines() if SEPARATOR in line]
        if alarms:
            self.check_same(rows, [COLUMN_NAMES] + [table_row(alarm) for alarm in alarms])
        else:
            self.assertEqual((rows, result.stdout.strip()), ([], "KEL-TALVIK-MIB::talvikAlarmTable: No entries"))
        return agent

    def test_none(self):
        agent = self.check(0)
        self.assertEqual(self.walk(agent, start=ALARMS), [f"{ALARMS} = {NO_OBJECT}"])
        self.assertEqual(self.lines("snmpgetnext", agent, READER, ALARMS), [LEAF])

    def test_one(self):
        self.check(1)

    def test_as_many_as_a_batch_has(self):
        self.check(50)

    def test_one_more_than_a_batch_has(self):
        self.check(51)

    def test_a_thousand(self):
        self.check(1000)

    def test_ten_thousand(self):
        self.check(10000, walked=[NODE_CODE, SERIAL, FULL_ID])

    def test_the_same_whatever_the_number_of_repetitions(self):
        alarms = alarms_numbered(range(1000, 3000, 2))
        agent = self.start_with(alarms)
        first = self.tool("snmpbulkwalk", agent, READER, "-Ox", "-Cr1", ALARMS).stdout
        self.check_same(shown_cells(first), table_of(alarms))
        for repetitions in range(2, 61):
            result = self.tool("snmpbulkwalk", agent, READER, "-Ox", f"-Cr{repetitions}", ALARMS)
            self.assertEqual((result.returncode, result.stderr), (0, ""))
            self.assertTrue(result.stdout == first, f"-Cr{repetitions} shows something else than -Cr1")

    def test_what_the_back_end_is_told(self):
        agent, client = self.start(), self.client()
        alarms = [Alarm(serial, serial, level, MOMENT + 86400 * 200 * serial, "SN-ä\U0001F600")
                  for serial, level in enumerate(LEVELS, 1)]
        for alarm in alarms:
            serial = client.raise_alarm(DISK_FAILED, alarm.parameters.encode(), level=alarm.level, time=alarm.time)
            self.assertEqual(serial, alarm.serial)
        client.report_event(DISK_FAILED, b"DAE000,9,SN,1")
        self.check_same(self.show("snmpbulkwalk", agent, ALARMS), table_of(alarms))

    def test_an_alarm_with_all_64_bits_of_an_id_has_no_definition_and_no_row(self):
        agent, client = self.start(), self.client()
        client.raise_alarm(2 ** 64 - 1)
        client.raise_alarm(DISK_FAILED, Alarm(2).parameters.encode(), time=MOMENT)
        client.raise_alarm(2 ** 64 - 1)
        self.check_same(self.show("snmpbulkwalk", agent, ALARMS), table_of([Alarm(2)]))


class Cells(AlarmTableTest):
    """Single objects, some of which are not there."""

    def setUp(self):
        super().setUp()
        self.agent = self.start_with(GAPS)

    def get(self, *names):
        return self.lines("snmpget", self.agent, READER, *names)

    def next(self, *names):
        return self.lines("snmpgetnext", self.agent, READER, *names)

    def location(self, alarm):
        return f'{name(LOCATION, alarm.serial)} = STRING: "Enclosure DAE000, slot {alarm.disk}"'

    def node_code(self, alarm):
        return f'{name(NODE_CODE, alarm.serial)} = STRING: "TALVIK-0001"'

    def serial_no(self, alarm):
        return f"{name(SERIAL, alarm.serial)} = Gauge32: {alarm.serial}"

    def test_get_shows_cells_of_several_rows(self):
        for alarms in (GAPS, GAPS[::-1]):
            lines = self.get(*[name(column, one.serial) for one in alarms for column in (LOCATION, SERIAL)])
            self.assertEqual(lines, [part for one in alarms for part in (self.location(one), self.serial_no(one))])

    def test_get_shows_each_cell(self):
        with self.manager(self.agent, "reader") as manager:
            for alarm in GAPS:
                answer = manager.get(*[name(column, alarm.serial) for column in COLUMNS])
                self.assertEqual(wire_cells(answer.bindings), table_of([alarm]))

    def test_get_of_a_row_that_is_not_there(self):
        for serial in (0, 1, 2, 5, 3999999999, 4000000001, LAST_SERIAL - 1):
            for column in COLUMNS:
                self.assertEqual(self.get(name(column, serial)), [f"{name(column, serial)} = {NO_INSTANCE}"])

    def test_get_of_the_last_serial_number_there_may_be(self):
        self.agent.stop()
        agent = self.start(state_dir=self.folder / "other-state")
        self.assertEqual(self.lines("snmpget", agent, READER, name(TITLE, LAST_SERIAL)),
                         [f"{name(TITLE, LAST_SERIAL)} = {NO_INSTANCE}"])
        self.assertEqual(self.lines("snmpgetnext", agent, READER, name(TITLE, LAST_SERIAL)), [LEAF])

    def test_get_of_an_index_that_cannot_be(self):
        for suffix in ("", ".3.0", ".3.3", ".0.3", f".{LAST_SERIAL}.1"):
            object_name = f"{ALARM_ENTRY}.{SERIAL}{suffix}"
            self.assertEqual(self.get(object_name), [f"{object_name} = {NO_INSTANCE}"])

    def test_get_of_a_column_that_is_not_there(self):
        for object_name in (name(0, 3), name(13, 3), name(LAST_SERIAL, 3), ALARMS, ALARM_ENTRY, f"{ALARMS}.0.1.3",
                            f"{ALARMS}.2.1.3", f"{ALARM_ENTRY}.0", f"{ALARM_ENTRY}.13"):
            self.assertEqual(self.get(object_name), [f"{object_name} = {NO_OBJECT}"])

    def test_get_tells_what_is_there_and_what_not_in_one_answer(self):
        lines = self.get(name(SERIAL, 4), name(SERIAL, 5), name(13, 4), name(SERIAL, 9))
        self.assertEqual(lines, [self.serial_no(GAPS[1]), f"{name(SERIAL, 5)} = {NO_INSTANCE}",
                                 f"{name(13, 4)} = {NO_OBJECT}", self.serial_no(GAPS[2])])

    def test_get_next_from_anywhere(self):
        first, second, third, last = GAPS[0], GAPS[1], GAPS[2], GAPS[-1]
        location = f"{ALARM_ENTRY}.{LOCATION}"
        for start, line in (
                (f"{ROOT}.2.91.10", self.node_code(first)), (f"{ROOT}.2.91.10.1", self.node_code(first)),
                (f"{ROOT}.2.91.9.2", self.node_code(first)), (ALARMS, self.node_code(first)),
                (f"{ALARMS}.0.9", self.node_code(first)), (ALARM_ENTRY, self.node_code(first)),
                (f"{ALARM_ENTRY}.0", self.node_code(first)), (name(0, 9), self.node_code(first)),
                (f"{ALARM_ENTRY}.1", self.node_code(first)), (location, self.location(first)),
                (f"{location}.0", self.location(first)), (f"{location}.2", self.location(first)),
                (f"{location}.2.7", self.location(first)), (f"{location}.3", self.location(second)),
                (f"{location}.3.0", self.location(second)), (f"{location}.4", self.location(third)),
                (f"{location}.5", self.location(third)), (f"{location}.8.9.9", self.location(third)),
                (f"{location}.4000000000", self.location(last)),
                (f"{location}.{LAST_SERIAL - 1}", self.location(last)),
                (name(NODE_CODE, LAST_SERIAL), self.location(first)),
                (name(NODE_CODE, f"{LAST_SERIAL}.1"), self.location(first)),
                (name(SERIAL, 70), self.serial_no(GAPS[4])),
                (name(FULL_ID, LAST_SERIAL), LEAF), (name(13, 0), LEAF), (name(LAST_SERIAL, 3), LEAF),
                (f"{ALARMS}.2", LEAF), (f"{ALARMS}.{LAST_SERIAL}", LEAF), (CLEAR_SUBTREE, LEAF)):
            with self.subTest(start=start):
                self.assertEqual(self.next(start), [line])
        self.assertEqual(self.next(CLEAR_LEAF), [f"{CLEAR_LEAF} = {NO_MORE}"])

    def test_get_next_of_several_at_once(self):
        lines = self.next(name(LOCATION, LAST_SERIAL - 1), ALARMS, name(SERIAL, 4), name(FULL_ID, LAST_SERIAL))
        self.assertEqual(lines, [self.location(GAPS[-1]), self.node_code(GAPS[0]), self.serial_no(GAPS[2]), LEAF])

    def test_bulk_of_several_columns_behind_single_ones(self):
        lines = self.lines("snmpbulkget", self.agent, READER, "-Cn2", "-Cr5", name(LOCATION, 4), ALARMS,
                           name(ID, 9), name(SERIAL, 5), name(FULL_ID, 9))
        repeated = []
        for number, alarm in enumerate(GAPS[3:]):
            repeated += [f"{name(ID, alarm.serial)} = Gauge32: {DISK_FAILED}",
                         self.serial_no(GAPS[2 + number]), f"{name(FULL_ID, alarm.serial)} = Counter64: {DISK_FAILED}"]
        cells = GAPS[0].cells()
        stamp = " ".join(f"{octet:02X}" for octet in cells[TIME][1])
        self.assertEqual(lines[:2 + len(repeated)], [self.location(GAPS[2]), self.node_code(GAPS[0]), *repeated])
        self.assertEqual(lines[2 + len(repeated):][:3], [f"{name(TIME, 3)} = Hex-STRING: {stamp} ",
                                                         self.serial_no(GAPS[-1]), LEAF])

    def test_bulk_goes_on_behind_the_table(self):
        with self.manager(self.agent, "reader") as manager:
            answer = manager.get_bulk(4, name(FULL_ID, 4000000000), name(SERIAL, 70))
            # The library ends an answer where one of its variables has come to the end of everything.
            self.assertEqual([(one.name, one.tag) for one in answer.bindings],
                             [(name(FULL_ID, LAST_SERIAL), COUNTER64), (name(SERIAL, 4000000000), GAUGE),
                              (CLEAR_LEAF, GAUGE), (name(SERIAL, LAST_SERIAL), GAUGE),
                              (CLEAR_LEAF, END_OF_VIEW), (name(DETAIL, 3), OCTETS)])

    def test_bulk_shows_whole_rows(self):
        self.agent.stop()
        alarms = alarms_numbered(range(100, 400, 3))
        self.config = self.write("large.conf", "rocommunity reader\n[snmp] sendMessageMaxSize 65000\n")
        self.keep_alarms(alarms, LAST_SERIAL)
        self.agent = self.start()
        with self.manager(self.agent, "reader") as manager:
            starts = [(name(column, 99), "n", None) for column in COLUMNS]
            bindings = manager.ask(GET_BULK, starts, 0, 60).bindings
            self.assertEqual(len(bindings), 60 * len(COLUMNS))
            expected = [cell for alarm in alarms[:60] for cell in table_of([alarm])]
            self.assertEqual(wire_cells(bindings), expected)


if __name__ == "__main__":
    unittest.main()
