"""A small client of the back end's protocol: alarms, and the agent's own commands about receivers.

A package is a header of 28 octets and records; a record is a command's number and cells of a tag, a type and octets.
"""

import socket
import struct
from typing import NamedTuple

from talvik_e2e import LIMIT

CLEAR_ALARM, RAISE_ALARM, REPORT_EVENT, RESEND_ALARMS, SUBSCRIBE_NOTIFICATIONS = 4003, 4010, 4011, 4012, 4013
SHOW_RECEIVERS, SEND_TEST_TRAP = 4020, 4021

DONE, NO_SUCH_ALARM, NO_SUCH_RECEIVER = 0, 0x1000014, 0x1000030

HEADER = struct.Struct("<IIIIHHHHI")
MAGIC, VERSION, NONE, REQUEST, REPLY = 0x55555555, 3, 0xFFFFFFFF, 1, 2
TEXT, NUMBER = 2, 3

ID, LEVEL, SERIAL, TIME, REQUESTER, PARAMETERS, COUNT = 1, 2, 3, 4, 7, 8, 9
RECEIVER_INDEX = 3
COUNTERS = {10: "sent", 11: "failed", 12: "answered", 13: "given_up", 14: "waiting"}


class Refused(Exception):
    def __init__(self, result):
        super().__init__(f"result {result:#x}")
        self.result = result


class Gone(Exception):
    """The other end went away; what was asked may have been done or not."""


class ReceiverStatus(NamedTuple):
    inform: bool
    state: str
    sent: int
    failed: int
    answered: int
    given_up: int
    waiting: int


def text(tag, value):
    octets = (value if isinstance(value, bytes) else value.encode()) + b"\0"
    return struct.pack("<HH", tag << 4 | TEXT, len(octets)) + octets


def number(tag, value, size=4):
    return struct.pack("<HH", tag << 4 | NUMBER, size) + value.to_bytes(size, "little")


def cells_in(octets):
    """The cells of one record by tag; numbers as such, texts without their NUL."""
    found = {}
    while octets:
        word, length = struct.unpack_from("<HH", octets)
        value, octets = octets[4:4 + length], octets[4 + length:]
        found[word >> 4] = value[:-1] if word & 0xF == TEXT else int.from_bytes(value, "little")
    return found


def records_in(octets):
    found = []
    while octets:
        size = struct.unpack_from("<QH", octets)[1]
        found.append(cells_in(octets[10:10 + size]))
        octets = octets[10 + size:]
    return found


def report(alarm_id, parameters=b"", level=5, time=None):
    """The cells of a request that raises an alarm or reports an event."""
    cells = number(ID, alarm_id, 8) + number(LEVEL, level) + text(PARAMETERS, parameters)
    return cells if time is None else cells + number(TIME, time, 8)


def clearing(serial):
    """The cells of a request that clears an alarm."""
    return number(SERIAL, serial) + text(REQUESTER, "end-to-end test")


class BackendClient:
    """One connection to a back end, or to the agent that embeds it."""

    def __init__(self, path):
        self.exchange = 0
        self.socket = socket.socket(socket.AF_UNIX, socket.SOCK_STREAM)
        self.socket.settimeout(LIMIT)
        try:
            self.socket.connect(str(path))
        except OSError as error:
            self.socket.close()
            raise Gone(str(error)) from error

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.close()

    def close(self):
        self.socket.close()

    def send(self, command, cells=b""):
        self.exchange += 1
        body = struct.pack("<QH", command, len(cells)) + cells
        header = HEADER.pack(MAGIC, VERSION, self.exchange, NONE, 0xFFFD, REQUEST, 0xFFFF, 0xFFFF, len(body))
        try:
            self.socket.sendall(header + body)
        except OSError as error:
            raise Gone(str(error)) from error

    def receive(self):
        """The records of the next reply."""
        header = HEADER.unpack(self._octets(HEADER.size))
        body = self._octets(header[8])
        if header[0] != MAGIC or header[5] != REPLY:
            raise AssertionError(f"no reply: {header}")
        if header[3] != DONE:
            raise Refused(header[3])
        return records_in(body)

    def _octets(self, count):
        octets = b""
        while len(octets) < count:
            try:
                more = self.socket.recv(count - len(octets))
            except OSError as error:
                raise Gone(str(error)) from error
            if not more:
                raise Gone("connection closed")
            octets += more
        return octets

    def ask(self, command, cells=b""):
        self.send(command, cells)
        return self.receive()

    def raise_alarm(self, alarm_id, parameters=b"", **others):
        """The serial number of the new alarm."""
        return self.ask(RAISE_ALARM, report(alarm_id, parameters, **others))[0][SERIAL]

    def raise_many(self, alarm_id, parameters, under_way=64):
        """Raises an alarm with each of the parameters, many requests at a time; gives their serial numbers in order."""
        waiting = 0
        for text_ in parameters:
            self.send(RAISE_ALARM, report(alarm_id, text_))
            waiting += 1
            if waiting == under_way:
                waiting -= 1
                yield self.receive()[0][SERIAL]
        for _ in range(waiting):
            yield self.receive()[0][SERIAL]

    def report_event(self, alarm_id, parameters=b"", **others):
        return self.ask(REPORT_EVENT, report(alarm_id, parameters, **others))[0][SERIAL]

    def clear(self, serial):
        self.ask(CLEAR_ALARM, clearing(serial))

    def resend(self):
        """How many alarms will be sent again."""
        return self.ask(RESEND_ALARMS)[0][COUNT]

    def receivers(self):
        """What came of the notifications to each receiver, by its index in the table."""
        return {cells[RECEIVER_INDEX]: ReceiverStatus(bool(cells[7]), cells[8].decode(),
                                                      **{name: cells[tag] for tag, name in COUNTERS.items()})
                for cells in self.ask(SHOW_RECEIVERS)}

    def test_trap(self, index):
        self.ask(SEND_TEST_TRAP, number(RECEIVER_INDEX, index))
