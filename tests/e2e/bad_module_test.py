"""Modules whose handlers break a rule are kept from doing harm. module_failure_test.py has those that cannot be used."""

import unittest

from talvik_e2e import ENTRY, EVERYTHING, TABLE, TEST_MODULES, TalvikTest


class BadModule(TalvikTest):
    def test_handlers_that_fail_answer_gen_err_and_the_agent_lives(self):
        for name, reason in (("throws_runtime_error", "the handler is out of order"),
                             ("throws_int", "unexpected exception of an unknown type"),
                             ("throws_kel_exception", "CKEL_Exception: the handler gives up"),
                             ("returns_seven", "returned 7")):
            with self.subTest(name=name):
                agent = self.start_agent(module=TEST_MODULES / f"{name}.so", state_dir=self.folder / f"state-{name}")
                for tool in ("snmpget", "snmpgetnext", "snmpbulkget"):
                    for _ in range(3):
                        result = self.tool(tool, agent, EVERYTHING, f"{ENTRY}.8.1")
                        self.assertIn("genError", result.stderr)
                self.assertEqual(agent.log().count(reason), 1, agent.log())
                self.assertIn(TABLE.strip("."), agent.log())
                # Other objects are served as ever.
                self.assertEqual(len(self.walk(agent, EVERYTHING, ".1.3.6.1.2.1.1.1")), 1)
                self.assertEqual(agent.stop(), 0)


if __name__ == "__main__":
    unittest.main()
