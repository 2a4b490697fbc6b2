"""Many trap destinations: a thousand, and as many as the list takes."""

import random
import unittest

from snmp_wire import numbers
from talvik_e2e import READER
from trap_table import (PORT, STATUS, TRAP_ENTRY, TRAPS, Destination, TrapTest, change, create, creation_of,
                        destinations_in, destroy, name, walk_of)

FULL = 4096


def destination(index):
    return Destination(index, f"192.0.{index % 251}.{index % 241 + 1}", index % 65535 + 1, index % 3 + 1, 7,
                       f"user-{index}")


class TrapMany(TrapTest):
    def setUp(self):
        self.agent = self.start_agent()
        self.managed = self.manager(self.agent)

    def add(self, row):
        answer = self.managed.set(*creation_of(row))
        self.assertEqual((answer.error, answer.position), ("noError", 0), row)

    def test_a_thousand(self):
        indexes = random.Random(3).sample(range(1, 2147483648), 1000)  # the same in every run
        rows = {index: destination(index) for index in sorted(indexes)}
        for index in indexes:
            self.add(rows[index])

        bindings = self.managed.walk(TRAPS)
        self.assertEqual([numbers(binding.name) for binding in bindings],
                         [numbers(name(column, index)) for column in range(1, 9) for index in rows])
        self.assertEqual(destinations_in(bindings), rows)
        for repetitions in (1, 7, 100):
            column = [f"{TRAP_ENTRY}.{PORT}.{index} = Gauge32: {row.port}" for index, row in rows.items()]
            walked = self.lines("snmpbulkwalk", self.agent, READER, f"-Cr{repetitions}", f"{TRAP_ENTRY}.{PORT}")
            self.assertEqual(walked, column)
        self.assertEqual(self.traps(self.agent), walk_of(*rows.values()))

        for index in indexes[:500]:
            self.assertEqual(self.managed.set(*destroy(index)).error, "noError")
            del rows[index]
        self.assertEqual(destinations_in(self.managed.walk(TRAPS)), rows)
        for index in indexes[500:]:
            self.assertEqual(self.managed.set(*destroy(index)).error, "noError")
        self.assertEqual(self.managed.walk(TRAPS), [])

    def test_as_many_as_the_list_takes(self):
        for index in range(1, FULL + 1):
            answer = self.managed.set(*create(index))
            self.assertEqual((answer.error, index), ("noError", index))

        for variables in (create(FULL + 1), create(FULL + 1)[::-1]):
            answer = self.managed.set(*variables)
            self.assertEqual(answer.error, "resourceUnavailable")
            failed = variables[answer.position - 1][0]
            self.assertEqual(failed, name(STATUS, FULL + 1))
        result = self.snmpset(self.agent, ["-v1", "-c", "writer"], *create(FULL + 1))
        self.assertIn("(genError)", result.stderr)

        rows = {index: Destination(index) for index in range(1, FULL + 1)}
        self.assertEqual(destinations_in(self.managed.walk(TRAPS)), rows)
        self.assertEqual(self.managed.set(*change(FULL, port=9)).error, "noError")
        self.assertEqual(self.managed.set(*destroy(17)).error, "noError")
        self.assertEqual(self.managed.set(*create(2147483647, "192.0.2.9", 9)).error, "noError")
        self.assertEqual(self.managed.set(*create(17)).error, "resourceUnavailable")
        del rows[17]
        rows[FULL] = Destination(FULL, port=9)
        rows[2147483647] = Destination(2147483647, "192.0.2.9", 9)
        self.assertEqual(destinations_in(self.managed.walk(TRAPS)), rows)

        self.agent.stop()
        agent = self.start_agent()
        self.assertEqual(destinations_in(self.manager(agent).walk(TRAPS)), rows)


if __name__ == "__main__":
    unittest.main()
