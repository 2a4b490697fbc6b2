"""A name server that does not answer holds nobody up but those who wait for its names."""

import unittest

import private_namespaces
from name_server import NameServer, ask_this_server
from talvik_e2e import READER, wait_until
from trap_table import TRAPS, USABLE, Destination, TrapTest, create, destinations_in, name, walk_of

NAMES, FEW_NAMES = 300, 20  # more than are looked up at once, and less


def setUpModule():
    try:
        private_namespaces.enter()
    except OSError as error:
        raise unittest.SkipTest(f"no network of its own can be had here: {error}")


class TrapSilentNames(TrapTest):
    def setUp(self):
        self.server = NameServer()
        self.addCleanup(self.server.close)
        ask_this_server(self)

    def fill(self, agent, names=NAMES):
        """Gives the agent names to wait for."""
        with self.manager(agent) as manager:
            for index in range(1, names + 1):
                self.assertEqual(manager.set(*create(index, f"receiver-{index}.example")).error, "noError")
        wait_until(lambda: self.server.asked, "a query at the name server")

    def test_every_request_is_answered_in_time(self):
        agent = self.start_agent()
        self.fill(agent)
        rows = {index: Destination(index, f"receiver-{index}.example", usable="0.0.0.0")
                for index in range(1, NAMES + 1)}
        hurry = ["-t", "1", "-r", "0"]
        with self.manager(agent) as manager:
            for _ in range(5):
                lines = self.lines("snmpget", agent, READER + hurry, name(USABLE, 1), name(USABLE, NAMES))
                self.assertEqual(lines, [f'{name(USABLE, index)} = STRING: "0.0.0.0"' for index in (1, NAMES)])
                self.assertEqual(destinations_in(manager.walk(TRAPS)), rows)
                self.assertEqual(len(self.lines("snmpbulkwalk", agent, READER + hurry, TRAPS)), 8 * NAMES)
                self.set(agent, *create(NAMES + 1, "one-more.example"), user=["-v2c", "-c", "writer", *hurry])
                self.set(agent, (name(3, NAMES + 1), "i", 6), user=["-v2c", "-c", "writer", *hurry])

    def test_an_agent_with_names_to_wait_for_ends(self):
        agent = self.start_agent()
        self.fill(agent)
        self.assertEqual(agent.stop(), 0)
        agent = self.start_agent()
        self.assertEqual(agent.stop(), 0)

    def test_a_name_turns_up_when_its_server_answers(self):
        agent = self.start_agent()
        self.set(agent, *create(1, "late.example"))
        wait_until(lambda: self.server.asked, "a query at the name server")
        self.assertEqual(self.traps(agent), walk_of(Destination(1, "late.example", usable="0.0.0.0")))
        self.server.end_silence("192.0.2.77")
        wait_until(lambda: self.traps(agent) == walk_of(Destination(1, "late.example")), "the name in column 1")

    def test_names_of_this_machine_need_no_server(self):
        agent = self.start_agent()
        self.fill(agent, FEW_NAMES)
        self.set(agent, *create(1000, "localhost"))
        wait_until(lambda: "localhost" in self.lines("snmpget", agent, READER, name(USABLE, 1000))[0], "localhost")


if __name__ == "__main__":
    unittest.main()
