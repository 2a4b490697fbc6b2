"""Informs: answered ones are counted, and a receiver that never answers delays nobody else."""

import unittest

from notifications import (ALARM_TRAP, CATEGORY, DISK_FAILED, FAULT, OWN_OID, SERIAL_NO, TRAP_USER, V3,
                           NotificationTest, disk, users)
from snmp_wire import SEQUENCE, Reader
from talvik_e2e import TABLE, topology, wait_until
from trap_receivers import decode, user_lines

UNDER_WAY, WAITING = 32, 512  # informs to one receiver


def request_number(datagram):
    """Of an inform of v2c."""
    message = Reader(datagram).inside(SEQUENCE)
    message.integer(), message.element()
    return Reader(message.element()[1]).integer()


class NotificationInform(NotificationTest):
    def informs(self, *receivers, **timing):
        """The settings that make these receivers, or their ports, get informs."""
        entries = [{"address": "127.0.0.1", "port": getattr(receiver, "port", receiver), "inform": True, **timing}
                   for receiver in receivers]
        self.write_settings(users=users(), receivers=entries)

    def raise_alarms(self, count):
        with self.client() as client:
            return [client.raise_alarm(DISK_FAILED, disk(number)) for number in range(count)]

    def assert_serves(self, agent):
        self.assertEqual(self.walk(agent, start=TABLE), topology())

    def test_answered_informs_are_counted(self):
        v2c, v3 = self.snmptrapd(), self.snmptrapd(user_lines(TRAP_USER) + user_lines("admin"))
        self.informs(v2c, v3, timeoutMs=10000)
        agent = self.start()
        self.add_receiver(agent, 1, v2c.port)
        self.add_receiver(agent, 2, v3.port, V3, user=TRAP_USER)
        self.add_receiver(agent, 3, v3.port, V3, OWN_OID, user=TRAP_USER)
        count = 50
        serials = self.raise_alarms(count)
        for receiver, of_each in ((v2c, 1), (v3, 2)):
            found = receiver.wait_for(of_each * count)
            self.assertEqual({one.kind for one in found}, {"INFORM"})
            # Several informs are on their way at once, and nobody promises their order.
            self.assertEqual(sorted(one.objects()[SERIAL_NO] for one in found), sorted(of_each * serials))
        for index in (1, 2, 3):
            status = self.wait_for_status(index, lambda status: status.answered == count, "answers")
            self.assertEqual(status, status._replace(inform=True, state="ok", sent=count, failed=0, given_up=0,
                                                     waiting=0))
        self.assert_serves(agent)

    def test_a_silent_receiver_delays_nobody(self):
        silent, other = self.trap_socket(reads=False), self.trap_socket()
        self.informs(silent, timeoutMs=60000, retries=10)
        agent = self.start()
        self.add_receiver(agent, 1, silent.port)
        self.add_receiver(agent, 2, other.port)
        count = 200
        serials = self.raise_alarms(count)
        wait_until(lambda: len(other.datagrams) == count, "every trap at the other receiver")
        self.assertEqual([one.objects()[SERIAL_NO] for one in other.notifications()], serials)
        self.assert_serves(agent)
        status = self.status(1)
        self.assertEqual((status.sent, status.waiting, status.given_up), (UNDER_WAY, count, 0))
        self.assertEqual(len(silent.pending()), UNDER_WAY)
        self.assertEqual(agent.stop(), 0)

    def test_a_silent_receiver_does_not_hold_up_a_storm(self):
        silent, other = self.trap_socket(reads=False), self.trap_socket()
        self.informs(silent, timeoutMs=60000, retries=10)
        agent = self.start()
        self.add_receiver(agent, 1, silent.port)
        self.add_receiver(agent, 2, other.port)
        count = 3000  # more than the back end sends before it wants to know what became of them
        with self.client() as client:
            serials = list(client.raise_many(DISK_FAILED, map(disk, range(count))))
        wait_until(lambda: len(other.datagrams) == count, "every trap at the other receiver")
        self.assertEqual([one.objects()[SERIAL_NO] for one in other.notifications()], serials)
        self.assertEqual(self.status(1).sent, UNDER_WAY)

    def test_informs_that_nobody_answers_are_given_up(self):
        silent = self.trap_socket(reads=False)
        self.informs(silent, timeoutMs=100, retries=2)
        agent = self.start()
        self.add_receiver(agent, 1, silent.port)
        serials = self.raise_alarms(UNDER_WAY + 8)
        self.wait_for_status(1, lambda status: status.given_up == len(serials), "all informs given up")
        times = {}
        for datagram in silent.pending():
            key = (request_number(datagram), decode(datagram).objects()[SERIAL_NO])
            times[key] = times.get(key, 0) + 1
        self.assertEqual(sorted(serial for _, serial in times), serials)
        self.assertEqual(set(times.values()), {3}, "each is sent once and twice again")
        status = self.status(1)
        self.assertEqual((status.sent, status.answered, status.waiting), (len(serials), 0, 0))
        wait_until(lambda: self.outbox_size(self.state) == 0, "the back end's outbox empty")

    def test_an_informs_answer_may_come_after_a_retry(self):
        silent = self.trap_socket(reads=False)
        self.informs(silent, timeoutMs=200, retries=10)
        agent = self.start()
        self.add_receiver(agent, 1, silent.port)
        self.raise_alarms(1)
        self.wait_for_status(1, lambda status: status.waiting == 1, "an inform under way")
        port = silent.port
        silent.socket.close()
        receiver = self.snmptrapd(port=port)
        self.assertEqual(receiver.wait_for(1)[0].objects()[CATEGORY], FAULT)
        self.wait_for_status(1, lambda status: status.answered == 1 and status.given_up == 0, "the answer")

    def test_informs_under_way_survive_a_kill(self):
        silent = self.trap_socket(reads=False)
        self.informs(silent, timeoutMs=60000)
        agent = self.start()
        self.add_receiver(agent, 1, silent.port)
        serials = self.raise_alarms(UNDER_WAY + 8)
        self.wait_for_status(1, lambda status: status.waiting == len(serials), "informs under way")
        agent.kill()
        silent.socket.close()
        receiver = self.snmptrapd(port=silent.port)
        self.start()
        found = receiver.wait_for(len(serials), lambda one: one.oid == ALARM_TRAP)
        self.assertEqual(sorted(one.objects()[SERIAL_NO] for one in found), serials)
        wait_until(lambda: self.outbox_size(self.state) == 0, "the back end's outbox empty")

    def test_no_more_wait_than_there_is_room_for(self):
        silent, other = self.trap_socket(reads=False), self.trap_socket()
        self.informs(silent, timeoutMs=60000)
        agent = self.start()
        self.add_receiver(agent, 1, silent.port)
        self.add_receiver(agent, 2, other.port)
        count = UNDER_WAY + WAITING + 100
        self.raise_alarms(count)
        wait_until(lambda: len(other.datagrams) == count, "every trap at the other receiver")
        self.wait_for_status(1, lambda status: (status.waiting, status.given_up) == (UNDER_WAY + WAITING, 100),
                             "the oldest given up")

    def test_an_engine_that_is_silent_delays_nobody(self):
        silent, other = self.trap_socket(reads=False), self.trap_socket()
        self.informs(silent, timeoutMs=60000)
        agent = self.start()
        self.add_receiver(agent, 1, silent.port, V3, user=TRAP_USER)
        self.add_receiver(agent, 2, other.port)
        count = 50
        self.raise_alarms(count)
        wait_until(lambda: len(other.datagrams) == count, "every trap at the other receiver")
        self.assert_serves(agent)
        status = self.status(1)
        self.assertEqual((status.sent, status.waiting, status.given_up, status.failed), (0, count, 0, 0))
        wait_until(lambda: silent.pending(), "a question for the engine ID")

    def test_a_v3_receiver_that_comes_late_gets_what_waits(self):
        silent = self.trap_socket(reads=False)
        self.informs(silent, timeoutMs=2000, retries=10)
        agent = self.start()
        self.add_receiver(agent, 1, silent.port, V3, user=TRAP_USER)
        serials = self.raise_alarms(3)
        wait_until(lambda: silent.pending(), "a question for the engine ID")
        port = silent.port
        silent.socket.close()
        receiver = self.snmptrapd(user_lines(TRAP_USER), port)
        self.assertEqual(sorted(one.objects()[SERIAL_NO] for one in receiver.wait_for(3)), serials)
        self.wait_for_status(1, lambda status: status.answered == 3, "the answers")


if __name__ == "__main__":
    unittest.main()
