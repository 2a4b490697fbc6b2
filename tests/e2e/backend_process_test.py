"""The back end as a process of its own: it may come, go, die and hang, and the agent keeps answering."""

import signal
import unittest

from talvik_e2e import ENTRY, READER, TalvikTest, topology, wait_until


class BackendProcess(TalvikTest):
    def setUp(self):
        self.socket = self.folder / "backend.sock"

    def row(self, agent):
        """The topology table's row by GET: a walk goes on to the alarms, which fail without a back end."""
        return self.lines("snmpget", agent, READER, *[f"{ENTRY}.{column}.1" for column in range(1, 9)])

    def assert_status(self, agent, status):
        wait_until(lambda: self.row(agent) == topology(status), f"status {status}")

    def test_is_offline_until_it_is_started(self):
        agent = self.start_agent(backend=f"unix:{self.socket}")
        self.assertEqual(self.row(agent), topology(2))
        self.start_backend(self.socket)
        self.assert_status(agent, 1)
        self.assertTrue(agent.is_alive())

    def test_can_be_stopped_and_started_again(self):
        backend = self.start_backend(self.socket)
        agent = self.start_agent(backend=f"unix:{self.socket}")
        for number in (signal.SIGTERM, signal.SIGKILL, signal.SIGTERM):
            self.assert_status(agent, 1)
            backend.stop(number)
            self.assertEqual(self.row(agent), topology(2))
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
