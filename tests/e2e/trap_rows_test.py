"""Trap destinations read by every kind of request: none, one, several, and with gaps between their indexes."""

import unittest

from snmp_wire import END_OF_VIEW
from talvik_e2e import CONFIG, EVERYTHING, HEALTH, OPERATOR, READER, ROOT, V1, increases, private_mib, shown
from trap_table import (COLUMNS, PORT, STATUS, TRAP_ENTRY, TRAPS, USABLE, USER, VERSION, Destination, TrapTest,
                        change, create, creation_of, name, walk_of)

NO_OBJECT = "No Such Object available on this agent at this OID"
NO_INSTANCE = "No Such Instance currently exists at this OID"
SPARSE = [Destination(1, "192.0.2.1", 1, 1, 1, "first"), Destination(7, "2001:db8::7", 7, 2, 7, "second"),
          Destination(2147483647, "192.0.2.255", 65535, 3, 3, "last")]


class TrapRows(TrapTest):
    def start(self, *rows):
        """An agent of its own with these rows."""
        self.state = self.folder / f"state-{len(self.daemons)}"
        agent = self.start_agent()
        for row in rows:
            self.set(agent, *creation_of(row))
        return agent

    def test_walks_are_equal_whatever_they_are_made_of(self):
        for rows in ([], SPARSE[:1], SPARSE, SPARSE[1:]):
            agent = self.start(*rows)
            for user in (V1, READER, OPERATOR):
                with self.subTest(rows=len(rows), user=user[0]):
                    self.assertEqual(self.traps(agent, user), walk_of(*rows))
                    self.assertEqual(self.walk(agent, user), private_mib(walk_of(*rows)))
            for repetitions in (1, 2, 3, 7, 8, 10, 24, 25, 100, 2147483647):
                with self.subTest(rows=len(rows), repetitions=repetitions):
                    lines = self.lines("snmpbulkwalk", agent, READER, f"-Cr{repetitions}", ROOT)
                    self.assertEqual(lines, private_mib(walk_of(*rows)))

    def test_whole_agent_increases(self):
        for rows in ([], SPARSE):
            agent = self.start(*rows)
            lines = self.walk(agent, EVERYTHING, ".1")
            self.assertTrue(increases(lines))
            private = [line for line in lines if line.startswith(ROOT) and not line.startswith(HEALTH)]
            self.assertEqual(private, private_mib(walk_of(*rows)))

    def test_rows_come_by_index_whatever_order_they_were_made_in(self):
        for order in (SPARSE[::-1], [SPARSE[1], SPARSE[2], SPARSE[0]]):
            agent = self.start(*order)
            self.assertEqual(self.traps(agent), walk_of(*SPARSE))

    def test_indexes_are_ordered_as_numbers(self):
        rows = [Destination(index) for index in (2, 9, 10, 99, 100, 127, 128, 255, 256, 1000, 16383, 16384)]
        self.assertEqual(self.traps(self.start(*rows[::-1])), walk_of(*rows))

    def test_get_gives_every_instance(self):
        agent = self.start(*SPARSE)
        lines = walk_of(*SPARSE)
        self.assertEqual(self.lines("snmpget", agent, READER, *[line.split(" = ")[0] for line in lines]), lines)

    def test_get_says_what_is_not_there(self):
        agent = self.start(*SPARSE)
        for missing in (name(PORT, 2), name(USER, 0), name(STATUS, 2147483646), name(STATUS, 4294967295),
                        name(USABLE, "1.1"), f"{TRAP_ENTRY}.2"):
            with self.subTest(name=missing):
                self.assertEqual(self.lines("snmpget", agent, READER, missing), [f"{missing} = {NO_INSTANCE}"])
        for missing in (name(9, 1), name(0, 1), TRAP_ENTRY, TRAPS, f"{TRAPS}.2.1.1"):
            with self.subTest(name=missing):
                self.assertEqual(self.lines("snmpget", agent, READER, missing), [f"{missing} = {NO_OBJECT}"])

    def test_get_of_an_empty_table_says_what_is_not_there(self):
        agent = self.start()
        for column in COLUMNS:
            self.assertEqual(self.lines("snmpget", agent, READER, name(column, 1)),
                             [f"{name(column, 1)} = {NO_INSTANCE}"])

    def test_getnext_crosses_gaps_and_columns(self):
        agent = self.start(*SPARSE)
        lines = walk_of(*SPARSE)
        for start, expected in ((TRAPS, 0), (TRAP_ENTRY, 0), (f"{TRAP_ENTRY}.1", 0), (name(1, 0), 0), (name(1, 1), 1),
                                (name(1, 2), 1), (name(1, 6), 1), (name(1, "6.9.9"), 1), (name(1, 7), 2),
                                (name(1, 8), 2), (name(1, 2147483646), 2), (name(1, 2147483647), 3),
                                (name(1, 4294967295), 3), (name(7, 2147483647), 21), (name(8, 7), 23)):
            with self.subTest(start=start):
                self.assertEqual(self.lines("snmpgetnext", agent, READER, start), [lines[expected]])

    def test_getnext_behind_the_last_instance_leaves_the_table(self):
        agent = self.start(*SPARSE)
        with self.manager(agent, "reader") as manager:
            for start in (name(8, 2147483647), name(8, 4294967295), name(9, 1), f"{TRAPS}.2"):
                with self.subTest(start=start):
                    self.assertEqual([binding.tag for binding in manager.get_next(start).bindings], [END_OF_VIEW])

    def test_getbulk_gives_rows_column_by_column_beside_each_other(self):
        agent = self.start(*SPARSE)
        columns = [f"{TRAP_ENTRY}.{column}" for column in (PORT, VERSION, USER)]
        for repetitions in (1, 2, 3):
            lines = shown(self.lines("snmpbulkget", agent, READER, f"-Cr{repetitions}", *columns))
            wanted = [line for row in SPARSE[:repetitions] for line in walk_of(row)
                      if line.startswith(tuple(f"{column}." for column in columns))]
            self.assertEqual(lines, wanted)

    def test_a_walk_can_begin_at_every_instance(self):
        agent = self.start(*SPARSE)
        lines = walk_of(*SPARSE)
        with self.manager(agent, "reader") as manager:
            for position, line in enumerate(lines):
                start = line.split(" = ")[0]
                for repetitions in (1, 5):
                    answer = manager.get_bulk(repetitions, start)
                    names = [binding.name for binding in answer.bindings if binding.tag != END_OF_VIEW]
                    self.assertEqual(names, [next_line.split(" = ")[0] for next_line in
                                             lines[position + 1:position + 1 + repetitions]])

    def test_a_view_without_a_column_hides_it(self):
        self.write("talvik-agentd.conf", CONFIG + f"""
view noUser included {ROOT}
view noUser excluded {TRAP_ENTRY}.8
rwcommunity nouser 127.0.0.1 -V noUser
view noPort included {ROOT}
view noPort excluded {TRAP_ENTRY}.2
rwcommunity noport 127.0.0.1 -V noPort
""")
        agent = self.start(*SPARSE)
        for community, hidden in (("nouser", USER), ("noport", PORT)):
            limited = ["-v2c", "-c", community]
            visible = [line for line in walk_of(*SPARSE) if not line.startswith(f"{TRAP_ENTRY}.{hidden}.")]
            lines = self.lines("snmpget", agent, limited, name(hidden, 7))
            self.assertEqual(lines, [f"{name(hidden, 7)} = {NO_OBJECT}"])
            self.assertEqual(self.traps(agent, limited), visible)
            self.assertEqual(self.traps(agent, ["-v1", "-c", community]), visible)
            for repetitions in (1, 3, 6, 9, 50):
                walked = self.lines("snmpbulkwalk", agent, limited, f"-Cr{repetitions}", TRAPS)
                self.assertEqual(walked, visible)
        self.assert_refused(agent, "noAccess", name(USER, 7), *change(7, user="other"), user=["-v2c", "-c", "nouser"])
        self.assert_refused(agent, "noAccess", name(PORT, 9), *create(9), user=["-v2c", "-c", "noport"])


if __name__ == "__main__":
    unittest.main()
