"""The TCP wrappers decide who may ask, and a change of their rules holds without a restart."""

import pathlib
import unittest

import private_namespaces
from talvik_e2e import READER, TABLE, TalvikTest, topology, wait_until

DENIED = pathlib.Path("/etc/hosts.deny")


def setUpModule():
    if not DENIED.exists():
        raise unittest.SkipTest(f"{DENIED} does not exist, so nothing can be put in its place")
    try:
        private_namespaces.enter()
    except OSError as error:
        raise unittest.SkipTest(f"no files of its own can be had here: {error}")


class TcpWrappers(TalvikTest):
    def setUp(self):
        self.rules = self.write("hosts.deny", "")
        private_namespaces.put_in_place(self.rules, DENIED)
        self.addCleanup(private_namespaces.unmount, DENIED)

    def is_answered(self, agent):
        return self.tool("snmpget", agent, READER + ["-t", "2", "-r", "0"], f"{TABLE}.1.8.1").returncode == 0

    def test_a_rule_for_the_agent_holds_soon_after_it_was_written(self):
        agent = self.start_agent()
        self.assertEqual(self.walk(agent, start=TABLE), topology())
        self.rules.write_text("talvik-agentd: 127.0.0.1\n")
        wait_until(lambda: not self.is_answered(agent), "the refusal")
        self.assertFalse(self.is_answered(agent))
        self.rules.write_text("talvik-agentd: 192.0.2.1\n")
        wait_until(lambda: self.is_answered(agent), "the answer")


if __name__ == "__main__":
    unittest.main()
