"""What a SET of the trap destinations may not do: the reason, the variable at fault, and nothing has changed."""

import unittest

from talvik_e2e import OPERATOR, READER, WRITER, v3
from trap_table import (ACTIVE, ADDRESS, CREATE_AND_GO, CREATE_AND_WAIT, DESTROY, INDEX, NOT_IN_SERVICE, NOT_READY,
                        PORT, STATUS, TRAP_ENTRY, TRAPS, TYPE, USABLE, USER, VERSION, TrapTest, assign, change, create,
                        destroy, name)

READ_V1 = ["-v1", "-c", "reader"]
WRITE_V1 = ["-v1", "-c", "writer"]

BAD_ADDRESSES = ("0.0.0.0", "::", "1.2.3", "256.1.1.1", "-a.example", " 192.0.2.1", "a\0b", "::0", "1.2.3.4.5",
                 "192.0.2.1:162", "[2001:db8::1]", "a-.example", "a..example", ".example", "a_b.example", "192.0.2.1 ",
                 "two words", " ", "2001:db8::1%eth0", "fe80::1%", "2001:db8:::1", "12345::", "a" * 64 + ".example",
                 "example.1", "udp:host", ".".join(["a" * 49] * 5) + ".dddd", "192.0.2.1\0", "a\nb",
                 "b\u00fccher.example", b"\xff.example")

BAD_USERS = ("a\0b", "\0", "a\nb", "tab\t", "\x7f", "\u0085", b"\xff", b"\xc3", b"\xc0\xaf", b"\xed\xa0\x80",
             b"\xf5\x80\x80\x80", b"\xe2\x82")


class TrapRefusal(TrapTest):
    def setUp(self):
        self.agent = self.start_agent()
        self.set(self.agent, *create(1, "192.0.2.1", 162, version=3, type=7, user="monitor"))
        self.set(self.agent, *create(2, "192.0.2.2"))

    def refuse(self, reason, failed, *assignments, user=WRITER):
        with self.subTest(reason=reason, assignments=assignments, user=user[0]):
            self.assert_refused(self.agent, reason, failed, *assignments, user=user)

    def refuse_each(self, reason, column, values, letter=None):
        """Refuses each value in a modify, and at its place in a create."""
        for value in values:
            bad = assign(column, 1, value, letter)
            self.refuse(reason, bad[0], bad)
            bad = assign(column, 9, value, letter)
            others = [variable for variable in create(9) if variable[0] != bad[0]]
            self.refuse(reason, bad[0], *others, bad)

    def test_columns_that_are_not_there(self):
        for column in (0, 9, 4294967295):
            self.refuse("notWritable", name(column, 1), (name(column, 1), "i", 1))
        for object_name in (TRAPS, TRAP_ENTRY, f"{TRAPS}.2.2.1"):
            self.refuse("notWritable", object_name, (object_name, "i", 1))

    def test_a_column_that_is_read_only(self):
        self.refuse("notWritable", name(INDEX, 1), assign(INDEX, 1, 1))
        self.refuse("notWritable", name(INDEX, 9), *create(9), assign(INDEX, 9, 9))

    def test_an_index_that_cannot_be(self):
        for index in ("0", "2147483648", "4294967295", "1.1", "1.0"):
            self.refuse("noCreation", name(STATUS, index), *create(index))
            self.refuse("noCreation", name(STATUS, index), *destroy(index))
            self.refuse("noCreation", name(PORT, index), *change(index, port=1))
        self.refuse("noCreation", f"{TRAP_ENTRY}.2", (f"{TRAP_ENTRY}.2", "u", 1))

    def test_a_wrong_type(self):
        for column, letter, value in ((USABLE, "i", 1), (USABLE, "a", "192.0.2.1"), (PORT, "i", 162),
                                      (PORT, "s", "162"), (PORT, "t", 162), (VERSION, "u", 1),
                                      (VERSION, "s", "v1"), (ADDRESS, "a", "192.0.2.1"), (ADDRESS, "o", ".1.3.6.1"),
                                      (TYPE, "u", 1), (USER, "i", 1)):
            self.refuse_each("wrongType", column, [value], letter)
        for letter, value in (("u", CREATE_AND_GO), ("s", "createAndGo")):
            self.refuse("wrongType", name(STATUS, 9), assign(STATUS, 9, value, letter), *create(9)[1:])

    def test_a_wrong_length(self):
        self.refuse_each("wrongLength", USER, ["", "u" * 33, "\u00fc" * 17])
        for column in (USABLE, ADDRESS):
            self.refuse_each("wrongLength", column, ["", "a" * 256])

    def test_a_wrong_number(self):
        self.refuse_each("wrongValue", PORT, [0, 65536, 4294967295])
        self.refuse_each("wrongValue", VERSION, [0, 4, -1, 2147483647, -2147483648])
        self.refuse_each("wrongValue", TYPE, [0, 4, 5, 6, 8, -1])

    def test_a_wrong_row_status(self):
        for value in (0, 7, -1, NOT_READY, CREATE_AND_WAIT, NOT_IN_SERVICE):
            for index in (1, 9):
                self.refuse("wrongValue", name(STATUS, index), assign(STATUS, index, value))
                self.refuse("wrongValue", name(STATUS, index), *create(index)[1:], assign(STATUS, index, value))

    def test_a_wrong_address(self):
        for address in BAD_ADDRESSES:
            self.refuse("wrongValue", name(ADDRESS, 1), *change(1, address=address))
        for address in BAD_ADDRESSES[:7]:
            self.refuse("wrongValue", name(USABLE, 1), *change(1, usable=address))
            self.refuse("wrongValue", name(ADDRESS, 9), *create(9, address))

    def test_a_wrong_user(self):
        self.refuse_each("wrongValue", USER, BAD_USERS)

    def test_a_second_row(self):
        self.refuse("inconsistentValue", name(STATUS, 10), *create(9), *create(10))
        self.refuse("inconsistentValue", name(VERSION, 2), *change(1, port=1), *change(2, version=1, port=2),
                    *change(1, version=1))
        self.refuse("inconsistentValue", name(PORT, 10), *create(9)[:2], *change(10, port=162))
        self.refuse("inconsistentValue", name(STATUS, 2), *destroy(1), *destroy(2))

    def test_a_column_twice(self):
        manager = self.manager(self.agent)
        before = self.traps(self.agent)
        for position, assignments in (
                (2, change(1, port=1) + change(1, port=1)),
                (3, change(1, port=1, version=1) + change(1, port=2)),
                (4, create(9) + change(9, port=5)),
                (3, change(1, port=1, version=1) + [assign(VERSION, 1, 1)]),
                (4, create(9) + [assign(STATUS, 9, CREATE_AND_GO)]),
                (2, destroy(1) + destroy(1))):
            with self.subTest(assignments=assignments):
                answer = manager.set(*assignments)
                self.assertEqual((answer.error, answer.position), ("inconsistentValue", position))
                self.assertEqual(self.traps(self.agent), before)

    def test_a_delete_with_other_columns(self):
        self.refuse("inconsistentValue", name(PORT, 1), *destroy(1), *change(1, port=1))
        self.refuse("inconsistentValue", name(PORT, 1), *change(1, port=1), *destroy(1))
        self.refuse("inconsistentValue", name(USER, 9), *destroy(9), *change(9, user="x"))

    def test_a_create_that_lacks_something(self):
        status, address, port = create(9)
        self.refuse("inconsistentValue", name(STATUS, 9), status)
        self.refuse("inconsistentValue", name(STATUS, 9), status, address)
        self.refuse("inconsistentValue", name(STATUS, 9), address, status)
        self.refuse("inconsistentValue", name(STATUS, 9), status, port)
        self.refuse("inconsistentValue", name(STATUS, 9), port, *change(9, version=1, type=1, user="x"), status)

    def test_a_row_that_is_not_there(self):
        self.refuse("inconsistentName", name(PORT, 9), *change(9, port=1))
        self.refuse("inconsistentName", name(ADDRESS, 9), *change(9, address="192.0.2.9", port=1))
        self.refuse("inconsistentValue", name(STATUS, 9), assign(STATUS, 9, ACTIVE))
        self.refuse("inconsistentValue", name(STATUS, 9), assign(STATUS, 9, ACTIVE), *create(9)[1:])

    def test_a_row_that_is_there_already(self):
        for index in (1, 2):
            self.refuse("inconsistentValue", name(STATUS, index), *create(index, "192.0.2.99", 99))
            self.refuse("inconsistentValue", name(STATUS, index), *create(index, "192.0.2.99", 99)[::-1])

    def test_users_who_may_only_read(self):
        for user in (READER, OPERATOR):
            self.refuse("noAccess", name(STATUS, 9), *create(9), user=user)
            self.refuse("noAccess", name(PORT, 1), *change(1, port=1), user=user)
            self.refuse("noAccess", name(STATUS, 1), *destroy(1), user=user)
        self.refuse("noSuchName", name(PORT, 1), *change(1, port=1), user=READ_V1)

    def test_reasons_over_v3(self):
        admin = v3("admin")
        self.refuse("wrongValue", name(PORT, 1), *change(1, port=0), user=admin)
        self.refuse("inconsistentName", name(PORT, 9), *change(9, port=1), user=admin)
        self.refuse("notWritable", name(INDEX, 1), assign(INDEX, 1, 1), user=admin)

    def test_reasons_that_v1_knows(self):
        for reason, failed, assignments in (
                ("badValue", name(PORT, 1), change(1, port=0)),
                ("badValue", name(PORT, 1), [assign(PORT, 1, 1, "i")]),
                ("badValue", name(USER, 1), change(1, user="")),
                ("badValue", name(STATUS, 9), create(9)[:1]),
                ("badValue", name(STATUS, 1), create(1)),
                ("noSuchName", name(PORT, 9), change(9, port=1)),
                ("noSuchName", name(INDEX, 1), [assign(INDEX, 1, 1)]),
                ("noSuchName", name(9, 1), [(name(9, 1), "i", 1)]),
                ("noSuchName", name(STATUS, 0), create(0))):
            self.refuse(reason, failed, *assignments, user=WRITE_V1)

    def test_the_first_variable_at_fault_is_told(self):
        self.refuse("wrongValue", name(PORT, 1), assign(PORT, 1, 0), assign(VERSION, 1, 9))
        self.refuse("wrongValue", name(VERSION, 1), assign(VERSION, 1, 9), assign(PORT, 1, 0))
        self.refuse("wrongValue", name(VERSION, 10), *create(9), assign(VERSION, 10, 9))

    def test_refusals_leave_no_trace_for_the_next_request(self):
        for _ in range(3):
            self.refuse("inconsistentValue", name(STATUS, 10), *create(9), *create(10))
            self.refuse("inconsistentName", name(PORT, 9), *change(9, port=1))
        self.set(self.agent, *create(9))
        self.set(self.agent, assign(STATUS, 9, DESTROY))


if __name__ == "__main__":
    unittest.main()
