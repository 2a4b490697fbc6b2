"""The stock tools work with the names of the MIB's text."""

import os
import re
import unittest

from mib_agent import ALARMS, MibAgentTest, id_without_oid
from mib_facts import MIB_TEXT, STUBS, facts_of_text, run_tool

from notifications import DISK_FAILED, disk
from talvik_e2e import WRITER, Daemon, free_port, wait_until

NAMES = {"talvikTopologyTable": ["NodeCode", "NodeType", "NodeIndex", "Address", "NodeName", "Reserved1", "Reserved2",
                                 "Status"],
         "talvikAlarmTable": ["NodeCode", "Location", "Advice", "Title", "Type", "Level", "Id", "Time", "SerialNo",
                              "Detail", "Category", "FullId"],
         "talvikTrapTable": ["UsableAddress", "Port", "RowStatus", "Index", "Version", "Address", "Type", "User"]}


class NamedSnmptrapd(Daemon):
    """The stock receiver with the MIB loaded; it writes a notification a line, its objects apart by tabs."""

    def __init__(self, folder):
        self.port = free_port()
        self.output = folder / "named-snmptrapd.log"
        config = folder / "named-snmptrapd" / "snmptrapd.conf"
        config.parent.mkdir()
        config.write_text("authCommunity log public\n")
        environment = dict(os.environ, SNMP_PERSISTENT_DIR=str(config.parent), SNMPCONFPATH=str(config.parent), LC_ALL="C",
                           MIBS="KEL-TALVIK-MIB", MIBDIRS=f"{MIB_TEXT.parent}:{STUBS}")
        super().__init__(folder, "named-snmptrapd-messages",
                         ["snmptrapd", "-f", "-n", "-Lf", self.output, "-C", "-c", config, f"udp:127.0.0.1:{self.port}"],
                         environment)
        wait_until(lambda: "NET-SNMP version" in self.text(), "snmptrapd listening")

    def text(self):
        return self.output.read_text(errors="replace") if self.output.exists() else ""

    def wait_for(self, count):
        """The objects of the notifications that came, by name, once there are that many."""
        def received():
            lines = [line for line in self.text().splitlines() if "snmpTrapOID" in line or "::snmpModules.1.1.4.1.0" in line]
            return lines if len(lines) >= count else None

        return [dict(part.split(" = ", 1) for part in line.split("\t") if " = " in part)
                for line in wait_until(received, f"{count} notifications at snmptrapd")]


class MibNames(MibAgentTest):
    def ask(self, agent, tool, *arguments, options=()):
        """What a tool says by name; fails when it fails or warns."""
        result = self.tool(tool, agent, [*WRITER, *options], *arguments, mib_text=True, numeric=False)
        self.assertEqual((result.returncode, result.stderr), (0, ""), result.stdout)
        return result.stdout.strip().replace("KEL-TALVIK-MIB::", "").splitlines()

    def table(self, agent, name):
        """The rows of a table as snmptable shows it."""
        options = ["-Cf", "|", "-Cb"]  # what to put between columns, and their names without what they share
        heading, *rows = self.ask(agent, "snmptable", name, options=options)[2:]
        self.assertEqual(heading.split("|"), NAMES[name])
        return [row.split("|") for row in rows]

    def test_snmptranslate_knows_every_name(self):
        oids = {name: oid for (name, aspect), oid in facts_of_text().items() if aspect == "oid"}
        result = run_tool("snmptranslate", "-m", "KEL-TALVIK-MIB", "-On", *(f"KEL-TALVIK-MIB::{name}" for name in oids))
        self.assertEqual(result.stdout.split(), [f".{oid}" for oid in oids.values()])
        back = run_tool("snmptranslate", "-m", "KEL-TALVIK-MIB", "-OS", *oids.values())
        self.assertEqual(back.stdout.split(), [f"KEL-TALVIK-MIB::{name}" for name in oids])

    def test_snmptable_shows_every_table(self):
        agent = self.start_with_receiver(free_port())
        self.assertEqual(self.table(agent, "talvikTopologyTable"),
                         [["TALVIK-0001", "1", "1", "192.168.2.10", "Array", " ", " ", "online"]])
        alarms = self.table(agent, "talvikAlarmTable")
        self.assertEqual([row[4:9] for row in alarms],
                         [["alarm", level, str(DISK_FAILED), "2023-11-15,3:43:20.0,+5:30", str(alarm.serial)]
                          for alarm, level in zip(ALARMS, ("major", "warning"))])
        self.assertEqual([row[9:] for row in alarms],
                         [[alarm.cells()[10][1].decode(), "fault", str(DISK_FAILED)] for alarm in ALARMS])
        traps = self.table(agent, "talvikTrapTable")
        self.assertEqual([row[2:] for row in traps], [["active", "1", "v2c", "127.0.0.1", "alarm", "--"],
                                                      ["active", "2", "v2c", "127.0.0.1", "alarmOwnOid", "--"]])

    def test_snmpset_takes_names_and_labels(self):
        agent = self.start_with_receiver(free_port())
        self.ask(agent, "snmpset", "talvikTrapRowStatus.5", "i", "createAndGo", "talvikTrapAddress.5", "s", "192.0.2.10",
                 "talvikTrapPort.5", "u", "162", "talvikTrapType.5", "i", "alarmLegacy")
        self.ask(agent, "snmpset", "talvikTrapVersion.5", "i", "v1")
        self.assertEqual(self.table(agent, "talvikTrapTable")[2],
                         ["192.0.2.10", "162", "active", "5", "v1", "192.0.2.10", "alarmLegacy", "--"])
        self.ask(agent, "snmpset", "talvikTrapRowStatus.5", "i", "destroy")
        self.assertEqual(len(self.table(agent, "talvikTrapTable")), 2)

        serial = ALARMS[0].serial
        self.assertEqual(self.ask(agent, "snmpget", f"talvikAlarmLevel.{serial}"),
                         [f"talvikAlarmLevel.{serial} = INTEGER: major(2)"])
        self.ask(agent, "snmpset", "talvikClearAlarm.0", "u", str(serial))
        self.assertEqual(self.ask(agent, "snmpget", f"talvikAlarmLevel.{serial}", "talvikClearAlarm.0"),
                         [f"talvikAlarmLevel.{serial} = No Such Instance currently exists at this OID",
                          "talvikClearAlarm.0 = Gauge32: 0"])

    def test_snmptrapd_names_what_it_receives(self):
        receiver = self.keep(NamedSnmptrapd(self.folder))
        self.start_with_receiver(receiver.port)
        client = self.client()
        client.raise_alarm(DISK_FAILED, disk(7), level=6, time=1700000000)
        client.report_event(id_without_oid(), time=1700000000)
        client.test_trap(1)
        kinds = {}
        for one in receiver.wait_for(5):
            kind = one["SNMPv2-SMI::snmpModules.1.1.4.1.0"].replace("OID: KEL-TALVIK-MIB::", "")
            kinds.setdefault(kind, []).append(one)
        self.assertEqual({kind: len(found) for kind, found in kinds.items()},
                         {"talvikAlarm": 2, "talvikTest": 1, "talvikOwnAlarms.1.1.1": 1, "talvikOwnAlarmOther": 1})

        for prefix, kind, time in (("kel", "talvikAlarm", "2023-11-15,3:43:20.0,+5:30"),
                                   ("own", "talvikOwnAlarms.1.1.1", "2023-11-15,03:43:20.0,+05:30")):
            objects = {name.replace(f"KEL-TALVIK-MIB::{prefix}ReportingAlarm", ""): value
                       for name, value in kinds[kind][0].items() if "ReportingAlarm" in name}
            self.assertEqual(len(objects), 14)
            for name, value in (("FaultTitle", "STRING: Disk failed"), ("FaultLevel", "INTEGER: critical(1)"),
                                ("FaultType", "INTEGER: alarm(2)"), ("FaultCategory", "INTEGER: fault(1)"),
                                ("FaultTime", f"STRING: {time}"), ("LocationAlmID", f"Counter64: {DISK_FAILED}")):
                self.assertEqual(objects[f"{name}.0"], value)
        test = " ".join(kinds["talvikTest"][0].values())
        self.assertTrue(re.search(r"STRING: Test trap.*INTEGER: info\(5\).*INTEGER: event\(3\)", test), test)

    def test_labels_mean_what_was_reported(self):
        receiver = self.keep(NamedSnmptrapd(self.folder))
        self.add_receiver(self.start(), 1, receiver.port)
        client = self.client()
        # What talvikctl calls info to critical, and one that it has no name for.
        levels = {2: "info(5)", 3: "warning(4)", 4: "minor(3)", 5: "major(2)", 6: "critical(1)", 99: "warning(4)"}
        for level in levels:
            serial = client.raise_alarm(DISK_FAILED, disk(7), level=level)
        client.clear(serial)
        client.report_event(DISK_FAILED, disk(7))
        found = receiver.wait_for(len(levels) + 2)
        shown = {name: [one[f"KEL-TALVIK-MIB::kelReportingAlarm{name}.0"].replace("INTEGER: ", "") for one in found]
                 for name in ("FaultLevel", "FaultCategory", "FaultType")}
        self.assertEqual(shown["FaultLevel"][:len(levels)], list(levels.values()))
        self.assertEqual(shown["FaultCategory"], ["fault(1)"] * len(levels) + ["clear(2)", "event(3)"])
        self.assertEqual(shown["FaultType"], ["alarm(2)"] * (len(levels) + 1) + ["event(3)"])


if __name__ == "__main__":
    unittest.main()
