"""The table of active alarms while alarms are raised and cleared."""

import json
import os
import random
import threading
import time
import unittest

from alarm_table import (ALARM_ENTRY, COLUMNS, DETAIL, LOCATION, SERIAL, AlarmTableTest, alarms_numbered, name,
                         place_of)
from backend_wire import SUBSCRIBE_NOTIFICATIONS, BackendClient
from notifications import DISK_FAILED, disk
from snmp_wire import GET_BULK, NO_SUCH_INSTANCE, Manager, numbers
from talvik_e2e import LIMIT, SOURCE

MIB = "KEL-TALVIK-MIB.json"
STORM = 4  # seconds of raising and clearing
RATE = 200  # changes a second
AT_START = 600  # alarms; each third may be cleared


class Changer(threading.Thread):
    """Raises alarms and clears those of `serials` and its own, at a steady rate."""

    def __init__(self, path, chance, serials):
        super().__init__()
        self.path, self.chance, self.active = path, chance, serials
        self.raised = self.cleared = 0
        self.error = None
        self.ended = threading.Event()

    def run(self):
        try:
            with BackendClient(self.path) as client:
                self.change(client)
        except Exception as error:  # shown by the test's own thread
            self.error = error
        finally:
            self.ended.set()

    def change(self, client):
        start = time.monotonic()
        while (passed := time.monotonic() - start) < STORM:
            if self.raised + self.cleared > passed * RATE:
                self.ended.wait(1 / RATE)
            elif self.active and self.chance.random() < 0.5:
                client.clear(self.active.pop(self.chance.randrange(len(self.active))))
                self.cleared += 1
            else:
                self.raised += 1
                self.active.append(client.raise_alarm(DISK_FAILED, disk(self.raised)))


class Walker(threading.Thread):
    """A manager that walks the table until an event is set, at least once, and keeps what it saw."""

    def __init__(self, port, repetitions, columns, ended):
        super().__init__()
        self.port, self.repetitions, self.columns, self.ended = port, repetitions, columns, ended
        self.walks = []
        self.error = None

    def run(self):
        try:
            with Manager(self.port, "reader") as manager:
                while not self.walks or not self.ended.is_set():
                    self.walks.append([self.walk(manager, f"{ALARM_ENTRY}.{column}") for column in self.columns])
        except Exception as error:  # shown by the test's own thread
            self.error = error

    def walk(self, manager, root):
        if self.repetitions:
            return [(*place_of(one.name), one.value) for one in manager.walk(root, self.repetitions)]
        found, at = [], root
        while True:
            one, = manager.get_next(at).bindings
            if not one.name.startswith(root + "."):
                return found
            if numbers(one.name) <= numbers(at):
                raise AssertionError(f"{one.name} does not follow {at}")
            found.append((*place_of(one.name), one.value))
            at = one.name


class RowReader(Walker):
    """A manager that asks for all columns of some rows at once."""

    def walk(self, manager, root):
        found, after = [], 0
        while True:
            starts = [(name(column, after), "n", None) for column in (SERIAL, LOCATION, DETAIL)]
            answer = manager.ask(GET_BULK, starts, 0, 4)
            places = [place_of(one.name) for one in answer.bindings if one.name.startswith(ALARM_ENTRY + ".")]
            rows = [row for row in zip(*[iter(answer.bindings)] * 3) if row[0].name.startswith(root + ".")]
            for row in rows:
                serials = {place_of(one.name)[1] for one in row if one.name.startswith(ALARM_ENTRY + ".")}
                if len(serials) != 1 or row[0].value not in serials:
                    raise AssertionError(f"one answer shows different rows: {places}")
                found.append((SERIAL, row[0].value, row[0].value))
            if len(rows) * 3 < len(answer.bindings) or not rows:
                return found
            after = found[-1][1]


class Changing(AlarmTableTest):
    def setUp(self):
        super().setUp()
        seed = int(os.environ.get("TALVIK_SEED") or random.randrange(1 << 32))
        print(f"TALVIK_SEED={seed}")
        self.chance = random.Random(seed)

    def long_lifetime(self):
        """A folder with a MIB description by which rows are kept longer than a test waits: news must be reported."""
        description = json.loads((SOURCE / "mibs" / MIB).read_text())
        table, = [one for one in description["tables"] if one["name"] == "talvikAlarmTable"]
        table["answerLifetimeMs"] = 60000
        return self.write(f"mibs/{MIB}", json.dumps(description)).parent

    def storm(self, agent, socket):
        """Walks while alarms change; every row that was there throughout must be in each walk, once a column."""
        with BackendClient(socket) as client:
            at_start = list(client.raise_many(DISK_FAILED, [disk(number) for number in range(AT_START)]))
        steady = [serial for number, serial in enumerate(at_start) if number % 3]
        changer = Changer(socket, self.chance, at_start[::3])
        walkers = [Walker(agent.port, 0, [LOCATION], changer.ended), Walker(agent.port, 1, [SERIAL], changer.ended),
                   Walker(agent.port, 50, COLUMNS, changer.ended),
                   Walker(agent.port, 17, [DETAIL, SERIAL], changer.ended),
                   RowReader(agent.port, 4, [SERIAL], changer.ended)]
        for thread in (changer, *walkers):
            thread.start()
        for thread in (changer, *walkers):
            thread.join(LIMIT)
            self.assertFalse(thread.is_alive(), "a walk or the changes do not end")
        for thread in (changer, *walkers):
            if thread.error:
                raise thread.error
        print(f"{changer.raised} raised, {changer.cleared} cleared, {[len(walker.walks) for walker in walkers]} walks")
        self.assertGreater(changer.raised + changer.cleared, 50)
        for walker in walkers:
            for walk in walker.walks:
                for column, cells in zip(walker.columns, walk):
                    self.check_column(column, cells, steady)
        remaining = sorted([*steady, *changer.active])
        self.wait_for_serials(self.manager(agent, "reader"), remaining, "the table as it was left")

    def check_column(self, column, cells, steady):
        serials = [serial for _, serial, _ in cells]
        self.assertEqual({one for one, _, _ in cells}, {column})
        self.assertEqual(serials, sorted(set(serials)))
        known = set(steady)
        self.assertEqual([serial for serial in serials if serial in known], steady)
        for _, serial, value in cells:
            if column == LOCATION and serial <= AT_START:
                self.assertEqual(value.decode(), f"Enclosure DAE000, slot {serial - 1}")
            elif column == SERIAL:
                self.assertEqual(value, serial)

    def check_soon(self, agent, client):
        """What is raised appears and what is cleared goes, in a table that a manager keeps looking at."""
        manager = self.manager(agent, "reader")
        known = self.serials(manager)
        for number in range(5):
            serial = client.raise_alarm(DISK_FAILED, disk(number))
            known.append(serial)
            self.wait_for_serials(manager, known, f"alarm {serial}")
            gone = known.pop(0)
            client.clear(gone)
            self.wait_for_serials(manager, known, f"alarm {gone} cleared")
            self.assertEqual(manager.get(name(SERIAL, gone)).bindings[0].tag, NO_SUCH_INSTANCE)

    def test_walks_during_a_storm(self):
        agent = self.start()
        self.storm(agent, self.backend_socket)

    def test_walks_during_a_storm_at_a_back_end_of_its_own(self):
        agent = self.start_apart(mib_dir=self.long_lifetime())
        self.storm(agent, self.apart)

    def test_a_change_is_seen_soon(self):
        agent = self.start_with(alarms_numbered(range(1, 120)), mib_dir=self.long_lifetime())
        self.check_soon(agent, self.client())

    def test_a_change_at_a_back_end_of_its_own_is_seen_soon(self):
        agent = self.start_apart(mib_dir=self.long_lifetime())
        client = self.alarm_client()
        list(client.raise_many(DISK_FAILED, [disk(number) for number in range(120)]))
        self.check_soon(agent, client)

    def test_a_change_is_seen_after_the_back_end_was_killed(self):
        agent = self.start_apart(mib_dir=self.long_lifetime())
        with BackendClient(self.apart) as client:
            serials = list(client.raise_many(DISK_FAILED, [disk(number) for number in range(60)]))
        manager = self.manager(agent, "reader")
        self.wait_for_serials(manager, serials, "what was raised")
        for _ in range(2):
            self.backend.kill()
            self.backend = self.start_backend(self.apart)
            with BackendClient(self.apart) as client:
                client.clear(serials.pop(30))
                serials.append(client.raise_alarm(DISK_FAILED, disk(7)))
            self.wait_for_serials(manager, serials, "the table of the back end that was started again")

    def test_a_change_is_seen_without_the_notifications(self):
        self.apart = self.folder / "backend.sock"
        self.start_backend(self.apart)
        self.alarm_client().ask(SUBSCRIBE_NOTIFICATIONS)  # which leaves none for the agent
        agent, client = self.start(backend=f"unix:{self.apart}"), self.alarm_client()
        serials = list(client.raise_many(DISK_FAILED, [disk(number) for number in range(60)]))
        manager = self.manager(agent, "reader")
        self.wait_for_serials(manager, serials, "what was raised")
        client.clear(serials.pop(10))
        serials.append(client.raise_alarm(DISK_FAILED, disk(7)))
        self.wait_for_serials(manager, serials, "what was changed, once the rows that are kept are too old")


if __name__ == "__main__":
    unittest.main()
