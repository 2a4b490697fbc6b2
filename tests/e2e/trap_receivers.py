"""Receivers of notifications: the stock snmptrapd, and a socket of the test's own."""

import os
import re
import socket
import threading
import time
from typing import NamedTuple

from snmp_wire import COUNTER64, GAUGE, INTEGER, OBJECT_ID, OCTETS, SEQUENCE, TIME_TICKS, Reader, element
from talvik_e2e import AUTH, LIMIT, PRIV, Daemon, free_port, wait_until

OBJECTS, OWN_OID_OBJECTS = ".1.3.6.1.4.1.99999.2.91.10.3.1.1", ".1.3.6.1.4.1.99999.2.251.20.1.3"


class Notification(NamedTuple):
    """One as it arrived. Texts are octets; of a v1 trap, `enterprise` has enterprise, both kinds of trap and agent."""

    kind: str  # TRAP, TRAP2 or INFORM
    version: int
    who: str  # community, or user
    enterprise: tuple
    bindings: list  # name, type, value

    @property
    def oid(self):
        return self.bindings[1][2]

    def objects(self):
        """The values below the alarm objects, by their number."""
        return {int(name.split(".")[-2]): value for name, _, value in self.bindings
                if name.startswith((OBJECTS + ".", OWN_OID_OBJECTS + "."))}


RECEIVED = re.compile(r"\x1e(?P<security>[^\x1d]*)\x1d(?P<v1>[^\x1d]*)\x1d(?P<bindings>[^\x1e\x04]*)\x04")
SECURITY = re.compile(r"(TRAP2?|INFORM), SNMP v(1|2c|3), (?:community|user) ([^, ]*)")
FORMATS = r"""
format1 \x1e%P\x1d%N %w %q %a\x1d%V\x1f%v\x04\n
format2 \x1e%P\x1d\x1d%V\x1f%v\x04\n
""".replace(r"\x1e", "\x1e").replace(r"\x1d", "\x1d").replace(r"\x1f", "\x1f").replace(r"\x04", "\x04")


def value_of(shown):
    """Type and value of what the tools show as "STRING: ..." and the like, strings in hexadecimal."""
    if shown == '""':
        return "Hex-STRING", b""
    kind, _, rest = shown.partition(": ")
    if kind == "Hex-STRING":
        return kind, bytes.fromhex(rest)
    if kind == "Timeticks":
        return kind, int(re.match(r"\((\d+)\)", rest).group(1))
    return kind, rest if kind == "OID" else int(rest)


def notification_of(match):
    kind, version, who = SECURITY.match(match["security"]).groups()
    bindings = [part.strip().split(" = ", 1) for part in match["bindings"].split("\x1f") if part.strip()]
    enterprise = match["v1"].split()
    if enterprise:
        # snmptrapd puts a dot before the specific type when names are numeric.
        enterprise[1:3] = (int(part.lstrip(".")) for part in enterprise[1:3])
    return Notification(kind, int(version[0]), who, tuple(enterprise),
                        [(name, *value_of(shown)) for name, shown in bindings])


class Snmptrapd(Daemon):
    """The stock receiver on a port of its own; accepts community public and the users of `config`."""

    def __init__(self, folder, config="", port=None):
        self.port = port or free_port()
        name = f"snmptrapd-{time.monotonic_ns()}"
        self.output = folder / f"{name}.log"
        persistent = folder / name
        persistent.mkdir()
        file = persistent / "snmptrapd.conf"
        file.write_text(f"authCommunity log public\n{config}\n{FORMATS}")
        environment = dict(os.environ, SNMP_PERSISTENT_DIR=str(persistent), SNMPCONFPATH=str(persistent), MIBS="",
                           MIBDIRS=str(persistent), LC_ALL="C")
        super().__init__(folder, f"{name}-messages",
                         ["snmptrapd", "-f", "-On", "-Ox", "-n", "-Lf", self.output, "-C", "-c", file, "-m", ":",
                          f"udp:127.0.0.1:{self.port}"], environment)
        wait_until(lambda: self.output.exists() and "NET-SNMP version" in self.output.read_text(errors="replace"),
                   "snmptrapd listening")

    def notifications(self):
        text = self.output.read_text(errors="replace")
        return [notification_of(match) for match in RECEIVED.finditer(text)]

    def wait_for(self, count, where=lambda _: True):
        """At least `count` of the notifications that `where` is true for, in the order in which they came."""
        def enough():
            found = [one for one in self.notifications() if where(one)]
            return found if len(found) >= count else None

        return wait_until(enough, f"{count} notifications at snmptrapd")


def user_lines(name, engine_id=None, auth=AUTH, priv=PRIV):
    """The lines that let snmptrapd take a user's traps (of that engine), or informs."""
    engine = f"-e 0x{engine_id} " if engine_id else ""
    return f'createUser {engine}{name} SHA-256 "{auth}" AES "{priv}"\nauthUser log {name} authPriv\n'


TYPES = {INTEGER: "INTEGER", OCTETS: "Hex-STRING", OBJECT_ID: "OID", GAUGE: "Gauge32", TIME_TICKS: "Timeticks",
         COUNTER64: "Counter64"}
V1_TRAP, INFORM_REQUEST, V2_TRAP = 0xA4, 0xA6, 0xA7
FORCE_RECEIVE_BUFFER = 33


def decoded(tag, content):
    if tag == OCTETS:
        return TYPES[tag], content
    if tag == OBJECT_ID:
        return TYPES[tag], Reader(element(OBJECT_ID, content)).object_id()
    return TYPES[tag], int.from_bytes(content, "big", signed=tag == INTEGER)


def decode(datagram):
    """The notification in a message of v1 or v2c."""
    message = Reader(datagram).inside(SEQUENCE)
    version, community = message.integer(), message.expect(OCTETS).decode()
    tag, content = message.element()
    pdu, enterprise = Reader(content), ()
    if tag == V1_TRAP:
        name = pdu.object_id()
        agent = socket.inet_ntoa(pdu.element()[1])
        enterprise = (name, pdu.integer(), pdu.integer(), agent)
        pdu.element()
    else:
        pdu.integer(), pdu.integer(), pdu.integer()
    bindings, listed = [], pdu.inside(SEQUENCE)
    while listed:
        one = listed.inside(SEQUENCE)
        bindings.append((one.object_id(), *decoded(*one.element())))
    kind = {V1_TRAP: "TRAP", V2_TRAP: "TRAP2", INFORM_REQUEST: "INFORM"}[tag]
    return Notification(kind, version + 1, community, enterprise, bindings)


class TrapSocket:
    """A receiver that takes every datagram at once and looks at it later. It answers nothing."""

    def __init__(self, reads=True, address=("127.0.0.1", 0)):
        self.datagrams = []
        self.decoded = []
        self.socket = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
        try:
            self.socket.setsockopt(socket.SOL_SOCKET, FORCE_RECEIVE_BUFFER, 1 << 26)
        except PermissionError:
            self.socket.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, 1 << 26)  # as much as is allowed
        self.socket.bind(address)
        self.port = self.socket.getsockname()[1]
        self.thread = None
        if reads:
            self.thread = threading.Thread(target=self._run)
            self.thread.start()

    def _run(self):
        while True:
            datagram = self.socket.recv(65536)
            if not datagram:
                return
            self.datagrams.append(datagram)

    def lost(self):
        """How many datagrams the system had no room for; none, or a test says nothing of the agent."""
        inode = os.fstat(self.socket.fileno()).st_ino
        with open("/proc/net/udp", encoding="ascii") as table:
            rows = [line.split() for line in table.readlines()[1:]]
        return next(int(row[12]) for row in rows if int(row[9]) == inode)

    def notifications(self):
        self.decoded += [decode(datagram) for datagram in self.datagrams[len(self.decoded):]]
        return list(self.decoded)

    def pending(self):
        """What has arrived at a receiver that does not read."""
        found = []
        self.socket.setblocking(False)
        try:
            while True:
                found.append(self.socket.recv(65536))
        except BlockingIOError:
            return found

    def close(self):
        if self.thread:
            with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as waker:
                waker.sendto(b"", self.socket.getsockname())
            self.thread.join(LIMIT)
        self.socket.close()
