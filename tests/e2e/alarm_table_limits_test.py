"""The table of active alarms where something is limited: answers, texts, SNMPv1 and views."""

import bisect
import os
import random
import unittest

from alarm_table import (ALARM_ENTRY, ALARMS, CATEGORY, CLEAR_LEAF, CLEAR_SUBTREE, COLUMNS, DETAIL, FULL_ID, ID,
                         LOCATION, NODE_CODE, SERIAL, TITLE, AlarmTableTest, alarms_numbered, name, shown_cells,
                         table_of, wire_cells)
from notifications import DISK_FAILED
from snmp_wire import END_OF_VIEW, NULL, Answer, PlainV3Manager, numbers
from talvik_e2e import CONFIG, ENTRY, HEALTH, OPERATOR, READER, ROOT, TABLE, V1

ONE_DATAGRAM = 65507
LEAF = (CLEAR_LEAF, "Gauge32", 0)
SERIALS = [*range(2, 100, 2), 4000000000, 2 ** 32 - 1]
TOO_BIG = Answer("tooBig", 0, [])
MOST_VARIABLES = 1000
TEXT_TWICE = 508010002  # its detail shows its first parameter twice
SHOWN_AT_MOST = 16384  # octets of a text

# Communities, each with a view of its own, and what of the table it hides. The mask leaves the column open.
VIEWS = {
    "all": ("", lambda column, serial: False),
    "middle": (f"view middle excluded {ALARM_ENTRY}.{ID}\nview middle excluded {ALARM_ENTRY}.{TITLE}",
               lambda column, serial: column in (ID, TITLE)),
    "edges": (f"view edges excluded {ALARM_ENTRY}.{NODE_CODE}\nview edges excluded {ALARM_ENTRY}.{FULL_ID}",
              lambda column, serial: column in (NODE_CODE, FULL_ID)),
    "cell": (f"view cell excluded {name(SERIAL, 4)}\nview cell excluded {name(LOCATION, 2 ** 32 - 1)}",
             lambda column, serial: (column, serial) in ((SERIAL, 4), (LOCATION, 2 ** 32 - 1))),
    "row": (f"view row excluded {name(0, 50)} ff.fa", lambda column, serial: serial == 50),
    "onecolumn": (f"view onecolumn excluded {ALARMS}\nview onecolumn included {ALARM_ENTRY}.{CATEGORY}",
                  lambda column, serial: column != CATEGORY),
    "onerow": (f"view onerow excluded {ALARMS}\nview onerow included {name(0, 4000000000)} ff.fa",
               lambda column, serial: serial != 4000000000),
    "notable": (f"view notable excluded {ALARMS}", lambda column, serial: True),
}
VIEWS_CONFIG = "".join(f"view {view} included {ROOT}\nview {view} excluded {HEALTH}\n{lines}\n"
                       f"rocommunity {view} 127.0.0.1 -V {view}\n"
                       for view, (lines, _) in VIEWS.items())


class Mib:
    """What a manager may see, as (name, kind, value), and so what it must be answered."""

    def __init__(self, cells):
        self.cells = sorted(cells, key=lambda cell: numbers(cell[0]))
        self.keys = [numbers(cell[0]) for cell in self.cells]

    def behind(self, object_name):
        place = bisect.bisect_right(self.keys, numbers(object_name))
        return self.cells[place] if place < len(self.cells) else (object_name, END_OF_VIEW, b"")

    def bulk(self, non_repeaters, repetitions, names):
        """The whole answer to a GETBULK that nothing limits."""
        answer, at = [self.behind(one) for one in names[:non_repeaters]], list(names[non_repeaters:])
        for _ in range(repetitions if at else 0):
            row = [self.behind(one) for one in at]
            answer, at = answer + row, [cell[0] for cell in row]
        return answer


class LimitsTest(AlarmTableTest):
    def setUp(self):
        super().setUp()
        self.alarms = alarms_numbered(SERIALS)
        seed = int(os.environ.get("TALVIK_SEED") or random.randrange(1 << 32))
        print(f"TALVIK_SEED={seed}")
        self.chance = random.Random(seed)

    def add_configuration(self, text):
        self.config.write_text(CONFIG + text)

    def mib(self, agent, hides=lambda column, serial: False):
        with self.manager(agent, "reader") as manager:
            topology = wire_cells(manager.walk(TABLE))
        rows = [cell for alarm in self.alarms for cell in table_of([alarm])]
        return Mib([*topology, *(cell for cell in rows if not hides(*numbers(cell[0])[-2:])), LEAF])

    def start_of_request(self):
        """A name from which a manager may want to go on."""
        column, serial = self.chance.randrange(14), self.chance.choice([*SERIALS, 0, 1, 5, 50, 99, 3999999999])
        return self.chance.choice([ROOT, ALARMS, ALARM_ENTRY, f"{ALARM_ENTRY}.{column}", CLEAR_SUBTREE, CLEAR_LEAF,
                                   TABLE, f"{ENTRY}.{self.chance.randrange(1, 9)}.1",
                                   *[name(column, serial)] * 20, name(column, f"{serial}.{column}")])

    def check_bulk(self, manager, mib, non_repeaters, repetitions, names):
        """The answer is what is due, cut at most at its end, and only for a reason; its cells."""
        answer = manager.get_bulk(repetitions, *names, non_repeaters=non_repeaters)
        question = f"{manager.community} {non_repeaters} {repetitions} {names}"
        self.assertEqual((answer.error, answer.position), ("noError", 0), question)
        found, due = wire_cells(answer.bindings), mib.bulk(non_repeaters, repetitions, names)
        for one, other in zip(found, due):
            # What is at the end may bear another name of the request's: the library names it so.
            named = slice(1, None) if other[1] == END_OF_VIEW else slice(None)
            self.assertEqual(one[named], other[named], question)
        self.assertLessEqual(len(found), len(due))
        return found, due


class Sizes(LimitsTest):
    def test_an_answer_is_never_larger_than_the_manager_takes(self):
        self.add_configuration("createUser plain\nrouser plain noauth -V talvik\n")
        agent = self.start_with(self.alarms)
        mib, engine_id = self.mib(agent), self.engine(agent)[0]
        for largest in (484, 500, 600, 1000, 1472, 3000, 10000, ONE_DATAGRAM):
            with PlainV3Manager(agent.port, "plain", engine_id, largest) as manager:
                for repeaters in (1, 2, 4, 12):
                    names = [f"{ALARM_ENTRY}.{column}" for column in COLUMNS[-repeaters:]]
                    for repetitions in (1, 10, 50, 1000):
                        with self.subTest(largest=largest, repeaters=repeaters, repetitions=repetitions):
                            found, due = self.check_bulk(manager, mib, 0, repetitions, names)
                            self.assertLessEqual(manager.size, largest)
                            self.assertGreater(len(found), 0)
                            ended = len(found) == len(due) or END_OF_VIEW in [cell[1] for cell in found]
                            if largest >= 1472 and not ended and len(found) < MOST_VARIABLES - repeaters:
                                self.assertGreater(manager.size, 0.5 * largest, "cut without need")
                answer = manager.get(*[name(column, 2) for column in COLUMNS])
                self.assertLessEqual(manager.size, largest)
                if largest >= 1000:
                    self.assertEqual(wire_cells(answer.bindings), table_of(self.alarms[:1]))
                else:
                    self.assertEqual((answer.error, answer.position), ("tooBig", 0))
                    self.assertEqual({one.tag for one in answer.bindings} - {NULL}, set())  # the library repeats names

    def test_an_answer_is_never_larger_than_the_agent_may_send(self):
        for most in (None, 1472, 4000, 65000):
            if most:
                self.add_configuration(f"[snmp] sendMessageMaxSize {most}\n")
            agent = self.start() if most else self.start_with(self.alarms)
            mib = self.mib(agent)
            with self.manager(agent, "reader") as manager:
                for repetitions in (1, 50, 1000, 2 ** 31 - 1):
                    for names in ([ALARMS], [f"{ALARM_ENTRY}.{column}" for column in COLUMNS]):
                        answer = manager.get_bulk(repetitions, *names)
                        found = wire_cells(answer.bindings)
                        self.assertEqual(found, mib.bulk(0, min(repetitions, 1000), names)[:len(found)])
                        self.assertGreaterEqual(len(found), 1)
                        self.assertLessEqual(manager.size, most or ONE_DATAGRAM)
            agent.stop()

    def test_any_bulk_is_answered_with_what_is_due(self):
        self.check_any_bulk()

    def test_any_bulk_is_answered_with_what_is_due_where_little_fits(self):
        self.alarms = alarms_numbered(range(1, 301))
        self.add_configuration("[snmp] sendMessageMaxSize 1472\n")
        self.check_any_bulk(most=1472 // 15)  # beyond that the library leaves some variables NULL

    def check_any_bulk(self, most=MOST_VARIABLES):
        agent = self.start_with(self.alarms)
        mib = self.mib(agent)
        with self.manager(agent, "reader") as manager:
            for _ in range(600):
                names = [self.start_of_request() for _ in range(self.chance.randrange(1, 9))]
                non_repeaters = self.chance.randrange(len(names) + 1)
                repetitions = self.chance.choice((0, 1, 2, 5, 20, 50, 60))
                if non_repeaters + repetitions * (len(names) - non_repeaters) < most:
                    self.check_bulk(manager, mib, non_repeaters, repetitions, names)


class Views(LimitsTest):
    def test_what_a_view_leaves_out_is_in_no_answer(self):
        self.add_configuration(VIEWS_CONFIG)
        agent = self.start_with(self.alarms)
        for view, (_, hides) in VIEWS.items():
            mib = self.mib(agent, hides)
            visible = [cell for cell in mib.cells if cell[0].startswith(ALARMS + ".")]
            with self.subTest(view=view), self.manager(agent, view) as manager:
                user = ["-v2c", "-c", view]
                for tool in ("snmpwalk", "snmpbulkwalk"):
                    result = self.tool(tool, agent, user, "-Ox", f"{ROOT}.2.91.10.1")
                    self.assertEqual(shown_cells(result.stdout), [*visible, LEAF])
                self.check_each_cell(manager, {cell[0] for cell in visible})
                for repetitions in (1, 3, 50, 1000):
                    for columns in (COLUMNS, COLUMNS[::-1], (NODE_CODE, ID, FULL_ID), (TITLE, ID), (ID, ), (SERIAL, )):
                        names = [f"{ALARM_ENTRY}.{column}" for column in columns]
                        self.assertGreater(len(self.check_bulk(manager, mib, 0, repetitions, names)[0]), 0)
                        self.check_bulk(manager, mib, len(columns) // 2, repetitions, names)
                for _ in range(150):
                    names = [self.start_of_request() for _ in range(self.chance.randrange(1, 9))]
                    self.check_bulk(manager, mib, self.chance.randrange(len(names) + 1),
                                    self.chance.choice((1, 2, 5, 20, 50)), names)
                    found = manager.get_next(*names)
                    self.assertEqual(wire_cells(found.bindings), [mib.behind(one) for one in names])

    def check_each_cell(self, manager, visible):
        for serial in (2, 4, 50, 4000000000, 2 ** 32 - 1):
            names = [name(column, serial) for column in COLUMNS]
            found = {cell[0]: cell for cell in wire_cells(manager.get(*names).bindings)}
            for alarm_cell in table_of([one for one in self.alarms if one.serial == serial]):
                if alarm_cell[0] in visible:
                    self.assertEqual(found[alarm_cell[0]], alarm_cell)
                else:
                    self.assertIn(found[alarm_cell[0]][1], (0x80, 0x81))


class Texts(LimitsTest):
    FILLERS = ("x", "ä", "€", "\U0001F600")

    def raise_long(self, count):
        client = self.client()
        for number in range(count):
            filler = self.FILLERS[number % len(self.FILLERS)]
            product = (filler * 30000).encode()[:29970].decode(errors="ignore")
            client.raise_alarm(DISK_FAILED, f"DAE000,7,{product},1".encode())

    def check_details(self, found, count):
        cells = [cell for cell in found if cell[0].startswith(f"{ALARM_ENTRY}.{DETAIL}.")]
        self.assertEqual([cell[0] for cell in cells], [name(DETAIL, serial) for serial in range(1, count + 1)])
        for number, (_, _, octets) in enumerate(cells):
            self.assertLessEqual(len(octets), SHOWN_AT_MOST)
            self.assertGreater(len(octets), SHOWN_AT_MOST - 8)
            filler = self.FILLERS[number % len(self.FILLERS)]
            self.assertRegex(octets.decode(), rf"^Disk 7 in enclosure DAE000 \(serial number {filler}+…$")

    def test_walks_show_the_beginning_of_long_texts(self):
        agent = self.start()
        self.raise_long(120)
        for tool, user, options in (("snmpwalk", READER, []), ("snmpbulkwalk", READER, ["-Cr50"]),
                                    ("snmpbulkwalk", OPERATOR, ["-Cr10"]), ("snmpwalk", V1, [])):
            with self.subTest(tool=tool, user=user[0]):
                result = self.tool(tool, agent, user, "-Ox", *options, ALARMS)
                self.assertEqual((result.returncode, result.stderr), (0, ""))
                found = shown_cells(result.stdout)
                self.check_details(found, 120)
                self.assertEqual(len(found), 120 * (11 if user == V1 else 12))
        self.check_details(wire_cells(self.manager(agent, "reader").walk(ALARMS)), 120)

    def test_walks_get_past_long_texts_where_little_fits(self):
        self.add_configuration("[snmp] sendMessageMaxSize 1472\n")
        agent = self.start()
        self.raise_long(6)
        for tool in ("snmpwalk", "snmpbulkwalk"):
            result = self.tool(tool, agent, READER, "-Ox", ALARMS)
            self.assertEqual((result.returncode, result.stderr), (0, ""))
            self.assertEqual(len(shown_cells(result.stdout)), 6 * len(COLUMNS))

    def test_an_alarm_whose_text_is_too_long_does_not_hide_the_others(self):
        agent = self.start()
        client = self.client()
        for number in range(60):
            client.raise_alarm(DISK_FAILED, f"DAE000,{number},SN,1".encode())
            if number % 20 == 0:
                client.raise_alarm(TEXT_TWICE, b"x" * 32750 + b",d")
        for tool in ("snmpwalk", "snmpbulkwalk"):
            lines = self.lines(tool, agent, READER, f"{ALARM_ENTRY}.{SERIAL}")
            self.assertEqual(len(lines), 60)
        agent.wait_for_log("cannot be shown and are left out")

    def test_too_big_is_for_what_does_not_fit_one_answer(self):
        for configuration in ("", "[snmp] sendMessageMaxSize 65000\n"):
            self.add_configuration(configuration)
            agent = self.start()
            if not configuration:
                self.raise_long(8)
            details = [name(DETAIL, serial) for serial in range(1, 5)]
            with self.subTest(configuration=configuration), self.manager(agent, "reader") as manager:
                self.check_details(wire_cells(manager.get(*details[:3]).bindings), 3)
                self.assertEqual(manager.get(*details), TOO_BIG)
                self.assertEqual(manager.get_next(f"{ALARM_ENTRY}.{DETAIL}", *details[:3]), TOO_BIG)
                bulk = manager.get_bulk(50, f"{ALARM_ENTRY}.{DETAIL}")
                self.assertEqual((bulk.error, len(bulk.bindings)), ("noError", 3))
                self.check_details(wire_cells(bulk.bindings), 3)
                result = self.tool("snmpget", agent, V1, "-Cf", *details)
                self.assertIn("(tooBig)", result.stderr)
                for user in (READER, OPERATOR):
                    self.assertIn("(tooBig)", self.tool("snmpget", agent, user, *details).stderr)
            agent.stop()

    def test_a_text_that_the_manager_does_not_take(self):
        self.add_configuration("createUser plain\nrouser plain noauth -V talvik\n")
        agent = self.start()
        self.raise_long(2)
        with PlainV3Manager(agent.port, "plain", self.engine(agent)[0], 2000) as manager:
            self.assertEqual(manager.get(name(DETAIL, 1)).error, "tooBig")
            self.assertEqual(manager.get_next(f"{ALARM_ENTRY}.{DETAIL}").error, "tooBig")
            answer = manager.get_bulk(10, f"{ALARM_ENTRY}.{DETAIL}")
            self.assertEqual({one.tag for one in answer.bindings} - {NULL}, set())
            answer = manager.get_bulk(10, f"{ALARM_ENTRY}.{SERIAL}", f"{ALARM_ENTRY}.{DETAIL}")
            self.assertEqual(wire_cells(answer.bindings), [(name(SERIAL, 1), "Gauge32", 1)])
            self.assertEqual([cell[2] for cell in wire_cells(manager.get_bulk(2, f"{ALARM_ENTRY}.{SERIAL}").bindings)],
                             [1, 2])

    def test_texts_come_out_clean(self):
        agent = self.start()
        self.client().raise_alarm(DISK_FAILED, b"D\x01A\tE\n,7\x7f,\xc3(\xff\xe2\x82|\xed\xa0\x80|\xc2\x85|\xc3\xa4,1")
        with self.manager(agent, "reader") as manager:
            location, detail = manager.get(name(LOCATION, 1), name(DETAIL, 1)).bindings
        self.assertEqual(location.value.decode(), "Enclosure D A E , slot 7 ")
        bad = "\ufffd"
        self.assertEqual(detail.value.decode(), f"Disk 7  in enclosure D A E  (serial number {bad}({bad}{bad}{bad}|"
                         f"{bad * 3}| |ä) has failed: too many media errors.")


class Version1(LimitsTest):
    def setUp(self):
        super().setUp()
        self.agent = self.start_with(self.alarms)

    def test_a_walk_shows_all_but_the_64_bit_column(self):
        result = self.tool("snmpwalk", self.agent, V1, "-Ox", f"{ROOT}.2.91.10.1")
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertEqual(shown_cells(result.stdout), [*table_of(self.alarms, COLUMNS[:-1]), LEAF])

    def test_getnext_skips_the_64_bit_column(self):
        for start in (name(CATEGORY, SERIALS[-1]), f"{ALARM_ENTRY}.{FULL_ID}", name(FULL_ID, SERIALS[0])):
            self.assertEqual(self.lines("snmpgetnext", self.agent, V1, start), [f"{CLEAR_LEAF} = Gauge32: 0"])

    def test_get_of_what_v1_cannot_see_is_no_such_name(self):
        for object_name in (name(FULL_ID, SERIALS[0]), name(SERIAL, 3), name(13, SERIALS[0]), ALARMS):
            result = self.tool("snmpget", self.agent, V1, object_name)
            self.assertEqual(result.returncode, 2)
            self.assertIn("(noSuchName)", result.stderr)
            self.assertIn(f"Failed object: {object_name}\n", result.stderr)
        # The tool asks again without what is not there.
        result = self.tool("snmpget", self.agent, V1, name(SERIAL, SERIALS[0]), name(FULL_ID, SERIALS[0]))
        self.assertIn(f"{name(SERIAL, SERIALS[0])} = Gauge32: {SERIALS[0]}\n", result.stdout)
        self.assertIn("(noSuchName)", result.stderr)


if __name__ == "__main__":
    unittest.main()
