"""Single requests: what is there, what is not, and what comes next."""

import unittest

from talvik_e2e import CLEAR_ALARM, ENTRY, READER, ROOT, TABLE, V1, TalvikTest, topology

NO_OBJECT = "No Such Object available on this agent at this OID"
NO_INSTANCE = "No Such Instance currently exists at this OID"


class Get(TalvikTest):
    def setUp(self):
        self.agent = self.start_agent()

    def test_gives_every_instance_by_its_name(self):
        names = [line.split(" = ")[0] for line in topology()]
        self.assertEqual(self.lines("snmpget", self.agent, READER, *names), topology())

    def test_keeps_order_and_repetitions_of_the_request(self):
        self.assertEqual(
            self.lines("snmpget", self.agent, READER, f"{ENTRY}.8.1", f"{ENTRY}.3.1", f"{ENTRY}.8.1"),
            [f"{ENTRY}.8.1 = INTEGER: 1", f"{ENTRY}.3.1 = INTEGER: 1", f"{ENTRY}.8.1 = INTEGER: 1"])

    def test_says_no_such_instance_for_rows_that_are_not_there(self):
        for name in (f"{ENTRY}.1.2", f"{ENTRY}.8.0", f"{ENTRY}.8.1.1", f"{ENTRY}.8"):
            with self.subTest(name=name):
                self.assertEqual(self.lines("snmpget", self.agent, READER, name), [f"{name} = {NO_INSTANCE}"])

    def test_says_no_such_object_for_columns_that_are_not_there(self):
        for name in (f"{ENTRY}.9.1", f"{ENTRY}.0.1", TABLE, ENTRY, f"{TABLE}.2.1.1", f"{ROOT}.2.91.9.2.1.1.1"):
            with self.subTest(name=name):
                self.assertEqual(self.lines("snmpget", self.agent, READER, name), [f"{name} = {NO_OBJECT}"])

    def test_answers_the_rest_of_a_request_beside_a_missing_instance(self):
        self.assertEqual(
            self.lines("snmpget", self.agent, READER, f"{ENTRY}.9.1", f"{ENTRY}.3.1", f"{ENTRY}.3.2"),
            [f"{ENTRY}.9.1 = {NO_OBJECT}", f"{ENTRY}.3.1 = INTEGER: 1", f"{ENTRY}.3.2 = {NO_INSTANCE}"])

    def test_v1_says_no_such_name(self):
        result = self.tool("snmpget", self.agent, V1, f"{ENTRY}.9.1")
        self.assertEqual(result.returncode, 2)
        self.assertIn("noSuchName", result.stderr)

    def test_getnext_goes_on_to_the_next_column(self):
        lines = topology()
        for name, expected in ((TABLE, lines[0]), (f"{ENTRY}.1.1", lines[1]), (f"{ENTRY}.4.0", lines[3]),
                               (f"{ENTRY}.4.0.99", lines[3]), (f"{ENTRY}.7.2", lines[7])):
            with self.subTest(name=name):
                self.assertEqual(self.lines("snmpgetnext", self.agent, READER, name), [expected])

    def test_getnext_past_the_last_instance_is_past_the_end(self):
        lines = self.lines("snmpgetnext", self.agent, READER, CLEAR_ALARM)
        self.assertEqual(lines, [f"{CLEAR_ALARM} = No more variables left in this MIB View (It is past the end of the "
                                 "MIB tree)"])


if __name__ == "__main__":
    unittest.main()
