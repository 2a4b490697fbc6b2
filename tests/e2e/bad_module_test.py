"""Modules that break a rule: refused at the start, or kept from doing harm."""

import unittest

from talvik_e2e import ENTRY, EVERYTHING, TABLE, TEST_MODULES, TalvikTest


class BadModule(TalvikTest):
    def refuse(self, name, *reasons):
        path = TEST_MODULES / f"{name}.so"
        self.assert_refuses_to_start(path, *reasons, module=path)

    def test_files_that_are_no_module(self):
        missing = self.folder / "missing.so"
        self.assert_refuses_to_start(missing, "No such file", module=missing)
        text = self.write("text.so", "not a program")
        self.assert_refuses_to_start(text, "no shared object", module=text)
        self.assert_refuses_to_start(self.folder, "no file", module=self.folder)
        image = bytearray((TEST_MODULES / "counting.so").read_bytes())
        for length in (0, 10, 63, 64, 200, 1000, 5000, len(image) // 2, len(image) - 1):
            cut = self.folder / f"cut-{length}.so"
            cut.write_bytes(image[:length])
            self.assert_refuses_to_start(cut, module=cut)
        foreign = self.folder / "foreign.so"
        image[18:20] = (0xF3).to_bytes(2, "little")  # the header's machine: RISC-V
        foreign.write_bytes(image)
        self.assert_refuses_to_start(foreign, "another machine", module=foreign)

    def test_modules_that_cannot_be_started(self):
        self.refuse("no_factory", "exports no SNMP_SvcModuleCreator")
        self.refuse("missing_symbol", "SNMP_NobodyHasThis")
        self.refuse("null_factory", "made no module")
        self.refuse("throwing_factory", "CKEL_Exception: the factory refuses")
        self.refuse("unknown_oid", "1.3.6.1.4.1.99999.2.91.77.1", "describes no table or scalar there")
        self.refuse("two_handlers_for_one_oid", "two handlers for 1.3.6.1.4.1.99999.2.91.9.1")

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
