"""A name server for a test that has a network of its own, and the files that make the test's processes ask it."""

import socket
import struct
import threading

import private_namespaces

SERVER = ("127.0.0.53", 53)
IPV4, INTERNET = 1, 1
ANSWER, NO_SUCH_NAME = 0x8180, 0x8183


def name_in(query):
    labels, at = [], 12
    while query[at]:
        labels.append(query[at + 1:at + 1 + query[at]].decode())
        at += 1 + query[at]
    return ".".join(labels).lower()


def ask_this_server(test):
    """Sends every look-up of the test's processes here, until the test ends."""
    for path, text in (("/etc/resolv.conf", f"nameserver {SERVER[0]}\n"), ("/etc/hosts", "127.0.0.1 localhost\n")):
        private_namespaces.put_in_place(test.write(path.strip("/"), text), path)
        test.addCleanup(private_namespaces.unmount, path)


class NameServer:
    """Answers for the names in `addresses`, with None that there is no such name. Keeps silent about all others."""

    def __init__(self, addresses=None):
        self.addresses = addresses or {}
        self.default = False  # what it says of other names; False for silence
        self.held = []
        self.asked = 0
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
            address = self.addresses.get(name_in(query), self.default)
            if address is False:
                self.held.append((query, client))
            else:
                self.socket.sendto(self.answer_to(query, address), client)

    def end_silence(self, address):
        """Answers what it kept silent about, and all that comes."""
        self.default = address
        for query, client in self.held:
            self.socket.sendto(self.answer_to(query, address), client)

    @staticmethod
    def answer_to(query, address):
        """The address for whoever asks for an IPv4 address, and nothing of any other kind."""
        end = query.index(b"\0", 12) + 5
        found = address is not None and struct.unpack("!HH", query[end - 4:end]) == (IPV4, INTERNET)
        flags = NO_SUCH_NAME if address is None else ANSWER
        answer = query[:2] + struct.pack("!HHHHH", flags, 1, int(found), 0, 0) + query[12:end]
        if found:
            answer += struct.pack("!HHHIH", 0xC00C, IPV4, INTERNET, 60, 4) + socket.inet_aton(address)
        return answer

    def close(self):
        self.socket.sendto(b"", SERVER)
        self.thread.join()
        self.socket.close()
