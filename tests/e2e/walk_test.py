"""The topology table walked with each version of SNMP."""

import unittest

from talvik_e2e import (ENTRY, EVERYTHING, HEALTH, OPERATOR, READER, ROOT, TABLE, V1, TalvikTest, increases,
                        private_mib, topology)


class Walk(TalvikTest):
    def setUp(self):
        self.agent = self.start_agent()

    def test_shows_the_row_over_every_version(self):
        for user in (V1, READER, OPERATOR):
            with self.subTest(user=user[0]):
                self.assertEqual(self.walk(self.agent, user, TABLE), topology())

    def test_getbulk_shows_what_getnext_shows(self):
        for repetitions in (1, 10, 25, 100, 2147483647):
            with self.subTest(repetitions=repetitions):
                lines = self.lines("snmpbulkwalk", self.agent, READER, f"-Cr{repetitions}", TABLE)
                self.assertEqual(lines, topology())

    def test_ends_and_increases_from_every_prefix(self):
        full = f"{ENTRY}.8.1".strip(".").split(".")
        starts = ["." + ".".join(full[:length]) for length in range(1, len(full) + 1)]
        starts += [f"{ENTRY}.0", f"{ENTRY}.9", f"{ENTRY}.4.0", f"{ENTRY}.4.1.0", f"{ENTRY}.4.2", f"{TABLE}.2",
                   f"{ROOT}.2.91.9.0", f"{ROOT}.2.91.8", f"{ENTRY}.4294967295.4294967295"]
        for start in starts:
            with self.subTest(start=start):
                lines = self.lines("snmpwalk", self.agent, READER, start)
                self.assertTrue(increases([line for line in lines if " = No Such" not in line]), lines)

    def test_whole_agent_increases_and_holds_the_table(self):
        lines = self.walk(self.agent, EVERYTHING, ".1")
        self.assertTrue(increases(lines))
        private = [line for line in lines if line.startswith(ROOT) and not line.startswith(HEALTH)]
        self.assertEqual(private, private_mib())


if __name__ == "__main__":
    unittest.main()
