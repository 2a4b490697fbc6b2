"""Agent or back end is killed while alarms are raised and cleared: every notification arrives, in order."""

import select
import signal
import unittest

from alarm_journal import JournalTest
from backend_wire import CLEAR_ALARM, NO_SUCH_ALARM, RAISE_ALARM, SERIAL, Gone, Refused, clearing, report
from notifications import CLEAR, DISK_FAILED, FAULT, disk
from talvik_e2e import wait_until

ALARMS = 1000
KILLS = 8
LONG_LIST, LONGEST_PIECE = 3000, 700
LONGEST_WAIT = 0.003  # seconds that a kill may come after the request that it meets


class NotificationCrash(JournalTest):
    def setUp(self):
        super().setUp()
        self.connection = self.agent = self.backend = self.agent_due = None

    # -- requests, one of which may meet a kill

    def ask(self, command, cells):
        """The answer; None if there was none because the back end was killed."""
        victim = self.victims.pop(self.step, None)
        self.step += 1
        try:
            self.connection = self.connection or self.client()
            self.connection.send(command, cells)
            if victim:
                select.select([self.connection.socket], [], [], self.chance.random() * LONGEST_WAIT)
                victim()
            return self.connection.receive()
        except Gone:
            if not victim:
                raise
            return None
        finally:
            if victim:
                self.connection = None
            self.bring_back()

    def raise_alarm(self, number):
        """The serial number, or None if nobody knows whether there is one."""
        answer = self.ask(RAISE_ALARM, report(DISK_FAILED, disk(number)))
        self.journal.note(number, FAULT, answer is not None)
        if answer is None:
            return None
        self.journal.serials[number] = answer[0][SERIAL]
        return answer[0][SERIAL]

    def clear(self, number, serial):
        answer = self.ask(CLEAR_ALARM, clearing(serial))
        if answer is None:
            # Whether it was done shows when it is asked for again; it is told once in any case.
            try:
                while self.ask(CLEAR_ALARM, clearing(serial)) is None:
                    pass
            except Refused as refused:
                self.assertEqual(refused.result, NO_SUCH_ALARM)
        self.journal.note(number, CLEAR, True)

    # -- kills

    def kill_agent(self):
        self.agent.kill()

    def end_agent(self):
        if self.agent.is_alive():  # it may be down from the kill before
            self.assertEqual(self.agent.stop(signal.SIGTERM), 0)

    def kill_backend(self):
        self.backend.kill()

    def bring_back(self):
        """Starts again what was killed: the back end at once, the agent after some more requests."""
        if self.backend and not self.backend.is_alive():
            self.backend = self.start_backend(self.backend_socket)
        if self.agent.is_alive():
            return
        if self.agent_due is None:
            self.agent_due = self.step + (self.chance.randrange(100) if self.backend else 0)
        if self.step >= self.agent_due or not self.victims:
            self.agent_due = None
            self.start_again()

    def start_again(self):
        self.agent = self.start(backend=f"unix:{self.backend_socket}" if self.backend else "embedded")

    # -- the test

    def run_alarms(self, kinds):
        self.step = 0
        moments = self.chance.sample(range(2 * ALARMS), KILLS)
        self.victims = {moment: self.chance.choice(kinds) for moment in moments}
        active = []
        for number in range(ALARMS):
            serial = self.raise_alarm(number)
            if serial is not None:
                active.append((number, serial))
            while active and (self.chance.random() < 0.5 or number == ALARMS - 1):
                self.clear(*active.pop(self.chance.randrange(len(active))))
        if not self.agent.is_alive():
            self.start_again()

    def test_with_a_back_end_of_its_own_process(self):
        self.backend_socket = self.folder / "backend.sock"
        self.backend = self.start_backend(self.backend_socket)
        self.start_again()
        self.add_receiver(self.agent, 1, self.receiver.port)
        self.run_alarms([self.kill_agent, self.kill_backend, self.end_agent])
        self.check(self.folder / "backend-state", KILLS)

    def test_with_the_back_end_embedded(self):
        self.start_again()
        self.add_receiver(self.agent, 1, self.receiver.port)
        self.run_alarms([self.kill_agent, self.kill_agent, self.end_agent])
        self.check(self.state, KILLS)

    def test_in_the_middle_of_a_long_list(self):
        self.backend_socket = self.folder / "backend.sock"
        self.backend = self.start_backend(self.backend_socket)
        self.start_again()
        self.add_receiver(self.agent, 1, self.receiver.port)
        self.agent.stop()
        with self.client() as client:
            serials = client.raise_many(DISK_FAILED, (disk(number) for number in range(LONG_LIST)))
            for number, serial in enumerate(serials):
                self.journal.serials[number] = serial
                self.journal.note(number, FAULT, True)
        kills = 0
        while len(self.receiver.datagrams) < LONG_LIST - LONGEST_PIECE:
            target = len(self.receiver.datagrams) + self.chance.randrange(1, LONGEST_PIECE)
            if not self.agent.is_alive():
                self.start_again()
            wait_until(lambda: len(self.receiver.datagrams) >= target, "a piece of the list", pause=0.0002)
            self.chance.choice((self.kill_agent, self.kill_backend))()
            kills += 1
            if not self.backend.is_alive():
                self.backend = self.start_backend(self.backend_socket)
        if not self.agent.is_alive():
            self.start_again()
        self.check(self.folder / "backend-state", kills)


if __name__ == "__main__":
    unittest.main()
