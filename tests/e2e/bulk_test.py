"""GETBULK at its odd points."""

import unittest

from talvik_e2e import (CONFIG, ENTRY, EVERYTHING, OPERATOR, READER, TABLE, TEST_MODULES, TalvikTest, increases,
                        private_mib, shown, topology, v3)


class Bulk(TalvikTest):
    def bulk(self, agent, repetitions, *objects, non_repeaters=0, user=READER):
        return self.lines("snmpbulkget", agent, user, f"-Cn{non_repeaters}", f"-Cr{repetitions}", *objects)

    def test_gives_as_many_repetitions_as_there_are(self):
        agent = self.start_agent()
        for user in (READER, OPERATOR):
            for repetitions in (1, 10, 25, 100, 1000, 2147483647):
                with self.subTest(repetitions=repetitions, user=user[0]):
                    lines = self.bulk(agent, repetitions, TABLE, user=user)
                    rows = shown(lines)
                    self.assertEqual(rows, private_mib()[:repetitions])

    def test_zero_repetitions_give_nothing_but_the_non_repeaters(self):
        agent = self.start_agent()
        lines = self.bulk(agent, 0, f"{ENTRY}.1", TABLE, non_repeaters=1)
        self.assertEqual(lines, topology()[:1])

    def test_non_repeaters_come_once_and_first(self):
        agent = self.start_agent()
        lines = self.bulk(agent, 2, f"{ENTRY}.4", f"{ENTRY}.5", f"{ENTRY}.1", non_repeaters=2)
        rows = topology()
        self.assertEqual(lines, [rows[3], rows[4], rows[0], rows[1]])

    def test_150_repeaters_are_answered(self):
        agent = self.start_agent()
        lines = self.bulk(agent, 1, *[f"{ENTRY}.2"] * 150)
        self.assertEqual(lines, [topology()[1]] * 150)

    def test_150_repeaters_are_answered_in_full_where_large_answers_are_allowed(self):
        self.config = self.write("large.conf", "rocommunity reader\n[snmp] sendMessageMaxSize 65000\n")
        agent = self.start_agent()
        lines = self.bulk(agent, 1, *[f"{ENTRY}.2"] * 150)
        self.assertEqual(lines, [topology()[1]] * 150)

    def test_a_manager_on_the_same_machine_gets_what_one_datagram_carries(self):
        agent = self.start_agent()
        whole = self.lines("snmpwalk", agent, EVERYTHING, ".1.3.6.1.6.3.16")
        lines = self.bulk(agent, len(whole), ".1.3.6.1.6.3.16", user=EVERYTHING)
        self.assertGreater(sum(map(len, whole)), 6000)  # what a frame cannot hold
        self.assertEqual([line.split(" = ")[0] for line in lines], [line.split(" = ")[0] for line in whole])

    def test_answers_too_large_are_cut_between_variables(self):
        self.config = self.write("small.conf", CONFIG + "[snmp] sendMessageMaxSize 1472\n")
        agent = self.start_agent()
        whole = self.lines("snmpwalk", agent, EVERYTHING, ".1.3.6.1.6.3")
        for user in (EVERYTHING, v3("admin")):
            for repetitions in (40, 60, 98, 99, 100, 1000, 2147483647):
                with self.subTest(user=user[0], repetitions=repetitions):
                    lines = self.bulk(agent, repetitions, ".1.3.6.1.6.3", user=user)
                    self.assertGreater(len(lines), 15)
                    names = [line.split(" = ")[0] for line in lines]
                    self.assertEqual(names, [line.split(" = ")[0] for line in whole][:len(names)])
            walked = self.lines("snmpbulkwalk", agent, user, "-Cr1000", ".1.3.6.1.6.3.15")
            self.assertTrue(increases(walked))
        self.assertEqual(self.walk(agent), private_mib())

    def test_one_answer_sees_one_moment_of_the_table(self):
        agent = self.start_agent(module=TEST_MODULES / "counting.so")
        for round_ in range(1, 4):
            lines = self.bulk(agent, 60, f"{ENTRY}.2")
            self.assertTrue(increases(lines))
            self.assertEqual({line.split(" = ")[1] for line in lines}, {f"Gauge32: {round_}"})

    def test_rows_are_in_order_whatever_the_handler_gives(self):
        agent = self.start_agent(module=TEST_MODULES / "counting.so")
        lines = self.lines("snmpbulkwalk", agent, READER, "-Cr25", f"{ENTRY}.3")
        self.assertEqual(lines, [f"{ENTRY}.3.{index} = INTEGER: {index}" for index in range(1, 101)])


if __name__ == "__main__":
    unittest.main()
