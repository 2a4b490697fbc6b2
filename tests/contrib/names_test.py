"""Whatever contrib/ calls by name or number is in the texts of the MIBs under that name, with that number."""

import re
import unittest

from contrib_support import CONTRIB, needs, script
from dashboard import expressions_in, load
from mib import enumeration, mib_nodes

NAME = re.compile(r"\b(?:talvik|kelReporting|ownReporting|ReportingAlarm)[A-Z]?\w*")
OID = re.compile(r"(?<![\d.])\.?(1\.3\.6\.1\.4\.1\.99999(?:\.\d+)*)")
FILES = sorted(path for path in CONTRIB.rglob("*") if path.is_file() and "__pycache__" not in path.parts)

# Names that the configurations give things of their own.
OWN_NAMES = {"talvikView", "talvikReceivers"}
SNMPTT_EVENT = re.compile(r"^EVENT (\w+) ", re.MULTILINE)


@needs("snmptranslate")
class ContribNames(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.nodes = mib_nodes()
        cls.levels, cls.categories = enumeration("kelReportingAlarmFaultLevel"), enumeration("kelReportingAlarmFaultCategory")

    def test_every_name_is_in_the_mib(self):
        tails = {re.sub("^(?:kel|own)", "", name) for name in self.nodes}
        found = set()
        for path in FILES:
            text = path.read_text()
            own = OWN_NAMES | set(SNMPTT_EVENT.findall(text))
            for name in NAME.findall(text):
                if name[:6] != "talvik" or name[6:7].isupper():
                    found.add(name)
                    metric = name.removesuffix("_info")  # of the exporter
                    self.assertTrue({name, metric} & (set(self.nodes) | tails | own) or name == "ReportingAlarm",
                                    f"{name} in {path}")
        self.assertLessEqual({"talvikAlarmLevel", "talvikTopologyStatus", "talvikClearAlarm", "talvikAgentBackendState"}, found)

    def test_every_oid_is_in_the_mib(self):
        known = set(self.nodes.values())
        leaves = known - {oid.rpartition(".")[0] for oid in known}
        own = self.nodes["talvikOwnAlarms"]
        count = 0
        for path in FILES:
            for oid in OID.findall(path.read_text()):
                count += 1
                column = oid.rpartition(".")[0]  # if it is an instance
                self.assertTrue(oid in known or column in leaves or oid.startswith(own + "."), f"{oid} in {path}")
        self.assertGreater(count, 20)

    def test_the_numbers_of_the_objects_agree(self):
        handler = script(CONTRIB / "snmptrapd" / "talvik-trap-handler")
        objects = {int(oid.rpartition(".")[2]): name.removeprefix("kelReportingAlarm")
                   for name, oid in self.nodes.items() if name.startswith("kelReportingAlarm")}
        self.assertEqual(handler.OBJECTS, objects)
        self.assertEqual({name: oid.lstrip(".") for name, oid in handler.MODULE_NAMES.items()},
                         {name: self.nodes[name] for name in handler.MODULE_NAMES})
        plugin = script(CONTRIB / "nagios" / "check_talvik_alarms")
        self.assertEqual((plugin.LEVEL, plugin.STATUS, plugin.AGENT),
                         tuple("." + self.nodes[name] for name in ("talvikAlarmLevel", "talvikTopologyStatus",
                                                                   "talvikAgentObjects")))
        of_agent = {name: self.nodes["talvikAgent" + name].rpartition(".") for name in plugin.FACTS.values()}
        self.assertEqual({int(number): name for name, (_, _, number) in of_agent.items()}, plugin.FACTS)
        self.assertEqual({parent for parent, _, _ in of_agent.values()}, {plugin.AGENT[1:]})

    def test_enumerations_agree(self):
        handler = script(CONTRIB / "snmptrapd" / "talvik-trap-handler")
        self.assertEqual({int(number): name for number, name in handler.LEVELS.items()}, self.levels)
        self.assertEqual({int(number): name for number, name in handler.CATEGORIES.items()}, self.categories)
        plugin = script(CONTRIB / "nagios" / "check_talvik_alarms")
        self.assertEqual(plugin.LEVELS, enumeration("talvikAlarmLevel"))
        self.assertEqual(enumeration("talvikTopologyStatus")[plugin.ONLINE], "online")
        self.assertEqual(plugin.MODULES, enumeration("talvikAgentModuleState"))
        self.assertEqual(plugin.BACK_ENDS, enumeration("talvikAgentBackendState"))
        self.assertEqual(enumeration("talvikAlarmLevel"), self.levels)

    def test_snmptt_knows_every_value_once(self):
        text = (CONTRIB / "snmptt" / "snmptt.conf").read_text()
        for number, names in ((6, self.levels), (11, self.categories)):
            found = set(re.findall(rf"^MATCH \${number}: \(\^(\d+)\$\|\^(\w+)\$\)$", text, re.MULTILINE))
            self.assertEqual({int(value): name for value, name in found}, names)
        # Of each family: a fault of each severity, a clear, an event.
        events = re.findall(r"^EVENT \w+ (\S+) ", text, re.MULTILINE)
        self.assertEqual(sorted(events.count(oid) for oid in set(events)), [1, len(self.levels) + 2, len(self.levels) + 2])

    def test_the_dashboard_knows_every_severity(self):
        expressions = " ".join(expressions_in(load()))
        self.assertEqual(set(re.findall(r'talvikAlarmLevel="(\w+)"', expressions)), set(self.levels.values()))


if __name__ == "__main__":
    unittest.main()
