"""What a running agent tells of itself is what the text of TALVIK-AGENT-MIB says."""

import re
import unittest

from mib_agent import ALARMS, MibAgentTest
from mib_facts import AGENT_MIB_TEXT, DATE_AND_TIME, differences, facts_of_net_snmp, facts_of_text, read_mib, run_tool
from mib_walk import READABLE, altered, cells_of, name_of, walk_faults, write_faults

from notifications import DISK_FAILED, disk
from snmp_wire import NO_SUCH_OBJECT
from talvik_e2e import EVERYTHING, HEALTH, SOURCE, free_port, wait_until

NAME = "TALVIK-AGENT-MIB"
SERVED = 4  # objects of the module, a row each
ROW = ["Name", "Id", "Access", "Requests", "Sets", "Errors"]
HANDLERS = 2  # of notifications, a row each
HANDLER_ROW = ["Base", "Built", "Refused"]
ROWS = {"talvikAgentObjectTable": SERVED, "talvikAgentHandlerTable": HANDLERS}


class MibHealth(MibAgentTest):
    @classmethod
    def setUpClass(cls):
        cls.module = read_mib(AGENT_MIB_TEXT)

    def ask(self, agent, tool, *arguments, options=()):
        """What a tool says by the names of the text; fails when it fails or warns."""
        result = self.tool(tool, agent, [*EVERYTHING, *options], f"-m{NAME}", *arguments, mib_text=True, numeric=False)
        self.assertEqual((result.returncode, result.stderr), (0, ""), result.stdout)
        return result.stdout.strip().replace(f"{NAME}::", "").splitlines()

    def test_two_parsers_find_the_same_in_the_text(self):
        facts = facts_of_text(AGENT_MIB_TEXT)
        names = sorted(one.name for one in self.module.objects())
        self.assertGreater(len(names), 25)
        by_net_snmp = facts_of_net_snmp(names, AGENT_MIB_TEXT)
        self.assertEqual(sorted({name for name, _ in by_net_snmp}), names)
        self.assertEqual(differences(facts, by_net_snmp, by_net_snmp.keys()), [])
        self.assertEqual([one for one, value in facts.items() if one[1] == "is described" and not value], [])

    def test_every_object_is_in_a_group_that_agents_must_have(self):
        self.assertEqual([one.name for one in self.module.compliances],
                         ["talvikAgentCompliance", "talvikAgentFullCompliance"])
        self.assertEqual(self.module.compliances[-1].members, [group.name for group in self.module.groups])
        self.assertEqual(sorted(name for group in self.module.groups for name in group.members),
                         sorted(one.name for one in self.module.objects() if one.access in READABLE))

    def test_labels_are_those_of_the_agents_own_states(self):
        header = (SOURCE / "host" / "snmp" / "agent_health.h").read_text()
        objects = {one.name: one.syntax.labels for one in self.module.objects()}
        for state in ("Module", "Master", "Backend"):
            body, = re.findall(rf"enum class {state} \{{([^}}]*)\}}", header)
            states = {name.lower(): int(number) for name, number in re.findall(r"(\w+) = (\d+)", body)}
            self.assertEqual(objects[f"talvikAgent{state}State"], states)

    def test_a_walk_shows_what_the_text_says(self):
        cells = cells_of(self.manager(self.start_with_receiver(free_port())), HEALTH)
        self.assertEqual(len(cells), len(self.module.scalars) + len(ROW) * SERVED + len(HANDLER_ROW) * HANDLERS)
        self.assertEqual(walk_faults(self.module, cells), [])

        for name, changes, fault in (
                ("talvikAgentReceivers", {"base": "Counter64"}, "talvikAgentReceivers: type 0x42 where the text has Counter64"),
                ("talvikAgentObjectSets", {"base": "Gauge32"}, "talvikAgentObjectSets: type 0x46 where the text has Gauge32"),
                ("talvikAgentStarted", {"written": "SnmpAdminString"}, "talvikAgentStarted: no UTF-8"),
                ("talvikAgentModuleState", {"labels": {"missing": 2}},
                 "talvikAgentModuleState: 1 is no number of its enumeration"),
                ("talvikAgentObjectNumber", {"bounds": ((2, 9),)}, "talvikAgentObjectNumber: 1 is not within ((2, 9),)"),
                ("talvikAgentObjectNumber", {"access": "read-only"}, "talvikAgentObjectNumber: is not served"),
                ("talvikAgentObjectName", {"access": "not-accessible"},
                 "talvikAgentObjectName: is served although it is not-accessible"),
                ("talvikAgentHandlerBuilt", {"base": "Gauge32"},
                 "talvikAgentHandlerBuilt: type 0x46 where the text has Gauge32"),
                ("talvikAgentHandlerRefused", {"oid": f"{HEALTH[1:]}.2.2.1.5"}, "talvikAgentHandlerRefused: is not served"),
                ("talvikAgentErrors", {"oid": f"{HEALTH[1:]}.1.22"}, "talvikAgentErrors: is not served"),
                ("talvikAgentErrors", {"oid": f"{HEALTH[1:]}.1.22"},
                 f"{HEALTH}.1.14.0: is served, but the text has no object there")):
            with self.subTest(fault):
                self.assertIn(fault, walk_faults(altered(self.module, name, **changes), cells))

    def test_nothing_can_be_written_and_the_index_cannot_be_read(self):
        manager = self.manager(self.start_with_receiver(free_port()))
        self.assertEqual({one.access for one in self.module.objects()}, {"read-only", "not-accessible"})
        self.assertEqual(write_faults(self.module, manager, cells_of(manager, HEALTH)), [])
        indexes = [one for one in self.module.objects() if one.access not in READABLE]
        self.assertEqual(len(indexes), len(ROWS))
        for index in indexes:
            self.assertEqual(manager.get(f"{name_of(index)}.1").bindings[0].tag, NO_SUCH_OBJECT)
            self.assertEqual(manager.set((f"{name_of(index)}.1", "u", 1)).error, "notWritable")

    def test_snmptranslate_knows_every_name(self):
        oids = {name: oid for (name, aspect), oid in facts_of_text(AGENT_MIB_TEXT).items() if aspect == "oid"}
        result = run_tool("snmptranslate", "-m", NAME, "-On", *(f"{NAME}::{name}" for name in oids))
        self.assertEqual(result.stdout.split(), [f".{oid}" for oid in oids.values()])
        back = run_tool("snmptranslate", "-m", NAME, "-OS", *oids.values())
        self.assertEqual(back.stdout.split(), [f"{NAME}::{name}" for name in oids])

    def test_a_walk_by_name_has_names_syntaxes_and_labels_of_the_text(self):
        shown = [re.fullmatch(r"(\w+)\.(\d+) = ([\w-]+): (.*)", line)
                 for line in self.ask(self.start_with_receiver(free_port()), "snmpwalk", HEALTH)]
        names = [one.name for one in self.module.scalars]
        names += [one.name for table in self.module.tables for one in table.columns if one.access in READABLE
                  for _ in range(ROWS[table.name])]
        self.assertEqual([line and line[1] for line in shown], names)
        objects = {one.name: one.syntax for one in self.module.objects()}
        for name, _, kind, value in (line.groups() for line in shown):
            syntax = objects[name]
            self.assertEqual(kind, "STRING" if syntax.base == "OCTET STRING" else syntax.base, name)
            if syntax.labels:
                self.assertIn(value, [f"{label}({number})" for label, number in syntax.labels.items()], name)
            if syntax.written == DATE_AND_TIME:
                self.assertRegex(value, r"^(20\d\d-\d+-\d+,\d+:\d+:\d+\.0,[+-]\d+:\d+|0-0-0,0:0:0\.0)$", name)

    def test_states_are_shown_by_label(self):
        names = [f"talvikAgent{state}State.0" for state in ("Module", "Master", "Backend")]
        nobody = {"backend": f"unix:{self.folder / 'nobody.sock'}"}
        without = {"module": "/no/such/module.so", "module_failure": "continue"}  # nothing asks the back end
        for changes, expected in (({}, ["loaded(1)", "none(1)", "embedded(1)"]),
                                  (nobody, ["loaded(1)", "none(1)", "down(3)"]),
                                  ({**without, **nobody}, ["missing(2)", "none(1)", "unknown(4)"])):
            with self.subTest(expected):
                agent = self.start(**changes)

                def shown():
                    return [line.split(": ")[1] for line in self.ask(agent, "snmpget", *names)]

                wait_until(lambda: shown() == expected, "the states")
                agent.stop()

    def test_snmptable_shows_what_is_served(self):
        agent = self.start_with_receiver(free_port())
        self.ask(agent, "snmpget", f".1.3.6.1.4.1.99999.2.91.10.1.1.1.4.{ALARMS[0].serial}")
        lines = self.ask(agent, "snmptable", "talvikAgentObjectTable", options=["-Cf", "|", "-Cb", "-Ci"])
        heading, *rows = [line.replace(" requests", "").split("|") for line in lines[2:]]  # the unit, where the text has one
        self.assertEqual(heading, ["index", *ROW])
        root = "1.3.6.1.4.1.99999.2.91."
        self.assertEqual(rows, [["1", "talvikTopologyTable", root + "9.1", "readOnly", "0", "0", "0"],
                                ["2", "talvikAlarmTable", root + "10.1.1", "readOnly", "1", "0", "0"],
                                ["3", "talvikClearAlarm", root + "10.1.2", "writable", "0", "0", "0"],
                                ["4", "talvikTrapTable", root + "10.4.1", "writable", "2", "2", "0"]])

    def test_snmptable_shows_what_notification_handlers_made(self):
        agent = self.start()
        table = ["snmptable", "talvikAgentHandlerTable"]

        def rows():
            _, _, heading, *found = self.ask(agent, *table, options=["-Cf", "|", "-Cb", "-Ci"])
            self.assertEqual(heading.split("|"), ["index", *HANDLER_ROW])
            return [line.replace(" notifications", "").split("|") for line in found]

        bases = ["1.3.6.1.4.1.99999.2.91.10.3.1.1", "1.3.6.1.4.1.99999.2.251.20.1.3"]
        self.assertEqual(rows(), [["1", bases[0], "0", "0"], ["2", bases[1], "0", "0"]])
        client = self.client()
        client.raise_alarm(DISK_FAILED, disk(7))
        client.raise_alarm(1)  # not in the catalogue: nobody can say what it is
        wait_until(lambda: rows() == [["1", bases[0], "1", "1"], ["2", bases[1], "1", "1"]], "both alarms counted")


if __name__ == "__main__":
    unittest.main()
