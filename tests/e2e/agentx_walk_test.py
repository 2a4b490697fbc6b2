"""Behind a stock snmpd managers see the same, octet for octet, as from the agent itself."""

import unittest

from agentx_master import AgentxTest
from alarm_table import ALARMS, CLEAR_LEAF, alarms_numbered, name
from talvik_e2e import ENTRY, OPERATOR, READER, ROOT, TABLE, V1, WRITER
from trap_table import TRAPS, Destination, creation_of, name as trap_name

ROWS = [Destination(3, "192.0.2.3"), Destination(70000, "2001:db8::1", 10162, 3, 7, "monitor"),
        Destination(5, "no.such.name.invalid", 162, 1, 2)]
FEW, MANY = 20, 1000


class AgentxWalk(AgentxTest):
    def both(self, count):
        """An agent by itself and one behind a master, with the same alarms and trap receivers."""
        alarms = alarms_numbered(range(1, count + 1))
        alone_state, behind_state = self.folder / "alone", self.folder / "behind"
        for state in (alone_state, behind_state):
            self.keep_alarms(alarms, state=state)
        alone = self.start(state_dir=alone_state)
        master = self.start_master()
        self.start_subagent(master, state_dir=behind_state)
        return alone, master

    def add_rows(self, *agents):
        for agent in agents:
            with self.manager(agent) as manager:
                for row in ROWS:
                    self.assertEqual(manager.set(*creation_of(row)).error, "noError")

    def test_every_table_is_the_same(self):
        alone, master = self.both(FEW)
        self.add_rows(alone, master)
        for user in (V1, READER, OPERATOR):
            for start in (ROOT, TABLE, ALARMS, TRAPS):
                with self.subTest(user=user[0], start=start):
                    expected = self.lines("snmpwalk", alone, user, start)
                    self.assertEqual(self.lines("snmpwalk", master, user, start), expected)
        for user in (READER, OPERATOR):
            for repetitions in (1, 7, 100):
                with self.subTest(user=user[0], repetitions=repetitions):
                    expected = self.lines("snmpbulkwalk", alone, user, f"-Cr{repetitions}", ROOT)
                    self.assertGreater(len(expected), FEW * 12)
                    self.assertEqual(self.lines("snmpbulkwalk", master, user, f"-Cr{repetitions}", ROOT), expected)

    def test_single_requests_are_the_same(self):
        alone, master = self.both(FEW)
        self.add_rows(alone, master)
        objects = [f"{ENTRY}.1.1", f"{ENTRY}.9.1", f"{ENTRY}.1.2", name(9, 1), name(9, FEW + 1), name(13, 1),
                   CLEAR_LEAF, f"{CLEAR_LEAF}.0", trap_name(2, 5), trap_name(2, 6)]
        for tool in ("snmpget", "snmpgetnext"):
            with self.subTest(tool=tool):
                self.assertEqual(self.lines(tool, master, READER, *objects), self.lines(tool, alone, READER, *objects))
        mixed = ["-Cn1", "-Cr5", CLEAR_LEAF, f"{ENTRY}.7", name(9, 0), TRAPS]
        self.assertEqual(self.lines("snmpbulkget", master, READER, *mixed),
                         self.lines("snmpbulkget", alone, READER, *mixed))

    def test_thousand_alarms_are_the_same(self):
        alone, master = self.both(MANY)
        expected = self.lines("snmpbulkwalk", alone, WRITER, "-Cr100", ALARMS)
        self.assertGreaterEqual(len(expected), MANY * 12)
        self.assertEqual(self.lines("snmpbulkwalk", master, WRITER, "-Cr100", ALARMS), expected)


if __name__ == "__main__":
    unittest.main()
