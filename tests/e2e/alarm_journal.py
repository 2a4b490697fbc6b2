"""What was asked of a back end by a test that breaks something meanwhile, against what arrived at a receiver."""

import os
import random
import re

from notifications import ALARM_TRAP, CATEGORY, LOCATION, SERIAL_NO, NotificationTest
from talvik_e2e import wait_until

UNDER_WAY = 1024  # notifications that may come twice after a break
ARRIVAL_LIMIT = 120  # seconds


class Journal:
    """What was asked of the back end, in order, and whether it was answered."""

    def __init__(self):
        self.entries = []  # (number of the alarm, category), certain
        self.serials = {}

    def note(self, number, category, certain):
        self.entries.append(((number, category), certain))

    def certain(self):
        return {key for key, certain in self.entries if certain}

    def expected(self, seen):
        """The notifications in order; one of what was not answered only if it was seen."""
        return [key for key, certain in self.entries if certain or key in seen]


class JournalTest(NotificationTest):
    """A test of choices by a seed that it prints, with alarms that are told apart by the number of a disk."""

    def setUp(self):
        super().setUp()
        seed = int(os.environ.get("TALVIK_SEED") or random.randrange(1 << 32))
        print(f"TALVIK_SEED={seed}")
        self.chance = random.Random(seed)
        self.journal = Journal()
        self.receiver = self.trap_socket()

    def seen(self):
        """Number and category of each alarm notification that arrived, and its serial number."""
        found = []
        for one in self.receiver.notifications():
            if one.oid == ALARM_TRAP:
                objects = one.objects()
                number = int(re.fullmatch(rb"Enclosure DAE000, slot (\d+)", objects[LOCATION])[1])
                found.append(((number, objects[CATEGORY]), objects[SERIAL_NO]))
        return found

    def check(self, state, breaks):
        """Fails unless every notification arrives, in order, and not too many come twice."""
        certain = self.journal.certain()
        wait_until(lambda: certain <= {key for key, _ in self.seen()}, "every notification", ARRIVAL_LIMIT)
        wait_until(lambda: self.outbox_size(state) == 0, "the back end's outbox empty")
        self.assertEqual(self.receiver.lost(), 0, "datagrams that the system had no room for")
        seen = self.seen()
        first = list(dict.fromkeys(key for key, _ in seen))
        expected = self.journal.expected(set(first))
        for position, (found, wanted) in enumerate(zip(first, expected)):
            self.assertEqual(found, wanted, f"at position {position}")
        self.assertEqual(len(first), len(expected))
        repeats = len(seen) - len(first)
        print(f"{len(first)} notifications, {repeats} of them again")
        self.assertLessEqual(repeats, breaks * UNDER_WAY)
        place = {key: position for position, key in enumerate(expected)}
        again = sum(place[later] <= place[earlier] for (earlier, _), (later, _) in zip(seen, seen[1:]))
        self.assertLessEqual(again, breaks, "times that the list was taken up again further ahead")
        for (number, _), serial in seen:
            self.assertEqual(serial, self.journal.serials.get(number, serial))
