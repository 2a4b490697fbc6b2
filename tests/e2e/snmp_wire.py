"""A small SNMP manager for v2c, and for v3 without security, for what the stock tools are too slow for or do not show.

It speaks BER as RFC 3416 uses it: one request at a time, never sent again, so that what was asked happened once or not.
"""

import socket
import time
from typing import NamedTuple

from talvik_e2e import LIMIT

ERRORS = ("noError", "tooBig", "noSuchName", "badValue", "readOnly", "genErr", "noAccess", "wrongType", "wrongLength",
          "wrongEncoding", "wrongValue", "noCreation", "inconsistentValue", "resourceUnavailable", "commitFailed",
          "undoFailed", "authorizationError", "notWritable", "inconsistentName")

INTEGER, OCTETS, NULL, OBJECT_ID, SEQUENCE = 0x02, 0x04, 0x05, 0x06, 0x30
GAUGE, TIME_TICKS, COUNTER64 = 0x42, 0x43, 0x46
NO_SUCH_OBJECT, NO_SUCH_INSTANCE, END_OF_VIEW = 0x80, 0x81, 0x82
GET, GET_NEXT, RESPONSE, SET, GET_BULK = 0xA0, 0xA1, 0xA2, 0xA3, 0xA5


def element(tag, content):
    length = len(content)
    if length < 0x80:
        return bytes([tag, length]) + content
    octets = length.to_bytes((length.bit_length() + 7) // 8, "big")
    return bytes([tag, 0x80 | len(octets)]) + octets + content


def integer(value, tag=INTEGER):
    return element(tag, value.to_bytes(value.bit_length() // 8 + 1, "big", signed=True))


def object_id(name):
    numbers = [int(part) for part in name.strip(".").split(".")]
    octets = bytearray()
    for number in [numbers[0] * 40 + numbers[1], *numbers[2:]]:
        group = [number & 0x7F]
        while number > 0x7F:
            number >>= 7
            group.insert(0, 0x80 | number & 0x7F)
        octets += bytes(group)
    return element(OBJECT_ID, bytes(octets))


def octets_of(value):
    return value if isinstance(value, bytes) else value.encode()


# By the letters of snmpset.
ENCODERS = {
    "i": integer,
    "u": lambda value: integer(value, GAUGE),
    "s": lambda value: element(OCTETS, octets_of(value)),
    "n": lambda _: element(NULL, b""),
}


class Reader:
    """Takes elements from the front of some octets."""

    def __init__(self, octets):
        self.octets = octets

    def __bool__(self):
        return bool(self.octets)

    def element(self):
        tag, length, start = self.octets[0], self.octets[1], 2
        if length & 0x80:
            start += length & 0x7F
            length = int.from_bytes(self.octets[2:start], "big")
        content = self.octets[start:start + length]
        if len(content) != length:
            raise ValueError("an element that is cut off")
        self.octets = self.octets[start + length:]
        return tag, content

    def expect(self, tag):
        found, content = self.element()
        if found != tag:
            raise ValueError(f"tag {found:#x} where {tag:#x} is due")
        return content

    def inside(self, tag):
        return Reader(self.expect(tag))

    def integer(self):
        return int.from_bytes(self.expect(INTEGER), "big", signed=True)

    def object_id(self):
        numbers, number = [], 0
        for octet in self.expect(OBJECT_ID):
            number = number << 7 | octet & 0x7F
            if not octet & 0x80:
                numbers.append(number)
                number = 0
        first = min(numbers[0] // 40, 2)
        return "." + ".".join(str(part) for part in [first, numbers[0] - 40 * first, *numbers[1:]])

    def value(self):
        tag, content = self.element()
        if tag in (INTEGER, GAUGE):
            return tag, int.from_bytes(content, "big", signed=True)
        return tag, content


class Binding(NamedTuple):
    name: str
    tag: int
    value: object


class Answer(NamedTuple):
    error: str
    position: int  # of the variable that failed, from 1
    bindings: list


class NoAnswer(Exception):
    pass


def outcome_of(pdu):
    """The request's number, and the answer to it."""
    number, error, position = pdu.integer(), pdu.integer(), pdu.integer()
    bindings, listed = [], pdu.inside(SEQUENCE)
    while listed:
        binding = listed.inside(SEQUENCE)
        bindings.append(Binding(binding.object_id(), *binding.value()))
    return number, Answer(ERRORS[error], position, bindings)


class Manager:
    """One manager with a socket of its own. Names are dotted decimals with a dot in front."""

    def __init__(self, port, community="writer"):
        self.community = community.encode()
        self.number = 0
        self.size = 0  # octets of the last answer
        self.socket = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
        self.socket.connect(("127.0.0.1", port))

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.socket.close()

    def send(self, operation, assignments, first=0, second=0):
        """Sends a request; the two numbers are those of GETBULK."""
        self.number += 1
        listed = b"".join(element(SEQUENCE, object_id(name) + ENCODERS[kind](value))
                          for name, kind, value in assignments)
        pdu = element(operation, integer(self.number) + integer(first) + integer(second) + element(SEQUENCE, listed))
        self.socket.send(self.message(pdu))

    def message(self, pdu):
        return element(SEQUENCE, integer(1) + element(OCTETS, self.community) + pdu)

    def response_in(self, datagram):
        message = Reader(datagram).inside(SEQUENCE)
        message.integer()
        message.expect(OCTETS)
        return message.inside(RESPONSE)

    def receive(self, limit=LIMIT):
        """The answer to the last request; None if there is none within the limit or the agent is gone."""
        end = time.monotonic() + limit
        while True:
            self.socket.settimeout(max(end - time.monotonic(), 0.000001))
            try:
                datagram = self.socket.recv(65536)
            except (TimeoutError, ConnectionRefusedError):
                return None
            number, answer = outcome_of(self.response_in(datagram))
            if number == self.number:
                self.size = len(datagram)
                return answer

    def ask(self, operation, assignments, first=0, second=0):
        self.send(operation, assignments, first, second)
        answer = self.receive()
        if answer is None:
            raise NoAnswer("the agent does not answer")
        return answer

    def set(self, *assignments):
        """`assignments` are (name, letter of snmpset, value)."""
        return self.ask(SET, assignments)

    def get(self, *names):
        return self.ask(GET, [(name, "n", None) for name in names])

    def get_next(self, *names):
        return self.ask(GET_NEXT, [(name, "n", None) for name in names])

    def get_bulk(self, repetitions, *names, non_repeaters=0):
        return self.ask(GET_BULK, [(name, "n", None) for name in names], non_repeaters, repetitions)

    def walk(self, root, repetitions=50):
        """Every binding under `root`, in the order in which the agent gives them."""
        found, name = [], root
        while True:
            answer = self.get_bulk(repetitions, name)
            if answer.error != "noError" or not answer.bindings:
                raise AssertionError(f"walk ended by {answer}")
            for binding in answer.bindings:
                if binding.tag == END_OF_VIEW or not binding.name.startswith(root + "."):
                    return found
                if numbers(binding.name) <= numbers(name):
                    raise AssertionError(f"{binding.name} does not follow {name}")
                found.append(binding)
                name = binding.name


class PlainV3Manager(Manager):
    """A manager of v3 whose user needs neither authentication nor privacy, and that takes messages up to a size."""

    def __init__(self, port, user, engine_id, largest):
        super().__init__(port)
        self.user = user.encode()
        self.engine_id = bytes.fromhex(engine_id)
        self.largest = largest

    def message(self, pdu):
        reportable, user_based = b"\4", 3
        header = integer(self.number) + integer(self.largest) + element(OCTETS, reportable) + integer(user_based)
        nothing = element(OCTETS, b"")
        security = (element(OCTETS, self.engine_id) + integer(0) + integer(0) + element(OCTETS, self.user) + nothing
                    + nothing)
        scoped = element(OCTETS, self.engine_id) + nothing + pdu
        return element(SEQUENCE, integer(3) + element(SEQUENCE, header)
                       + element(OCTETS, element(SEQUENCE, security)) + element(SEQUENCE, scoped))

    def response_in(self, datagram):
        message = Reader(datagram).inside(SEQUENCE)
        message.integer()
        message.expect(SEQUENCE)
        message.expect(OCTETS)
        scoped = message.inside(SEQUENCE)
        scoped.expect(OCTETS)
        scoped.expect(OCTETS)
        return scoped.inside(RESPONSE)


def numbers(name):
    """A name as numbers, to compare."""
    return tuple(int(part) for part in name.strip(".").split("."))
