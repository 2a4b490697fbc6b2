"""Trap destinations are created, modified and deleted by SET, over every version of SNMP."""

import unittest

from talvik_e2e import ENTRY, EVERYTHING, READER, WRITER, private_mib, shown, v3
from trap_table import (ACTIVE, ADDRESS, CREATE_AND_GO, PORT, STATUS, TRAPS, USABLE, USER, Destination, TrapTest,
                        assign, change, create, destroy, name, walk_of)

CONTACT = ".1.3.6.1.2.1.1.4.0"
V1_WRITER = ["-v1", "-c", "writer"]
ADMIN = v3("admin")


class TrapSet(TrapTest):
    def setUp(self):
        self.agent = self.start_agent()

    def test_creates_modifies_and_deletes_over_every_version(self):
        for user in (V1_WRITER, WRITER, ADMIN):
            with self.subTest(user=user[0]):
                self.set(self.agent, *create(5, "192.0.2.5", 1162), user=user)
                self.assertEqual(self.traps(self.agent, user), walk_of(Destination(5, "192.0.2.5", 1162)))
                self.set(self.agent, *change(5, port=162, version=3, user="monitor"), user=user)
                row = Destination(5, "192.0.2.5", 162, 3, user="monitor")
                self.assertEqual(self.traps(self.agent, user), walk_of(row))
                self.set(self.agent, *destroy(5), user=user)
                self.assertEqual(self.traps(self.agent, user), [])

    def test_the_other_table_stays_as_it_is(self):
        self.set(self.agent, *create(1))
        self.assertEqual(self.walk(self.agent), private_mib(walk_of(Destination(1))))

    def test_a_create_may_name_every_column(self):
        user = "ünicode 1234567890 1234567890 "
        self.set(self.agent, *create(7, "2001:db8::7", 65535, version=1, type=7, user=user))
        lines = self.lines("snmpget", self.agent, READER, *[name(column, 7) for column in (1, 2, 3, 4, 5, 6, 7)])
        self.assertEqual(lines, walk_of(Destination(7, "2001:db8::7", 65535, 1, 7))[:7])
        found = self.manager(self.agent).get(name(USER, 7)).bindings[0].value
        self.assertEqual(found.decode(), user)

    def test_the_order_of_columns_does_not_matter(self):
        variables = create(1, "192.0.2.9", 9, version=1, type=3, user="monitor")
        rows = []
        for index in range(len(variables)):
            turned = variables[index:] + variables[:index]
            for order in (turned, turned[::-1]):
                row = len(rows) + 1
                self.set(self.agent, *[(object_name[:-1] + str(row), letter, value)
                                       for object_name, letter, value in order])
                rows.append(Destination(row, "192.0.2.9", 9, 1, 3, "monitor"))
        self.assertEqual(self.traps(self.agent), walk_of(*rows))

    def test_writing_the_usable_address_sets_the_address(self):
        self.set(self.agent, assign(STATUS, 1, CREATE_AND_GO), assign(USABLE, 1, "192.0.2.3"), assign(PORT, 1, 3))
        self.assertEqual(self.traps(self.agent), walk_of(Destination(1, "192.0.2.3", 3)))
        self.set(self.agent, *change(1, usable="192.0.2.4"))
        self.assertEqual(self.traps(self.agent), walk_of(Destination(1, "192.0.2.4", 3)))

    def test_a_modify_changes_only_what_it_names(self):
        values = {"address": "192.0.2.1", "port": 77, "version": 3, "type": 7, "user": "monitor"}
        self.set(self.agent, *create(1, **values))
        self.set(self.agent, *create(2, **values))
        changes = {"address": "192.0.2.2", "port": 78, "version": 1, "type": 3, "user": "other"}
        for field, value in changes.items():
            with self.subTest(field=field):
                self.set(self.agent, *change(1, **{field: value}))
                values[field] = value
                self.assertEqual(self.traps(self.agent), walk_of(
                    Destination(1, **values), Destination(2, "192.0.2.1", 77, 3, 7, "monitor")))

    def test_active_is_accepted_for_a_row_that_is(self):
        self.set(self.agent, *create(1))
        self.set(self.agent, assign(STATUS, 1, ACTIVE))
        self.set(self.agent, assign(STATUS, 1, ACTIVE), *change(1, port=99))
        self.assertEqual(self.traps(self.agent), walk_of(Destination(1, port=99)))

    def test_a_deleted_row_may_be_deleted_again(self):
        self.set(self.agent, *create(1))
        self.set(self.agent, *destroy(1))
        self.set(self.agent, *destroy(1))
        self.set(self.agent, *destroy(2147483647))
        self.assertEqual(self.traps(self.agent), [])

    def test_a_deleted_rows_index_is_free_and_its_values_are_gone(self):
        self.set(self.agent, *create(3, "192.0.2.9", 9, version=3, type=7, user="monitor"))
        self.set(self.agent, *destroy(3))
        self.set(self.agent, *create(3))
        self.assertEqual(self.traps(self.agent), walk_of(Destination(3)))

    def test_accepts_the_forms_of_addresses(self):
        addresses = ("192.0.2.200", "2001:db8::1", "::ffff:192.0.2.1", "fe80::1%eth0", "127.0.0.1", "255.255.255.255")
        rows = [Destination(index, address) for index, address in enumerate(addresses, 1)]
        for row in rows:
            self.set(self.agent, *create(row.index, row.address))
        self.assertEqual(self.traps(self.agent), walk_of(*rows))
        for address in ("a", "traps.example.invalid", "3com.invalid", "xn--bcher-kva.invalid", "dot.at.end.invalid.",
                        "A" * 63 + ".invalid", ".".join(["b" * 49] * 5) + ".cc"):
            with self.subTest(address=address):
                self.set(self.agent, *change(1, address=address))
                self.assertIn(f'{name(ADDRESS, 1)} = STRING: "{address}"', self.traps(self.agent))

    def test_goes_with_the_variables_of_other_subtrees_or_not_at_all(self):
        self.set(self.agent, (CONTACT, "s", "before"))

        def contact():
            return self.lines("snmpget", self.agent, EVERYTHING, CONTACT)[0].split(" = ")[1]

        mixed = [(CONTACT, "s", "after"), *create(1)]
        for order in (mixed, mixed[::-1]):
            broken = [(object_name, letter, 0 if object_name == name(PORT, 1) else value)
                      for object_name, letter, value in order]
            self.assert_refused(self.agent, "wrongValue", name(PORT, 1), *broken)
            self.assertEqual(contact(), 'STRING: "before"')
            foreign = [(object_name, "i" if object_name == CONTACT else letter, 1 if object_name == CONTACT else value)
                       for object_name, letter, value in order]
            self.assert_refused(self.agent, "wrongType", CONTACT, *foreign)
            read_only = order + [(f"{ENTRY}.1.1", "s", "x")]
            self.assert_refused(self.agent, "notWritable", f"{ENTRY}.1.1", *read_only)
            self.assertEqual(contact(), 'STRING: "before"')
        self.set(self.agent, *mixed)
        self.assertEqual(contact(), 'STRING: "after"')
        self.assertEqual(self.traps(self.agent), walk_of(Destination(1)))
        self.set(self.agent, (CONTACT, "s", "before"))
        for order in (mixed, mixed[::-1]):  # that the row is there already shows only when it is to be created
            self.assert_refused(self.agent, "inconsistentValue", name(STATUS, 1), *order)
            self.assertEqual(contact(), 'STRING: "before"')

    def test_the_next_request_sees_the_change(self):
        manager = self.manager(self.agent)
        for port in range(1, 40):
            manager.set(*(create(1, port=port) if port == 1 else change(1, port=port)))
            self.assertEqual(manager.get(name(PORT, 1)).bindings[0].value, port)
        manager.set(*destroy(1))
        self.assertEqual(manager.walk(TRAPS), [])

    def test_makes_a_table_with_the_mibs_text(self):
        self.set(self.agent, *create(4, "192.0.2.4", 162))
        self.set(self.agent, *create(40, "2001:db8::40", 10162, version=3, type=7, user="monitor"))
        result = self.tool("snmptable", self.agent, READER + ["-Cf", "|"], "talvikTrapTable", mib_text=True,
                           numeric=False)
        self.assertEqual(result.stderr, "")
        heading, *rows = result.stdout.strip().splitlines()[-3:]
        self.assertEqual(heading.split("|"), [
            "talvikTrapUsableAddress", "talvikTrapPort", "talvikTrapRowStatus", "talvikTrapIndex", "talvikTrapVersion",
            "talvikTrapAddress", "talvikTrapType", "talvikTrapUser"])
        self.assertEqual([row.split("|") for row in rows], [
            ["192.0.2.4", "162", "active", "4", "v2c", "192.0.2.4", "alarm", "--"],
            ["2001:db8::40", "10162", "active", "40", "v3", "2001:db8::40", "alarmOwnOid", "monitor"]])

    def test_names_of_the_mibs_text_can_be_set(self):
        result = self.tool("snmpset", self.agent, WRITER, "talvikTrapRowStatus.6", "=", "createAndGo",
                           "talvikTrapAddress.6", "=", "192.0.2.6", "talvikTrapPort.6", "=", "162",
                           "talvikTrapVersion.6", "=", "v1", mib_text=True)
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertEqual(self.traps(self.agent), walk_of(Destination(6, "192.0.2.6", version=1)))

    def test_getbulk_shows_what_was_set(self):
        self.set(self.agent, *create(1))
        lines = self.lines("snmpbulkget", self.agent, READER, "-Cr8", TRAPS)
        self.assertEqual(shown(lines), walk_of(Destination(1)))


if __name__ == "__main__":
    unittest.main()
