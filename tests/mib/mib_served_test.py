"""What a running agent serves, accepts and sends is what the MIB's text says."""

import json
import unittest

from mib_agent import ALARMS, MibAgentTest, id_without_oid
from mib_facts import MIB_DESCRIPTION, read_mib
from mib_walk import LETTERS, WIRE, altered, cells_of, name_of, value_faults, walk_faults, write_faults

from notifications import DISK_FAILED, TRAP_OID, disk
from snmp_wire import COUNTER64, GAUGE, INTEGER, NO_SUCH_OBJECT, OCTETS
from talvik_e2e import HEALTH, ROOT, wait_until

CLEARS = [("talvikClearAlarm", ALARMS[0].serial)]  # what it has itself says nothing
TRAP_TYPES = {"Hex-STRING": OCTETS, "INTEGER": INTEGER, "Gauge32": GAUGE, "Counter64": COUNTER64}


def notification_faults(module, notification):
    """What is wrong with a notification, as a receiver decoded it."""
    objects = {one.name: one for one in module.notification_objects}
    known = {name_of(one): one for one in module.notifications}
    # Those under the alarms' own OIDs say what the one for alarms without says.
    own = next(one for one in module.notifications if one.name == "talvikOwnAlarmOther")
    definition = known.get(notification.oid, own)
    bindings = notification.bindings[2:]
    faults = []
    if [name for name, *_ in bindings] != [name_of(objects[name]) + ".0" for name in definition.members]:
        faults.append(f"{definition.name}: its objects are {[name for name, *_ in bindings]}")
    for name, (_, kind, value) in zip(definition.members, bindings):
        faults += value_faults(objects[name], TRAP_TYPES[kind], value)
    return faults


def limit_faults(module, manager):
    """Which numbers and sizes of row 1 are refused and should not be, or the other way round."""
    faults = []

    def try_value(one, value, shown, expected):
        error = manager.set((f"{name_of(one)}.1", LETTERS[WIRE[one.syntax.base]], value)).error
        if error != expected:
            faults.append(f"{one.name}: {shown} answered {error}")

    for one in module.objects():
        if one.access != "read-create" or one.syntax.written == "RowStatus":
            continue
        labels = one.syntax.labels.values()
        for number in range(max(labels, default=-2) + 2):
            try_value(one, number, f"{number} is", "noError" if number in labels else "wrongValue")
        for low, high in one.syntax.bounds:
            for value, refusal in ((low - 1, True), (low, False), (high, False), (high + 1, True)):
                if one.syntax.base != "OCTET STRING":
                    try_value(one, value, f"{value} is", "wrongValue" if refusal else "noError")
                elif refusal or not one.name.endswith("Address"):  # few texts are addresses, and names are looked up
                    try_value(one, b"a" * value, f"{value} octets are", "wrongLength" if refusal else "noError")
    return faults


class MibServed(MibAgentTest):
    @classmethod
    def setUpClass(cls):
        cls.module = read_mib()
        cls.columns = {column.name: column for table in cls.module.tables for column in table.columns}

    def walk_of_all(self, agent):
        cells = cells_of(self.manager(agent), ROOT)
        return {name: cell for name, cell in cells.items() if not name.startswith(HEALTH + ".")}

    def filled(self, **changes):
        self.receiver = self.trap_socket()
        return self.start_with_receiver(self.receiver.port, **changes)

    def test_a_walk_shows_what_the_text_says(self):
        cells = self.walk_of_all(self.filled())
        self.assertEqual(len(cells), 8 + 12 * len(ALARMS) + 1 + 8 * 2)
        self.assertEqual(walk_faults(self.module, cells), [])

        for name, changes, fault in (
                ("talvikTrapPort", {"base": "INTEGER"}, "talvikTrapPort: type 0x42 where the text has INTEGER"),
                ("talvikAlarmTime", {"base": "Unsigned32"}, "talvikAlarmTime: type 0x4 where the text has Unsigned32"),
                ("talvikAlarmFullId", {"base": "Gauge32"}, "talvikAlarmFullId: type 0x46 where the text has Gauge32"),
                ("talvikTopologyStatus", {"labels": {"offline": 2}},
                 "talvikTopologyStatus: 1 is no number of its enumeration"),
                ("talvikTrapUser", {"bounds": ((3, 32),)}, "talvikTrapUser: 2 is not within ((3, 32),)"),
                ("talvikTrapIndex", {"access": "not-accessible"},
                 "talvikTrapIndex: is served although it is not-accessible"),
                ("talvikAlarmTitle", {"oid": "1.3.6.1.4.1.99999.2.91.10.1.1.1.13"}, "talvikAlarmTitle: is not served"),
                ("talvikClearAlarm", {"oid": "1.3.6.1.4.1.99999.2.91.10.1.3"},
                 ".1.3.6.1.4.1.99999.2.91.10.1.2.0: is served, but the text has no object there")):
            with self.subTest(name):
                self.assertIn(fault, walk_faults(altered(self.module, name, **changes), cells))

    def test_what_can_be_written_is_what_the_text_says(self):
        agent = self.filled()
        manager, cells = self.manager(agent), self.walk_of_all(agent)
        self.assertEqual(write_faults(self.module, manager, cells, CLEARS), [])
        self.assertEqual(limit_faults(self.module, manager), [])

    def test_the_row_status_takes_what_the_compliance_statement_says(self):
        status = self.columns["talvikTrapRowStatus"]
        accepted = self.module.write_syntaxes[status.name]
        self.assertEqual(accepted, ["active", "createAndGo", "destroy"])
        manager = self.manager(self.filled())
        for label, number in status.syntax.labels.items():
            if label != "createAndGo":  # which needs a row that is not there; that it is accepted all rows show
                answer = manager.set((f"{name_of(status)}.1", "i", number))
                self.assertEqual(answer.error, "noError" if label in accepted else "wrongValue", label)

    def test_an_agent_that_accepts_something_else_is_found(self):
        description = json.loads(MIB_DESCRIPTION.read_text())
        columns = {column["name"]: column for column in description["tables"][2]["columns"]}
        usable = columns["talvikTrapUsableAddress"]
        usable["access"] = "read-only"
        del usable["aliasOf"]
        columns["talvikTrapType"]["enumeration"] = {"alarm": 1, "noAlarm": 2, "other": 4, "alarmOwnOid": 7}
        columns["talvikTrapPort"]["range"] = [2, 65536]
        columns["talvikTrapUser"]["size"] = [1, 31]
        self.write(f"mibs/{MIB_DESCRIPTION.name}", json.dumps(description))
        agent = self.filled(mib_dir=self.folder / "mibs")
        manager, cells = self.manager(agent), self.walk_of_all(agent)
        self.assertEqual(write_faults(self.module, manager, cells, CLEARS),
                         [f"talvikTrapUsableAddress: a SET of row {row} is answered notWritable" for row in (1, 2)])
        faults = limit_faults(self.module, manager)
        for expected in ("talvikTrapType: 3 is answered wrongValue", "talvikTrapPort: 1 is answered wrongValue",
                         "talvikTrapUser: 32 octets are answered wrongLength"):
            self.assertIn(expected, faults)
        self.assertRegex("\n".join(faults), "talvikTrapType: 4 is answered (?!wrongValue)")
        self.assertRegex("\n".join(faults), "talvikTrapPort: 65536 is answered (?!wrongValue)")

    def test_a_row_gets_the_defaults_of_the_text(self):
        agent = self.filled()
        manager = self.manager(agent)
        table = next(table for table in self.module.tables if table.name == "talvikTrapTable")
        defaults = {column.name: column for column in table.columns if column.default}
        self.assertEqual(set(defaults), {"talvikTrapVersion", "talvikTrapType", "talvikTrapUser"})
        answer = manager.set((name_of(self.columns["talvikTrapRowStatus"]) + ".9", "i", 4),
                             (name_of(self.columns["talvikTrapAddress"]) + ".9", "s", b"192.0.2.9"),
                             (name_of(self.columns["talvikTrapPort"]) + ".9", "u", 162))
        self.assertEqual(answer.error, "noError")
        for column in defaults.values():
            expected = column.syntax.labels.get(column.default, column.default.strip('"').encode())
            self.assertEqual(manager.get(f"{name_of(column)}.9").bindings[0].value, expected)

    def test_notifications_carry_what_the_text_says(self):
        agent = self.filled()
        client = self.client()
        serial = client.raise_alarm(DISK_FAILED, disk(7))
        client.clear(serial)
        client.report_event(id_without_oid())
        client.test_trap(1)
        wait_until(lambda: len(self.receiver.datagrams) >= 7, "seven notifications")
        found = self.receiver.notifications()
        for one in found:
            self.assertEqual(one.bindings[1][0], TRAP_OID)
            self.assertEqual(notification_faults(self.module, one), [])

        alarm, test, other = (name_of(one) for one in self.module.notifications)
        disk_oid = f"{ROOT}.2.251.20.1.2.2.1.1."
        self.assertEqual(sorted(one.oid for one in found),
                         sorted([alarm, alarm, alarm, test, other, disk_oid + "1", disk_oid + "2"]))
        wrong = altered(self.module, "kelReportingAlarmFaultType", base="Gauge32")
        self.assertIn("kelReportingAlarmFaultType: type 0x2 where the text has Gauge32",
                      notification_faults(wrong, found[0]))
        moved = altered(self.module, "kelReportingAlarmProductSN", oid="1.3.6.1.4.1.99999.2.91.10.3.1.1.15")
        self.assertRegex(notification_faults(moved, found[0])[0], "^talvikAlarm: its objects are ")

    def test_what_only_notifications_carry_cannot_be_read(self):
        agent = self.filled()
        names = [name_of(one) + ".0" for one in self.module.notification_objects]
        answer = self.manager(agent).get(*names)
        self.assertEqual({one.tag for one in answer.bindings}, {NO_SUCH_OBJECT})


if __name__ == "__main__":
    unittest.main()
