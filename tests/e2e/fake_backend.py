"""A back end that answers as a test wants it to: not at all, late, or with what no back end should say."""

import socket
import struct
import threading

from backend_wire import HEADER, MAGIC, REPLY, VERSION, number, records_in, text
from notifications import DISK_FAILED

GET_SYSTEM_WWN, GET_CURRENT_ALARM = 4001, 4002
ALARM_RECORD = 0xD00C900B6
AFTER, AT_MOST, END_MARK = 3, 9, 4095


def package(exchange, *records, magic=MAGIC, kind=REPLY, result=0):
    """A reply; a record is its identifier and its cells."""
    body = b"".join(struct.pack("<QH", identifier, len(cells)) + cells for identifier, cells in records)
    return HEADER.pack(magic, VERSION, exchange, result, 0xFFFD, kind, 0xFFFF, 0xFFFF, len(body)) + body


def alarm(serial, alarm_id=DISK_FAILED, kind=1, parameters=b"DAE000,7,SN-1,1"):
    return ALARM_RECORD, (number(0, kind, 1) + number(1, alarm_id, 8) + number(2, 5) + number(3, serial)
                          + number(4, 1700000000, 8) + text(8, parameters))


END = ALARM_RECORD, number(END_MARK, 0)


class FakeBackend:
    """Listens until it is closed. Of alarms it says what `answer(exchange, after, at_most)` returns, None for nothing.

    What else it is asked it answers as a back end does, but nothing at all while it `hangs`.
    """

    def __init__(self, path, answer=None, hangs=False):
        self.path, self.answer, self.hangs = path, answer, hangs
        self.connections, self.threads = [], []
        self.closed = threading.Event()
        self.listener = socket.socket(socket.AF_UNIX, socket.SOCK_STREAM)
        self.listener.bind(str(path))
        self.listener.listen()
        self._start(self._accept)

    def _start(self, target, *arguments):
        thread = threading.Thread(target=target, args=arguments)
        self.threads.append(thread)
        thread.start()

    def _accept(self):
        while True:
            try:
                connection = self.listener.accept()[0]
            except OSError:
                return
            self.connections.append(connection)
            self._start(self._serve, connection)

    def _serve(self, connection):
        try:
            with connection:
                while header := self._octets(connection, HEADER.size):
                    fields = HEADER.unpack(header)
                    reply = self._reply(fields[2], self._octets(connection, fields[8]))
                    if reply is not None:
                        connection.sendall(reply)
        except OSError:
            return  # the agent has closed it, or the test is over

    @staticmethod
    def _octets(connection, count):
        octets = b""
        while len(octets) < count:
            more = connection.recv(count - len(octets))
            if not more:
                return b""
            octets += more
        return octets

    def _reply(self, exchange, body):
        if self.hangs:
            return None
        command = struct.unpack_from("<Q", body)[0]
        if command == GET_CURRENT_ALARM:
            cells = records_in(body)[0]
            return self.answer(exchange, cells[AFTER], cells[AT_MOST])
        if command == GET_SYSTEM_WWN:
            return package(exchange, (command, text(1, "2100a1b2c3d4e5f6")))
        return package(exchange)

    def close(self):
        if self.closed.is_set():
            return
        self.closed.set()
        self.listener.shutdown(socket.SHUT_RDWR)
        self.listener.close()
        for connection in self.connections:
            try:
                connection.shutdown(socket.SHUT_RDWR)
            except OSError:
                pass  # it is closed already
        for thread in self.threads:
            thread.join()
        self.path.unlink()
