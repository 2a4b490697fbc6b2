"""The back end as a process of its own: it may come, go, die and hang, and the agent keeps answering."""

import signal
import unittest

from talvik_e2e import READER, ROOT, TABLE, TalvikTest, topology, wait_until


class BackendProcess(TalvikTest):
    def setUp(self):
        self.socket = self.folder / "backend.sock"

    def assert_status(self, agent, status):
        wait_until(lambda: self.walk(agent, start=TABLE) == topology(status), f"status {status}")

    def test_a_walk_that_asks_for_the_alarms_fails_without_it_and_one_that_comes_by_does_not(self):
        agent = self.start_agent(backend=f"unix:{self.socket}")
        for tool in ("snmpwalk", "snmpbulkwalk"):
            self.assertEqual(self.lines(tool, agent, READER, TABLE), topology(2))
            for start in (f"{ROOT}.2.91.10.1", f"{ROOT}.2.91.10.1.1", f"{ROOT}.2.91.10.1.1.1.5"):
                with self.subTest(tool=tool, start=start):
                    self.assertIn("genError", self.tool(tool, agent, READER, start).stderr)

    def test_is_offline_until_it_is_started(self):
        agent = self.start_agent(backend=f"unix:{self.socket}")
        self.assertEqual(self.walk(agent, start=TABLE), topology(2))
        self.start_backend(self.socket)
        self.assert_status(agent, 1)
        self.assertTrue(agent.is_alive())

    def test_can_be_stopped_and_started_again(self):
        backend = self.start_backend(self.socket)
        agent = self.start_agent(backend=f"unix:{self.socket}")
        for number in (signal.SIGTERM, signal.SIGKILL, signal.SIGTERM):
            self.assert_status(agent, 1)
            backend.stop(number)
            self.assertEqual(self.walk(agent, start=TABLE), topology(2))
            backend = self.start_backend(self.socket)
        self.assert_status(agent, 1)

    def test_may_hang_and_go_on(self):
        backend = self.start_backend(self.socket)
        agent = self.start_agent(backend=f"unix:{self.socket}")
        self.assert_status(agent, 1)
        backend.send(signal.SIGSTOP)
        self.assert_status(agent, 2)
        backend.send(signal.SIGCONT)
        self.assert_status(agent, 1)


if __name__ == "__main__":
    unittest.main()
