"""Writing through a stock snmpd: all or nothing, whoever may."""

import unittest

from agentx_master import AgentxTest
from alarm_table import ALARM_ENTRY, CLEAR_LEAF, TITLE, Alarm, clearing, name
from talvik_e2e import CONFIG, HEALTH, OPERATOR, READER, ROOT, WRITER, v3
from trap_table import PORT, TRAPS, Destination, assign, change, create, destroy, walk_of

SYS_CONTACT = ".1.3.6.1.2.1.1.4.0"
NO_ROWS = f"{TRAPS} = No Such"


class AgentxSet(AgentxTest):
    def rows(self, user=WRITER):
        return [line for line in self.walk(self.master, user, TRAPS) if not line.startswith(NO_ROWS)]

    def begin(self, config=CONFIG, alarms=()):
        if alarms:
            self.keep_alarms(alarms)
        self.master = self.start_master(config=config)
        self.agent = self.start_subagent(self.master)

    def test_row_is_created_changed_and_deleted(self):
        self.begin()
        self.set(self.master, *create(5))
        self.assertEqual(self.rows(), walk_of(Destination(5)))
        self.set(self.master, *change(5, port=10162, user="monitor"), user=v3("admin"))
        self.assertEqual(self.rows(), walk_of(Destination(5, port=10162, user="monitor")))
        self.set(self.master, *destroy(5))
        self.assertEqual(self.rows(), [])
        self.assertIn("SET by a manager through the AgentX master", self.agent.log())

    def test_refusals_name_the_variable(self):
        self.begin()
        self.set(self.master, *create(5))
        for reason, failed, assignments in (
                ("wrongType", 0, [assign(PORT, 5, "x", "s")]),
                ("wrongValue", 1, [assign(PORT, 5, 7), assign(PORT, 5, 0)]),
                ("inconsistentName", 0, [assign(PORT, 6, 7)]),
                ("inconsistentValue", 0, create(5)[:1])):
            with self.subTest(reason=reason):
                self.assert_refused(self.master, reason, assignments[failed][0], *assignments)

    def test_nothing_is_done_when_another_part_fails(self):
        self.begin()
        self.set(self.master, *create(5))
        before = self.rows()
        # The master's own object refuses a number, whichever of the two stands first.
        for assignments in ([*change(5, port=7), (SYS_CONTACT, "i", 1)], [(SYS_CONTACT, "i", 1), *change(5, port=7)],
                            [*change(5, port=7), clearing(17)]):
            result = self.snmpset(self.master, WRITER, *assignments)
            self.assertEqual(result.returncode, 2, result.stdout + result.stderr)
            self.assertEqual(self.rows(), before)

    def test_parts_of_both_are_done_together(self):
        self.begin()
        self.set(self.master, *create(5), (SYS_CONTACT, "s", "operator"))
        self.assertEqual(self.rows(), walk_of(Destination(5)))
        self.assertEqual(self.lines("snmpget", self.master, WRITER, SYS_CONTACT),
                         [f'{SYS_CONTACT} = STRING: "operator"'])

    def test_alarm_is_cleared(self):
        self.begin(alarms=[Alarm(1), Alarm(2, 8)])
        self.set(self.master, clearing(1))
        with self.manager(self.master) as manager:
            self.wait_for_serials(manager, [2], "the row of the cleared alarm gone")
        self.assertEqual(self.lines("snmpget", self.master, READER, CLEAR_LEAF), [f"{CLEAR_LEAF} = Gauge32: 0"])
        self.assertIn("inconsistentValue", self.snmpset(self.master, WRITER, clearing(1)).stderr)

    def test_master_decides_who_may_do_what(self):
        hidden = (f"\nview noTitle included {ROOT}\nview noTitle excluded {HEALTH}\n"
                  f"view noTitle excluded {ALARM_ENTRY}.{TITLE}\nrocommunity titleless 127.0.0.1 -V noTitle\n")
        self.begin(config=CONFIG + hidden, alarms=[Alarm(1)])
        self.assertIn("noAccess", self.snmpset(self.master, READER, *create(5)).stderr)
        self.assertIn("noAccess", self.snmpset(self.master, OPERATOR, clearing(1)).stderr)
        self.assertEqual(self.rows(), [])
        titleless = ["-v2c", "-c", "titleless"]
        title = name(TITLE, 1)
        everything = self.walk(self.master)
        expected = [line for line in everything if not line.startswith(f"{title} ")]
        self.assertEqual(len(expected), len(everything) - 1)
        self.assertEqual(self.walk(self.master, titleless), expected)
        self.assertEqual(self.lines("snmpbulkwalk", self.master, titleless, "-Cr40", ROOT), expected)
        self.assertIn("No Such", self.lines("snmpget", self.master, titleless, title)[0])


if __name__ == "__main__":
    unittest.main()
