"""A view that leaves out a column leaves it out of every kind of request."""

import unittest

from talvik_e2e import CLEAR_ALARM_LINE, ENTRY, TABLE, TalvikTest, shown, topology

LIMITED = ["-v2c", "-c", "limited"]


class View(TalvikTest):
    def setUp(self):
        self.agent = self.start_agent()
        self.visible = [line for line in topology() if not line.startswith(f"{ENTRY}.4.")]
        self.everything = self.visible + [CLEAR_ALARM_LINE]

    def test_hides_the_column_from_get(self):
        lines = self.lines("snmpget", self.agent, LIMITED, f"{ENTRY}.4.1", f"{ENTRY}.5.1")
        self.assertEqual(lines, [f"{ENTRY}.4.1 = No Such Object available on this agent at this OID",
                                 self.visible[3]])

    def test_hides_the_column_from_getnext(self):
        self.assertEqual(self.lines("snmpgetnext", self.agent, LIMITED, f"{ENTRY}.3.1"), [self.visible[3]])
        self.assertEqual(self.lines("snmpgetnext", self.agent, LIMITED, f"{ENTRY}.4"), [self.visible[3]])
        self.assertEqual(self.walk(self.agent, LIMITED), self.everything)

    def test_hides_the_column_from_getbulk(self):
        for repetitions in (1, 3, 4, 5, 50):
            with self.subTest(repetitions=repetitions):
                lines = self.lines("snmpbulkget", self.agent, LIMITED, f"-Cr{repetitions}", TABLE)
                rows = shown(lines)
                self.assertEqual(rows, self.everything[:repetitions])
                walked = self.lines("snmpbulkwalk", self.agent, LIMITED, f"-Cr{repetitions}", TABLE)
                self.assertEqual(walked, self.visible)

    def test_hides_everything_outside(self):
        self.assertEqual(self.walk(self.agent, LIMITED, ".1"), self.everything)


if __name__ == "__main__":
    unittest.main()
