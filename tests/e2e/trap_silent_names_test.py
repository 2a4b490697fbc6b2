"""A name server that does not answer holds nobody up but those who wait for its names."""

import socket
import struct
import threading
import unittest

import private_namespaces
from talvik_e2e import READER, wait_until
from trap_table import TRAPS, USABLE, Destination, TrapTest, create, destinations_in, name, walk_of

SERVER = ("127.0.0.53", 53)
IPV4, INTERNET = 1, 1
NAMES, FEW_NAMES = 300, 20  # more than are looked up at once, and less


def setUpModule():
    try:
        private_namespaces.enter()
    except OSError as error:
        raise unittest.SkipTest(f"no network of its own can be had here: {error}")


class NameServer:
    """Takes queries, and answers none until it is told to."""

    def __init__(self):
        self.asked = 0
        self.answers = False
        self.socket = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
        self.socket.bind(SERVER)
        self.thread = threading.Thread(target=self.serve)
        self.thread.start()

    def serve(self):
        while True:
            query, client = self.socket.recvfrom(4096)
            if not query:
                return
            self.asked += 1
            if self.answers:
                self.socket.sendto(self.answer_to(query), client)

    @staticmethod
    def answer_to(query):
        """192.0.2.77 for whoever asks for an IPv4 address, and nothing of any other kind."""
        end = query.index(b"\0", 12) + 5
        found = struct.unpack("!HH", query[end - 4:end]) == (IPV4, INTERNET)
        record = struct.pack("!HHHIH4B", 0xC00C, IPV4, INTERNET, 60, 4, 192, 0, 2, 77) if found else b""
        return query[:2] + struct.pack("!HHHHH", 0x8180, 1, int(found), 0, 0) + query[12:end] + record

    def close(self):
        self.socket.sendto(b"", SERVER)
        self.thread.join()
        self.socket.close()


class TrapSilentNames(TrapTest):
    def setUp(self):
        self.server = NameServer()
        self.addCleanup(self.server.close)
        for path, text in (("/etc/resolv.conf", f"nameserver {SERVER[0]}\n"), ("/etc/hosts", "127.0.0.1 localhost\n")):
            private_namespaces.put_in_place(self.write(path.strip("/"), text), path)
            self.addCleanup(private_namespaces.unmount, path)

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
        self.server.answers = True
        wait_until(lambda: self.traps(agent) == walk_of(Destination(1, "late.example")), "the name in column 1")

    def test_names_of_this_machine_need_no_server(self):
        agent = self.start_agent()
        self.fill(agent, FEW_NAMES)
        self.set(agent, *create(1000, "localhost"))
        wait_until(lambda: "localhost" in self.lines("snmpget", agent, READER, name(USABLE, 1000))[0], "localhost")


if __name__ == "__main__":
    unittest.main()
