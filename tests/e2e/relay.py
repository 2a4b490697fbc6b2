"""A path between an SNMP client and the agent on which a test can lose messages."""

import select
import socket
import threading

from talvik_e2e import LIMIT

SET_TAG = 0xA3


def is_set(request, community=b"writer"):
    """Whether a request of v2c with this community is a SET."""
    return request[request.index(community) + len(community)] == SET_TAG


class Relay:
    """Passes everything on, in a thread of its own. Those derived from it set up what they need before they call __init__."""

    def __init__(self, agent_port):
        self.front = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
        self.front.bind(("127.0.0.1", 0))
        self.port = self.front.getsockname()[1]
        self.back = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
        self.back.connect(("127.0.0.1", agent_port))
        self.back.settimeout(LIMIT)
        self.wake, self.stop_end = socket.socketpair()
        self.thread = threading.Thread(target=self._run)
        self.thread.start()

    def take_request(self, request):
        self.back.send(request)

    def lets_through(self, answer):
        return True

    def _run(self):
        client = None
        while True:
            ready, _, _ = select.select([self.front, self.back, self.stop_end], [], [])
            if self.stop_end in ready:
                return
            if self.front in ready:
                request, client = self.front.recvfrom(65535)
                self.take_request(request)
            elif self.back in ready:
                answer = self.back.recv(65535)
                if self.lets_through(answer):
                    self.front.sendto(answer, client)

    def close(self):
        self.wake.send(b"x")
        self.thread.join(LIMIT)
        for end in (self.front, self.back, self.wake, self.stop_end):
            end.close()
