"""The connection between agent and back end is cut while notifications are handed over: all arrive, in order."""

import select
import socket
import threading
import unittest

from alarm_journal import JournalTest
from notifications import CLEAR, DISK_FAILED, FAULT, disk
from talvik_e2e import LIMIT, wait_until

ALARMS = 1000
CUTS = 12
LONGEST_PIECE = 120  # notifications between two cuts


class CutPath:
    """Stands between agent and back end, passes on what they say, and breaks off what is under way when told."""

    def __init__(self, path, backend):
        self.backend = str(backend)
        self.listener = socket.socket(socket.AF_UNIX, socket.SOCK_STREAM)
        self.listener.bind(str(path))
        self.listener.listen()
        self.peers = {}
        self.wake, self.woken = socket.socketpair()
        self.thread = threading.Thread(target=self._run)
        self.thread.start()

    def cut(self):
        self.wake.send(b"c")

    def close(self):
        self.wake.send(b"x")
        self.thread.join(LIMIT)
        for end in (self.listener, self.wake, self.woken):
            end.close()

    def _run(self):
        while True:
            ready, _, _ = select.select([self.woken, self.listener, *self.peers], [], [])
            if self.woken in ready:
                order = self.woken.recv(1)
                for end in list(self.peers):
                    self._drop(end)
                if order == b"x":
                    return
                continue
            for end in ready:
                if end is self.listener:
                    self._accept()
                elif end in self.peers:
                    self._pass_on(end)

    def _accept(self):
        front, _ = self.listener.accept()
        back = socket.socket(socket.AF_UNIX, socket.SOCK_STREAM)
        back.connect(self.backend)
        self.peers.update({front: back, back: front})

    def _pass_on(self, end):
        try:
            octets = end.recv(4096)
            if octets:
                self.peers[end].sendall(octets)
                return
        except OSError:
            pass
        self._drop(end)

    def _drop(self, end):
        """Closes both ends; what one has sent and the other has not been given is lost."""
        peer = self.peers.pop(end, None)
        if peer:
            self.peers.pop(peer)
            peer.close()
            end.close()


class NotificationCut(JournalTest):
    def setUp(self):
        super().setUp()
        self.backend_socket = self.folder / "backend.sock"
        self.start_backend(self.backend_socket)
        self.path = CutPath(self.folder / "path.sock", self.backend_socket)
        self.addCleanup(self.path.close)
        self.agent = self.start(backend=f"unix:{self.folder / 'path.sock'}")
        self.add_receiver(self.agent, 1, self.receiver.port)

    def raise_and_clear(self, numbers):
        with self.client() as client:
            for number in numbers:
                self.journal.serials[number] = client.raise_alarm(DISK_FAILED, disk(number))
                self.journal.note(number, FAULT, True)
                client.clear(self.journal.serials[number])
                self.journal.note(number, CLEAR, True)
                yield

    def test_while_alarms_are_raised_and_cleared(self):
        moments = self.chance.sample(range(ALARMS), CUTS)
        for step, _ in enumerate(self.raise_and_clear(range(ALARMS))):
            if step in moments:
                self.path.cut()
        self.check(self.folder / "backend-state", CUTS)

    def test_in_the_middle_of_a_long_list(self):
        self.agent.stop()
        for _ in self.raise_and_clear(range(ALARMS)):
            pass
        self.agent = self.start(backend=f"unix:{self.folder / 'path.sock'}")
        cuts = 0
        while len(self.receiver.datagrams) < 2 * ALARMS - LONGEST_PIECE:
            target = len(self.receiver.datagrams) + self.chance.randrange(1, LONGEST_PIECE)
            wait_until(lambda: len(self.receiver.datagrams) >= target, "a piece of the list", pause=0.0002)
            self.path.cut()
            cuts += 1
        print(f"{cuts} cuts")
        self.check(self.folder / "backend-state", cuts)


if __name__ == "__main__":
    unittest.main()
