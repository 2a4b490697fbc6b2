"""Managers clear alarms by writing their serial numbers."""

import sqlite3
import unittest

from alarm_table import (CLEAR_LEAF, CLEAR_SUBTREE, LAST_SERIAL, SERIAL, AlarmTableTest, alarms_numbered, clearing,
                         name)
from notifications import ALARM_TRAP, CATEGORY, CLEAR, DISK_FAILED, FAULT, SERIAL_NO, disk
from snmp_wire import NO_SUCH_INSTANCE
from talvik_e2e import AUTH, CONFIG, OPERATOR, PRIV, READER, WRITER, v3, wait_until
from trap_table import ADDRESS, STATUS, create, destroy
from trap_table import name as trap_name

WRITE_V1 = ["-v1", "-c", "writer"]
ADMIN = v3("admin")
CLEARER = f"""
view  clearing included {CLEAR_LEAF}
createUser clearer SHA-256 "{AUTH}" AES "{PRIV}"
group  clearers usm clearer
access clearers "" usm authPriv exact talvik clearing none
"""


class AlarmClear(AlarmTableTest):
    def setUp(self):
        super().setUp()
        self.config.write_text(CONFIG + CLEARER)
        self.active = list(range(1, 131))
        self.agent = self.start_with(alarms_numbered(self.active))
        self.writer, self.reader = self.manager(self.agent), self.manager(self.agent, "reader")
        self.assertEqual(self.serials(self.reader), self.active)

    def assert_cleared(self, serial):
        """The next requests do not see it."""
        self.assertEqual(self.reader.get(name(SERIAL, serial)).bindings[0].tag, NO_SUCH_INSTANCE)
        self.active.remove(serial)
        behind = next((one for one in self.active if one > serial), None)
        if behind:
            self.assertEqual(self.reader.get_next(name(SERIAL, serial - 1)).bindings[0].value, behind)

    def assert_refused(self, reason, failed, *assignments, user=WRITER):
        """The stock tool is told the reason and the variable at fault, and all alarms stay."""
        result = self.snmpset(self.agent, user, *assignments)
        self.assertEqual(result.returncode, 2, f"{assignments}: {result.stdout}{result.stderr}")
        self.assertRegex(result.stderr, rf"Reason: \(?{reason}\W")
        self.assertIn(f"Failed object: {failed}\n", result.stderr)
        self.assertEqual(self.serials(self.reader), self.active)

    def test_the_row_is_gone_at_once(self):
        for serial, user in ((7, WRITER), (20, ADMIN), (50, WRITE_V1), (51, v3("clearer"))):
            result = self.snmpset(self.agent, user, clearing(serial))
            self.assertEqual((result.returncode, result.stdout), (0, f"{CLEAR_LEAF} = Gauge32: {serial}\n"))
            self.assert_cleared(serial)
        self.assertEqual(self.serials(self.reader), self.active)

    def test_every_row_can_be_cleared(self):
        for serial in (*range(60, 50, -1), 1, 130, *range(2, 51), *range(61, 130)):
            answer = self.writer.set(clearing(serial))
            self.assertEqual((answer.error, answer.position), ("noError", 0))
            self.assert_cleared(serial)
        self.assertEqual(self.serials(self.reader), [])

    def test_receivers_and_the_history_are_told(self):
        receiver = self.snmptrapd()
        self.add_receiver(self.agent, 1, receiver.port)
        serial = self.client().raise_alarm(DISK_FAILED, disk(7))
        self.assertEqual(self.writer.set(clearing(serial)).error, "noError")
        told = receiver.wait_for(2, lambda one: one.oid == ALARM_TRAP and one.objects()[SERIAL_NO] == serial)
        self.assertEqual([one.objects()[CATEGORY] for one in told], [FAULT, CLEAR])
        self.agent.stop()
        database = sqlite3.connect(self.state / "alarms.db")
        history = database.execute("SELECT serial, requester, parameters FROM history").fetchall()
        database.close()
        self.assertEqual(history, [(serial, "SNMP_AGENT", "DAE000,7,SN-7,1")])

    def test_the_log_tells_who_cleared_what(self):
        for user, who in ((ADMIN, "user admin"), (WRITER, "v2c"), (WRITE_V1, "v1")):
            serial = self.active.pop()
            self.assertEqual(self.snmpset(self.agent, user, clearing(serial)).returncode, 0)
            wait_until(lambda: f"done: {serial}\n" in self.agent.log(), "the line of a write")
            self.assertRegex(self.agent.log(), rf"(?m) info host scalar talvikClearAlarm, SET by {who} from "
                                               rf".*\[127\.0\.0\.1\].*, done: {serial}$")
            self.assertRegex(self.agent.log(), r"(?m) warning module-4 0x1002E \[OnSetLeaf:\d+\] "
                                               rf"clear alarm of serial number:{serial}, ret:0\.$")
        self.assert_refused("inconsistentValue", CLEAR_LEAF, clearing(9999))
        self.assertRegex(self.agent.log(), r"(?m) warning host scalar talvikClearAlarm, SET by v2c from .*"
                                           r"\[127\.0\.0\.1\].*, cannot set 9999: no alarm with that serial number is "
                                           r"active \(0x1000014\)$")
        self.assertRegex(self.agent.log(), r"(?m) warning module-4 .*clear alarm of serial number:9999, "
                                           rf"ret:{0x1000014}\.$")

    def test_a_serial_number_that_is_not_active(self):
        self.assertEqual(self.writer.set(clearing(60)).error, "noError")
        self.active.remove(60)
        for serial in (0, 60, 131, 9999, LAST_SERIAL):
            for user in (WRITER, ADMIN):
                self.assert_refused("inconsistentValue", CLEAR_LEAF, clearing(serial), user=user)
            self.assert_refused("badValue", CLEAR_LEAF, clearing(serial), user=WRITE_V1)
            answer = self.writer.set(clearing(serial))
            self.assertEqual((answer.error, answer.position), ("inconsistentValue", 1))

    def test_a_wrong_type(self):
        for letter, value in (("i", 7), ("s", "7"), ("t", 7), ("o", ".1.3"), ("a", "0.0.0.7")):
            self.assert_refused("wrongType", CLEAR_LEAF, clearing(value, letter))
        self.assert_refused("badValue", CLEAR_LEAF, clearing(7, "i"), user=WRITE_V1)

    def test_a_wrong_instance(self):
        for object_name in (CLEAR_SUBTREE, f"{CLEAR_SUBTREE}.1", f"{CLEAR_LEAF}.0", f"{CLEAR_SUBTREE}.0.7"):
            self.assert_refused("noCreation", object_name, (object_name, "u", 7))
            self.assert_refused("noSuchName", object_name, (object_name, "u", 7), user=WRITE_V1)
        self.assert_refused("notWritable", name(SERIAL, 7), (name(SERIAL, 7), "u", 7))

    def test_who_may_only_read(self):
        for user in (READER, OPERATOR):
            self.assert_refused("noAccess", CLEAR_LEAF, clearing(7), user=user)
        self.assert_refused("noSuchName", CLEAR_LEAF, clearing(7), user=["-v1", "-c", "reader"])
        self.assert_refused("noAccess", trap_name(STATUS, 1), *create(1), user=v3("clearer"))

    def test_twice_in_one_request(self):
        for serials in ((7, 7), (7, 8), (8, 9999)):
            answer = self.writer.set(*[clearing(serial) for serial in serials])
            self.assertEqual((answer.error, answer.position), ("inconsistentValue", 2))
        answer = self.writer.set(clearing(7), clearing(8), clearing(9))
        self.assertEqual((answer.error, answer.position), ("inconsistentValue", 2))
        self.assertEqual(self.serials(self.reader), self.active)

    def test_together_with_a_trap_destination(self):
        for first in (True, False):
            row = create(5)
            serial = self.active.pop()
            answer = self.writer.set(*([clearing(serial), *row] if first else [*row, clearing(serial)]))
            self.assertEqual((answer.error, answer.position), ("noError", 0))
            self.assertEqual(self.serials(self.reader), self.active)
            self.assertEqual(len(self.traps(self.agent)), 8)
            self.assertEqual(self.writer.set(*destroy(5)).error, "noError")

    def test_together_with_a_trap_destination_that_is_refused(self):
        bad = create(5, "256.1.1.1")
        self.assert_refused("wrongValue", trap_name(ADDRESS, 5), clearing(7), *bad)
        self.assert_refused("wrongValue", trap_name(ADDRESS, 5), *bad, clearing(7))
        self.assert_refused("inconsistentName", trap_name(ADDRESS, 5), clearing(7), bad[1][:2] + ("192.0.2.1",))
        self.assertEqual(self.traps(self.agent), [])

    def test_a_trap_destination_together_with_an_alarm_that_is_not_active(self):
        self.assert_refused("inconsistentValue", CLEAR_LEAF, clearing(9999), *create(5))
        self.assert_refused("inconsistentValue", CLEAR_LEAF, *create(5), clearing(9999))
        self.assertEqual(self.traps(self.agent), [])

    def test_reads_0_whatever_was_written(self):
        for _ in range(2):
            for command, object_name in (("snmpget", CLEAR_LEAF), ("snmpgetnext", CLEAR_SUBTREE),
                                         ("snmpgetnext", name(12, LAST_SERIAL)), ("snmpwalk", CLEAR_SUBTREE),
                                         ("snmpbulkwalk", CLEAR_SUBTREE)):
                for user in (READER, ["-v1", "-c", "reader"]) if command != "snmpbulkwalk" else (READER, OPERATOR):
                    self.assertEqual(self.lines(command, self.agent, user, object_name), [f"{CLEAR_LEAF} = Gauge32: 0"])
            self.assertEqual(self.writer.set(clearing(self.active.pop())).error, "noError")
        for object_name in (CLEAR_SUBTREE, f"{CLEAR_SUBTREE}.1", f"{CLEAR_LEAF}.0"):
            self.assertEqual(self.reader.get(object_name).bindings[0].tag, NO_SUCH_INSTANCE)


if __name__ == "__main__":
    unittest.main()
