"""Ten thousand alarms: all arrive in order, SNMP requests are answered meanwhile, and memory stays within its bound."""

import unittest

from notifications import ALARM_TRAP, DISK_FAILED, SERIAL_NO, NotificationTest, disk, memory
from talvik_e2e import TABLE, topology, wait_until

ALARMS = 10000
ARRIVAL_LIMIT = 200  # seconds
GROWTH = 16 * 1024  # KiB, as docs/day-to-day.md promises


def is_sanitized(pid):
    """Such a build keeps freed memory for its checks."""
    with open(f"/proc/{pid}/maps", encoding="utf-8") as maps:
        return any("/libasan" in line or "/libtsan" in line for line in maps)


class NotificationStorm(NotificationTest):
    def start_receiving(self):
        """An agent that has sent its first alarm, and so has read the catalogue. Another receiver never answers."""
        self.receiver, silent = self.trap_socket(), self.trap_socket(reads=False)
        self.write_settings(receivers=[{"address": "127.0.0.1", "port": silent.port, "inform": True, "timeoutMs": 200,
                                        "retries": 0}])
        self.agent = self.start(**self.backend)
        self.add_receiver(self.agent, 1, self.receiver.port)
        self.add_receiver(self.agent, 2, silent.port)
        with self.client() as client:
            client.raise_alarm(DISK_FAILED, disk(0))
        wait_until(lambda: self.receiver.datagrams, "the first alarm")
        wait_until(lambda: self.outbox_size(self.backend_state) == 0, "the first alarm settled")

    def serials(self):
        return [one.objects()[SERIAL_NO] for one in self.receiver.notifications() if one.oid == ALARM_TRAP]

    def raise_all(self, between=lambda: None):
        """The serial numbers; `between` is called now and then."""
        serials = []
        with self.client() as client:
            for serial in client.raise_many(DISK_FAILED, map(disk, range(1, ALARMS + 1))):
                serials.append(serial)
                if len(serials) % 500 == 0:
                    between()
        return serials

    def ask(self):
        """One SNMP request in the middle of the storm."""
        with self.manager(self.agent, "reader") as manager:
            self.assertEqual(len(manager.walk(TABLE)), len(topology()))
        self.asked.append(len(self.receiver.datagrams))

    def check(self, serials, before):
        wait_until(lambda: len(self.receiver.datagrams) > ALARMS, "every alarm", ARRIVAL_LIMIT)
        self.assertEqual(self.receiver.lost(), 0, "datagrams that the system had no room for")
        for found, wanted in zip(self.serials()[1:], serials):
            self.assertEqual(found, wanted)
        self.assertEqual(len(self.serials()), 1 + ALARMS)
        wait_until(lambda: self.outbox_size(self.backend_state) == 0, "the back end's outbox empty")
        grown = memory(self.agent.process.pid, "VmHWM") - before
        print(f"memory grew by {grown} KiB; requests were answered after {self.asked} notifications")
        if not is_sanitized(self.agent.process.pid):
            self.assertLessEqual(grown, GROWTH)

    def setUp(self):
        super().setUp()
        self.asked = []
        self.backend = {}
        self.backend_state = self.state

    def use_own_process(self):
        self.backend_socket = self.folder / "backend.sock"
        self.backend_state = self.folder / "backend-state"
        self.backend = {"backend": f"unix:{self.backend_socket}"}
        self.start_backend(self.backend_socket)

    def test_with_the_back_end_embedded(self):
        self.start_receiving()
        before = memory(self.agent.process.pid, "VmRSS")
        serials = self.raise_all(self.ask)
        self.check(serials, before)

    def test_after_a_time_without_agent(self):
        self.use_own_process()
        self.start_receiving()
        before = memory(self.agent.process.pid, "VmRSS")
        self.agent.stop()
        serials = self.raise_all()
        arrived = len(self.receiver.datagrams)
        self.agent = self.start(**self.backend)
        for goal in range(1, 10):
            wait_until(lambda: len(self.receiver.datagrams) >= arrived + goal * ALARMS // 10, "a tenth", ARRIVAL_LIMIT)
            self.ask()
        self.check(serials, before)


if __name__ == "__main__":
    unittest.main()
