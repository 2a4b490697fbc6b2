"""Notifications, field by field: what was raised is what receivers of each version and type get."""

import calendar
import re
import time
import unittest

from notifications import (ADVICE, ALARM, ALARM_TRAP, CATEGORY, CLEAR, COLD_START, DETAIL, DISK_ADVICE, DISK_FAILED,
                           EVENT, FAULT, FAULT_TIME, LOCATION, OWN_OID, OWN_OID_ROOT, SERIAL_NO, TEST_TRAP, TITLE,
                           TRAP_OID, TRAP_USER, UP_TIME, V1, V2C, V3, WARM_START, NotificationTest, users)
from talvik_e2e import wait_until
from trap_receivers import OBJECTS, OWN_OID_OBJECTS, user_lines

MOMENT = 1700000000  # 2023-11-14 22:13:20 UTC
LEVELS = {1: 4, 2: 5, 3: 4, 4: 3, 5: 2, 6: 1, 7: 1, 8: 4}  # as raised, and as receivers see them
PARAMETERS = "DAE000,7,SN-ä,1".encode()
TEXTS = {LOCATION: "Enclosure DAE000, slot 7", ADVICE: DISK_ADVICE, TITLE: "Disk failed",
         DETAIL: "Disk 7 in enclosure DAE000 (serial number SN-ä) has failed: too many media errors."}


def expected_objects(category, serial, level, moment):
    """Type and value of the fourteen objects, in order."""
    text = {number: ("Hex-STRING", value.encode()) for number, value in TEXTS.items()}
    fault_type = 3 if category == EVENT else 2
    return [("Hex-STRING", b"TALVIK-0001"), text[LOCATION], text[ADVICE], text[TITLE], ("INTEGER", fault_type),
            ("INTEGER", LEVELS[level]), ("Gauge32", DISK_FAILED), ("Hex-STRING", moment), ("Gauge32", serial),
            text[DETAIL], ("INTEGER", category), ("Counter64", DISK_FAILED), ("INTEGER", 812),
            ("Hex-STRING", b"2102350TLV10H7000042")]


def bindings_below(base, objects, v1):
    """As they are in the notification; v1 has no Counter64."""
    return [(f"{base}.{number}.0", *value) for number, value in enumerate(objects, 1)
            if not (v1 and value[0] == "Counter64")]


class NotificationFields(NotificationTest):
    zone = "Asia/Kolkata"
    offset = "+330"  # minutes

    def receivers(self):
        """An agent with a receiver of each version and type, all of them at one snmptrapd."""
        self.agent = self.start()
        engine_id = self.engine(self.agent)[0]
        receiver = self.snmptrapd(user_lines(TRAP_USER, engine_id) + user_lines("admin", engine_id))
        index = 0
        for type_ in (ALARM, OWN_OID):
            for version, user in ((V1, "--"), (V2C, "--"), (V3, TRAP_USER), (V3, "admin")):
                index += 1
                self.add_receiver(self.agent, index, receiver.port, version, type_, user)
        return receiver

    def check_time(self, octets, base, expected):
        """Fails unless the time of an alarm is `expected`, a moment or a pair of bounds of one, in this zone."""
        if base == OBJECTS:
            self.assertEqual(len(octets), 11)
            year, rest, direction = int.from_bytes(octets[:2], "big"), octets[2:8], chr(octets[8])
            shown = (f"{year:04}-{rest[0]:02}-{rest[1]:02},{rest[2]:02}:{rest[3]:02}:{rest[4]:02}.{rest[5]},"
                     f"{direction}{octets[9]:02}:{octets[10]:02}")
        else:
            shown = octets.decode()
        found = re.fullmatch(r"(\S+),(\S+)\.0,([+-])(\d\d):(\d\d)", shown)
        self.assertIsNotNone(found, shown)
        minutes = int(found[4]) * 60 + int(found[5])
        self.assertEqual(f"{found[3]}{minutes}", self.offset)
        utc = time.strptime(f"{found[1]} {found[2]} UTC", "%Y-%m-%d %H:%M:%S %Z")
        moment = calendar.timegm(utc) - (minutes if found[3] == "+" else -minutes) * 60
        low, high = expected if isinstance(expected, tuple) else (expected, expected)
        self.assertTrue(low <= moment <= high, f"{shown} is {moment}, not {expected}")

    def check(self, notifications, category, serial, level, moment):
        self.assertEqual(len(notifications), 8)
        keys = []
        for one in notifications:
            own_oid = any(name.startswith(OWN_OID_OBJECTS + ".") for name, *_ in one.bindings)
            base = OWN_OID_OBJECTS if own_oid else OBJECTS
            keys.append((own_oid, one.version, one.who))
            bindings = one.bindings
            if one.version == V1:
                self.assertEqual(one.kind, "TRAP")
                root = f"{OWN_OID_ROOT}.1.1" if own_oid else ALARM_TRAP[:-len(".0.1")]
                self.assertEqual(one.enterprise, (root, 6, category if own_oid else 1, "127.0.0.1"))
            else:
                self.assertEqual(one.kind, "TRAP2")
                self.assertEqual((bindings[0][:2], bindings[1][:2]), ((UP_TIME, "Timeticks"), (TRAP_OID, "OID")))
                self.assertEqual(one.oid, f"{OWN_OID_ROOT}.1.1.{category}" if own_oid else ALARM_TRAP)
                bindings = bindings[2:]
            when = one.objects()[FAULT_TIME]
            self.check_time(when, base, moment)
            objects = expected_objects(category, serial, level, when)
            self.assertEqual(bindings, bindings_below(base, objects, one.version == V1))
        self.assertEqual(sorted(keys), sorted((own, version, who) for own in (False, True) for version, who in (
            (V1, "public"), (V2C, "public"), (V3, TRAP_USER), (V3, "admin"))))

    def exchange(self):
        """Fault, clear and event, as raised and as received."""
        receiver, client = self.receivers(), self.client()
        serial = client.raise_alarm(DISK_FAILED, PARAMETERS, level=6, time=MOMENT)
        self.check(receiver.wait_for(8), FAULT, serial, 6, MOMENT)
        before = int(time.time())
        client.clear(serial)
        self.check(receiver.wait_for(16)[8:], CLEAR, serial, 6, (before, int(time.time()) + 1))
        event = client.report_event(DISK_FAILED, PARAMETERS, level=3, time=MOMENT + 1)
        self.assertGreater(event, serial)
        self.check(receiver.wait_for(24)[16:], EVENT, event, 3, MOMENT + 1)

    def test_fault_clear_and_event(self):
        self.exchange()

    def test_in_a_zone_west_of_greenwich(self):
        self.zone, self.offset = "NST3:30", "-210"  # Newfoundland, all the year
        self.exchange()

    def test_every_level_and_the_time_in_octets(self):
        agent, receiver = self.start(), self.trap_socket()
        self.add_receiver(agent, 1, receiver.port)
        self.add_receiver(agent, 2, receiver.port, type=OWN_OID)
        for level in LEVELS:
            self.client().raise_alarm(DISK_FAILED, PARAMETERS, level=level, time=MOMENT)
        found = wait_until(lambda: len(receiver.datagrams) >= 2 * len(LEVELS) and receiver.notifications(), "traps")
        self.assertEqual([one.objects()[6] for one in found[::2]], list(LEVELS.values()))
        self.assertEqual(found[0].objects()[FAULT_TIME], bytes((0x07, 0xE7, 11, 15, 3, 43, 20, 0)) + b"+\x05\x1e")
        self.assertEqual(found[1].objects()[FAULT_TIME], b"2023-11-15,03:43:20.0,+05:30")

    def test_long_texts_are_cut_alike_for_everyone(self):
        agent = self.start()
        receivers = [self.trap_socket() for _ in range(3)]
        for index, (receiver, version) in enumerate(zip(receivers, (V1, V2C, V3)), 1):
            self.add_receiver(agent, index, receiver.port, version, user=TRAP_USER if version == V3 else "--")
        for filler in ("ä", "€", "x", "\U0001F600", "a€"):
            parameters = b"DAE000,7," + (filler.encode() * 32768)[:32700].decode(errors="ignore").encode() + b",1"
            self.client().raise_alarm(DISK_FAILED, parameters)
        for receiver in receivers:
            wait_until(lambda: len(receiver.datagrams) == 5, "every trap")
            self.assertLessEqual(max(map(len, receiver.datagrams)), 1472)
        v1, v2c = (receiver.notifications() for receiver in receivers[:2])
        for one, other, filler in zip(v1, v2c, "ä€x\U0001F600a"):
            objects = other.objects()
            self.assertEqual(one.objects(), {number: value for number, value in objects.items() if number != 12})
            self.assertRegex(objects[DETAIL].decode(), rf"^Disk 7 in enclosure DAE000 \(serial number {filler}.*…$")
            self.assertEqual(objects[TITLE], b"Disk failed")
        agent.wait_for_log("texts cut to fit 1472 octets")

    def test_texts_come_out_clean(self):
        agent, receiver = self.start(), self.trap_socket()
        self.add_receiver(agent, 1, receiver.port, V2C)
        self.client().raise_alarm(DISK_FAILED, b"D\x01A\tE\n,7\x7f,\xc3(\xff\xe2\x82|\xed\xa0\x80|\xc2\x85|\xc3\xa4,1")
        wait_until(lambda: receiver.datagrams, "a trap")
        objects = receiver.notifications()[0].objects()
        self.assertEqual(objects[LOCATION].decode(), "Enclosure D A E , slot 7 ")
        bad = "\ufffd"
        self.assertEqual(objects[DETAIL].decode(),
                         f"Disk 7  in enclosure D A E  (serial number {bad}({bad}{bad}{bad}|{bad * 3}| |ä) has failed: "
                         "too many media errors.")

    def test_a_start_is_cold_unless_nothing_changed(self):
        agent, receiver = self.start(), self.trap_socket()
        for index, (version, type_) in enumerate(((V2C, ALARM), (V1, ALARM), (V2C, 2)), 1):
            self.add_receiver(agent, index, receiver.port, version, type_)
        for starts, expected in ((1, WARM_START), (2, WARM_START), (3, COLD_START)):
            agent.stop()
            if expected == COLD_START:
                self.config.write_text(self.config.read_text() + "\n# changed\n")
            agent = self.start()
            self.client().raise_alarm(DISK_FAILED, PARAMETERS)
            at_start = 5 * (starts - 1)
            wait_until(lambda: len(receiver.datagrams) == at_start + 5, "the notifications of a start and one alarm")
            found = receiver.notifications()[at_start:]
            v2c = [one for one in found if one.version == V2C]
            self.assertEqual([one.oid for one in v2c], [expected, expected, ALARM_TRAP])
            self.assertEqual([name for name, *_ in v2c[0].bindings], [UP_TIME, TRAP_OID])
            generic = int(expected[-1]) - 1
            self.assertEqual([one.enterprise for one in found if one.version == V1],
                             [(".1.3.6.1.6.3.1.1.5", generic, 0, "127.0.0.1"),
                              (ALARM_TRAP[:-len(".0.1")], 6, 1, "127.0.0.1")])

    def test_a_test_trap_says_so(self):
        agent, receiver, other = self.start(), self.trap_socket(), self.trap_socket()
        self.add_receiver(agent, 4, receiver.port)
        self.add_receiver(agent, 5, other.port, type=2)
        self.client().test_trap(4)
        self.client().test_trap(5)
        for index, socket in ((4, receiver), (5, other)):
            wait_until(lambda: socket.datagrams, "a test trap")
            one, = socket.notifications()
            self.assertEqual(one.oid, TEST_TRAP)
            self.assertEqual([name for name, *_ in one.bindings],
                             [UP_TIME, TRAP_OID, *(f"{OBJECTS}.{number}.0" for number in range(1, 15))])
            objects = one.objects()
            self.assertEqual((objects[TITLE], objects[LOCATION]), (b"Test trap", f"receiver {index}".encode()))
            self.assertEqual((objects[SERIAL_NO], objects[12], objects[CATEGORY]), (0, 0, EVENT))
            self.assertEqual(self.status(index).sent, 1)

    def test_a_changed_passphrase_holds_at_once(self):
        agent = self.start()
        engine_id = self.engine(agent)[0]
        old = self.snmptrapd(user_lines(TRAP_USER, engine_id))
        new = self.snmptrapd(user_lines(TRAP_USER, engine_id, "another-authentication", "another-privacy"))
        for index, receiver in enumerate((old, new)):
            self.add_receiver(agent, 2 * index + 1, receiver.port, V3, user=TRAP_USER)
            self.add_receiver(agent, 2 * index + 2, receiver.port)
        client = self.client()
        for change, (accepts, refuses) in (("none", (old, new)), ("passphrases", (new, old))):
            with self.subTest(change=change):
                if change == "passphrases":
                    # The file is looked at once a second at the most.
                    end = time.monotonic() + 1
                    self.write_settings(users=users("another-authentication", "another-privacy"))
                    wait_until(lambda: time.monotonic() > end, "the time to look at the file")
                serial = client.raise_alarm(DISK_FAILED, PARAMETERS)

                def of_this_alarm(one):
                    return one.objects()[SERIAL_NO] == serial

                self.assertEqual([one.version for one in accepts.wait_for(2, of_this_alarm)], [V3, V2C])
                self.assertEqual([one.version for one in refuses.wait_for(1, of_this_alarm)], [V2C])


if __name__ == "__main__":
    unittest.main()
