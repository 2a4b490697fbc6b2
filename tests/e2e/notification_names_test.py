"""Receivers whose names do not resolve, no longer resolve, or stand for another address than before."""

import unittest

import private_namespaces
from name_server import NameServer, ask_this_server
from notifications import DISK_FAILED, SERIAL_NO, NotificationTest, disk
from talvik_e2e import TABLE, topology, wait_until
from trap_table import USABLE, name

COUNT = 50
REFRESH_LIMIT = 180  # seconds; names are looked up again every minute


def setUpModule():
    try:
        private_namespaces.enter()
    except OSError as error:
        raise unittest.SkipTest(f"no network of its own can be had here: {error}")


class NotificationNames(NotificationTest):
    def setUp(self):
        super().setUp()
        self.server = NameServer()
        self.addCleanup(self.server.close)
        ask_this_server(self)

    def raise_alarms(self, count=COUNT):
        with self.client() as client:
            return [client.raise_alarm(DISK_FAILED, disk(number)) for number in range(count)]

    def assert_gets(self, receiver, serials):
        """These are the last notifications that have come, or are about to come."""
        def found():
            seen = [one.objects()[SERIAL_NO] for one in receiver.notifications()[-len(serials):]]
            return seen == serials

        wait_until(found, f"alarms {serials[0]} to {serials[-1]}")

    def usable(self, agent, index):
        with self.manager(agent) as manager:
            return manager.get(name(USABLE, index)).bindings[0].value.decode()

    def wait_for_usable(self, agent, index, shown, **limit):
        wait_until(lambda: self.usable(agent, index) == shown, f"{shown} in column 1 of row {index}", **limit)

    def test_names_that_do_not_resolve_delay_nobody(self):
        self.server.addresses["unknown.example"] = None
        agent, receiver = self.start(), self.trap_socket()
        for index, address in enumerate(("silent.example", "unknown.example", "127.0.0.1"), 1):
            self.add_receiver(agent, index, receiver.port, address=address)
        wait_until(lambda: self.server.asked, "a query at the name server")
        serials = self.raise_alarms()
        self.assert_gets(receiver, serials)
        self.assertEqual(self.walk(agent, start=TABLE), topology())
        for index in (1, 2):
            status = self.status(index)
            self.assertEqual((status.sent, status.waiting + status.failed), (0, COUNT))
            self.assertIn("name does not resolve", status.state)
        self.assertEqual(self.status(3)[1:], ("ok", COUNT, 0, 0, 0, 0))

    def test_what_nobody_can_be_sent_is_given_up_and_leaves_the_back_end(self):
        agent, receiver = self.start(), self.trap_socket()
        self.add_receiver(agent, 1, receiver.port, address="silent.example")
        self.raise_alarms()
        self.wait_for_status(1, lambda status: status.failed == COUNT and status.waiting == 0, "all given up")
        wait_until(lambda: self.outbox_size(self.state) == 0, "the back end's outbox empty")

    def test_what_waits_goes_out_when_the_name_resolves(self):
        agent, receiver = self.start(), self.trap_socket()
        self.add_receiver(agent, 1, receiver.port, address="late.example")
        wait_until(lambda: self.server.asked, "a query at the name server")
        serials = self.raise_alarms(3)
        self.wait_for_status(1, lambda status: status.waiting == 3, "what waits")
        self.server.end_silence("127.0.0.1")
        self.assert_gets(receiver, serials)
        self.assertEqual(len(receiver.datagrams), 3)

    def test_a_name_that_stops_resolving_keeps_its_address_and_one_that_moves_is_followed(self):
        self.server.addresses.update({"lost.example": "127.0.0.1", "moved.example": "127.0.0.1"})
        agent = self.start()
        lost, before = self.trap_socket(), self.trap_socket()
        after = self.trap_socket(address=("127.0.0.2", before.port))
        self.add_receiver(agent, 1, lost.port, address="lost.example")
        self.add_receiver(agent, 2, before.port, address="moved.example")
        serials = self.raise_alarms(3)
        self.assert_gets(lost, serials)
        self.assert_gets(before, serials)

        self.server.addresses.update({"lost.example": None, "moved.example": "127.0.0.2"})
        self.wait_for_usable(agent, 1, "0.0.0.0", limit=REFRESH_LIMIT)
        self.assert_gets(lost, self.raise_alarms(3))
        self.assertEqual(self.status(1).failed, 0)

        def follows():
            self.raise_alarms(1)
            return after.datagrams

        wait_until(follows, "a notification at the new address", REFRESH_LIMIT)
        arrived = len(before.datagrams)
        serials = self.raise_alarms(3)
        self.assert_gets(after, serials)
        self.assertEqual(len(before.datagrams), arrived)


if __name__ == "__main__":
    unittest.main()
