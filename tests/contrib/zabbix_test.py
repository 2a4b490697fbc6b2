"""contrib/zabbix: what the template asks for is what the agent has, and its patterns tell the agent's traps apart."""

import re
import unittest

from contrib_support import DISK_SLOW, INFO, PLACE, SOURCE, ContribTest, needs
from mib import enumeration, mib_nodes
from notifications import DISK_ADVICE, OWN_OID, V1, V2C
from talvik_e2e import READER, wait_until
from trap_daemon import TrapDaemon
from zabbix_template import discovered, load, mapping, objects_in, trap_patterns

TEMPLATE = "Talvik storage controller by SNMP"
UUID = re.compile(r"[0-9a-f]{12}4[0-9a-f]{3}[89ab][0-9a-f]{15}$")
WRITER = SOURCE / "tests" / "contrib" / "zabbix_trap_lines.pl"


class ZabbixTemplate(unittest.TestCase):
    def test_every_part_has_an_id_of_its_own(self):
        found = [part["uuid"] for part in objects_in(load()) if "uuid" in part]
        self.assertGreaterEqual(len(found), 15)
        self.assertEqual(len(set(found)), len(found))
        for uuid in found:
            self.assertRegex(uuid, UUID)

    def test_triggers_and_maps_refer_to_what_there_is(self):
        template = load()
        keys = {part["key"] for part in objects_in(template) if "key" in part}
        expressions = [part[name] for part in objects_in(template) for name in ("expression", "recovery_expression")
                       if name in part]
        self.assertGreaterEqual(len(expressions), 8)
        for expression in expressions:
            self.assertTrue(any(f"/{TEMPLATE}/{key}" in expression for key in keys), expression)
            rest = expression
            for key in sorted(keys, key=len, reverse=True):
                rest = rest.replace(f"/{TEMPLATE}/{key}", "")
            self.assertNotIn("/", rest)
        maps = {one["name"] for one in template["valuemaps"]}
        self.assertEqual({part["valuemap"]["name"] for part in objects_in(template) if "valuemap" in part}, maps)

    @needs("snmptranslate")
    def test_enumerations_are_those_of_the_mib(self):
        template, levels = load(), enumeration("talvikAlarmLevel")
        self.assertEqual(mapping(template, "Talvik severity"), {0: "not active", **levels})
        self.assertEqual(mapping(template, "Talvik back end"), enumeration("talvikTopologyStatus"))
        for name, state in (("module", "Module"), ("master", "Master"), ("back end", "Backend")):
            self.assertEqual(mapping(template, f"Talvik agent {name}"), enumeration(f"talvikAgent{state}State"))
        prototypes = template["discovery_rules"][0]["item_prototypes"][0]["trigger_prototypes"]
        self.assertEqual({int(one["expression"][-1]): one["tags"][1]["value"] for one in prototypes}, levels)
        self.assertEqual(len({one["priority"] for one in prototypes}), len(levels))


class ZabbixPolling(ContribTest):
    def value(self, agent, oid):
        line, = self.lines("snmpget", agent, READER, oid)
        return line.split(" = ", 1)[1]

    def test_what_it_polls_is_there(self):
        agent = self.start()
        polled = self.polled()
        found = {key: self.value(agent, oid) for key, oid in polled.items()}
        self.assertRegex(found.pop("talvik.agent.version"), r'^STRING: "\d+\.\d+\.\d+"$')
        self.assertRegex(found.pop("talvik.agent.started"), r"^Hex-STRING: 07( [0-9A-F]{2}){10} $")
        self.assertRegex(found.pop("talvik.agent.requests"), r"^Counter64: \d+$")
        counters = {key for key, value in found.items() if value == "Counter64: 0"}
        self.assertEqual({key: value for key, value in found.items() if key not in counters}, {
            "talvik.topology.status": "INTEGER: 1", "talvik.topology.code": 'STRING: "TALVIK-0001"',
            "talvik.agent.module": "INTEGER: 1", "talvik.agent.master": "INTEGER: 1", "talvik.agent.backend": "INTEGER: 1",
            "talvik.agent.receivers": "Gauge32: 0", "talvik.agent.traps.waiting": "Gauge32: 0"})
        # Of a counter Zabbix keeps by how much it grew, as far as triggers are about that.
        grown = {item["key"] for item in load()["items"] if "SIMPLE_CHANGE" in str(item.get("preprocessing"))}
        self.assertEqual(counters | {"talvik.agent.requests"}, grown)
        self.assertEqual(len(counters), 7)

    def polled(self):
        """The OIDs that items ask for, by key."""
        return {item["key"]: item["snmp_oid"] for item in load()["items"] if item["type"] == "SNMP_AGENT"}

    def test_what_it_polls_is_what_its_name_says(self):
        nodes = {oid: name for name, oid in mib_nodes().items()}
        names = {key: nodes[oid.removesuffix(".0")] for key, oid in self.polled().items() if key.startswith("talvik.agent.")}
        self.assertEqual(names, {f"talvik.agent.{key}": f"talvikAgent{name}" for key, name in {
            "version": "Version", "started": "Started", "module": "ModuleState", "master": "MasterState",
            "backend": "BackendState", "backend.failures": "BackendFailures", "requests": "Requests", "errors": "Errors",
            "notifications": "NotificationsTaken", "receivers": "Receivers", "traps.sent": "TrapsSent",
            "traps.failed": "TrapsFailed", "informs.answered": "InformsAnswered", "informs.givenup": "InformsGivenUp",
            "traps.waiting": "TrapsWaiting"}.items()})

    def test_a_hidden_health_leaves_the_rest(self):
        self.hide_health()
        agent = self.start()
        self.raise_disk(self.client(), place="DAE000")
        for key, oid in self.polled().items():
            told = self.value(agent, oid)
            self.assertEqual("No Such Object" in told, key.startswith("talvik.agent."), f"{key}: {told}")
        rules = {rule["key"]: discovered(rule) for rule in load()["discovery_rules"]}
        rows = {key: [len([line for line in self.walk(agent, READER, oid) if "No Such" not in line]) for oid in oids.values()]
                for key, oids in rules.items()}
        self.assertEqual(rows, {"talvik.alarm.discovery": [1] * 6, "talvik.agent.handler.discovery": [0],
                                "talvik.agent.object.discovery": [0]})

    def test_it_discovers_handlers_and_objects(self):
        agent = self.start()
        self.raise_disk(self.client())
        expected = {"talvik.agent.handler.discovery": ["1.3.6.1.4.1.99999.2.91.10.3.1.1", "1.3.6.1.4.1.99999.2.251.20.1.3"],
                    "talvik.agent.object.discovery": ["talvikTopologyTable", "talvikAlarmTable", "talvikClearAlarm",
                                                      "talvikTrapTable"]}
        built = "talvik.agent.handler.built[{#SNMPINDEX}]"
        for key, names in expected.items():
            rule, = (rule for rule in load()["discovery_rules"] if rule["key"] == key)
            (macro, oid), = discovered(rule).items()
            found = dict(line.split(" = ") for line in self.walk(agent, READER, oid))
            self.assertEqual(list(found.values()), [f'STRING: "{name}"' for name in names])
            self.assertLessEqual(set(re.findall(r"\{#\w+\}", str(rule))), {"{#SNMPINDEX}", macro})
            for prototype in rule["item_prototypes"]:
                for index in (name.rpartition(".")[2] for name in found):
                    with self.subTest(prototype["key"], index=index):
                        asked = prototype["snmp_oid"].replace("{#SNMPINDEX}", index)
                        wanted = "Counter64: 1" if prototype["key"] == built else "Counter64: "
                        wait_until(lambda: self.value(agent, asked).startswith(wanted), wanted)

    def test_a_back_end_that_is_away_reads_as_offline(self):
        agent = self.start_apart()
        serial = self.raise_disk(self.alarm_client())
        template = load()
        status = next(item for item in template["items"] if item["key"] == "talvik.topology.status")
        level = template["discovery_rules"][0]["item_prototypes"][0]["snmp_oid"].replace("{#SNMPINDEX}", str(serial))
        self.backend.kill()
        # Zabbix asks for both at once and takes the error for both.
        together = wait_until(lambda: (done := self.tool("snmpget", agent, READER, level, status["snmp_oid"])).returncode and
                              done, "an error about the alarm")
        self.assertIn("genError", together.stderr)
        self.assertEqual(status["preprocessing"], [{"type": "CHECK_NOT_SUPPORTED", "parameters": [""],
                                                    "error_handler": "CUSTOM_VALUE", "error_handler_params": "2"}])
        self.assertEqual(self.value(agent, status["snmp_oid"]), "INTEGER: 2")

    def test_it_discovers_each_alarm(self):
        agent = self.start()
        client = self.client()
        serials = [self.raise_disk(client, number, place="DAE000") for number in (1, 2)]
        rule = load()["discovery_rules"][0]
        rows = {}
        for macro, oid in discovered(rule).items():
            for line in self.walk(agent, READER, oid):
                name, value = line.split(" = ", 1)
                rows.setdefault(name.removeprefix(f".{oid}."), {})[macro] = value.partition(": ")[2].strip('"')
        self.assertEqual(rows, {str(serial): {
            "{#NODE}": "TALVIK-0001", "{#LOCATION}": f"Enclosure DAE000, slot {number}", "{#TITLE}": "Disk failed",
            "{#ADVICE}": DISK_ADVICE, "{#ALARMID}": "501010001",
            "{#DETAIL}": f"Disk {number} in enclosure DAE000 (serial number SN-{number}) has failed: too many media errors."}
            for number, serial in enumerate(serials, 1)})
        texts = "".join(str(part) for part in objects_in(rule))
        self.assertLessEqual(set(re.findall(r"\{#\w+\}", texts)), {"{#SNMPINDEX}", *rows[str(serials[0])]})
        # An item of an alarm has its severity, and once the alarm is cleared none, which makes it 0.
        prototype = rule["item_prototypes"][0]
        levels = [prototype["snmp_oid"].replace("{#SNMPINDEX}", index) for index in rows]
        self.assertEqual([self.value(agent, oid) for oid in levels], ["INTEGER: 2"] * 2)
        client.clear(serials[0])
        wait_until(lambda: self.value(agent, levels[0]).startswith("No Such Instance"), "the alarm's row gone")
        self.assertEqual([step["type"] for step in prototype["preprocessing"]], ["CHECK_NOT_SUPPORTED"])


@needs("snmptrapd", "perl")
class ZabbixTraps(ContribTest):
    def receiver(self, mib_text=False):
        """An snmptrapd that writes traps as Zabbix's receiver does."""
        output = self.folder / f"traps-{len(self.daemons)}.txt"
        environment = {"TALVIK_TRAP_FILE": str(output)}
        config = f'authCommunity log,execute public\nperl do "{WRITER}"\n'
        return self.keep(TrapDaemon(self.folder, config, mib_text, **environment)), output

    def traps_of(self, output, count):
        """What Zabbix matches: each trap from its header on."""
        def written():
            text = output.read_text() if output.exists() else ""
            traps = re.findall(r"^[\d:]{8} [\d/]{10} ZBXTRAP 127\.0\.0\.1\n.*?(?=^[\d:]{8} [\d/]{10} ZBXTRAP|\Z)", text,
                               re.MULTILINE | re.DOTALL)
            whole = [trap for trap in traps if "ReportingAlarmProductSN.0" in trap or "1.14.0" in trap or "3.14.0" in trap]
            return whole if len(whole) >= count else None

        return wait_until(written, f"{count} traps in {output.name}")

    def test_its_patterns_tell_traps_apart(self):
        agent = self.start()
        receivers = [(self.receiver(), V2C, None), (self.receiver(mib_text=True), V2C, None),
                     (self.receiver(), V2C, OWN_OID), (self.receiver(mib_text=True), V2C, OWN_OID),
                     (self.receiver(mib_text=True), V1, OWN_OID)]
        for index, ((daemon, _), version, kind) in enumerate(receivers, 1):
            self.add_receiver(agent, index, daemon.port, version, kind or 1)
        client = self.client()
        serial = client.raise_alarm(501010001, f"{PLACE},7,SN-7,1".encode())
        client.clear(serial)
        client.report_event(DISK_SLOW, b"A,1,2,3", level=INFO)
        client.report_event(DISK_SLOW, b"A,1,2,3", level=3)
        for index in range(1, len(receivers) + 1):
            client.test_trap(index)
        template = load()
        patterns = trap_patterns(template)
        severe = self.severity_pattern(template)
        for (_, output), version, kind in receivers:
            with self.subTest(output=output.name, version=version, kind=kind):
                traps = self.traps_of(output, 5)
                found = [[name for name, pattern in patterns.items() if pattern.search(trap)] for trap in traps]
                self.assertEqual(sorted(found), sorted([["Traps: alarms"]] * 2 + [["Traps: events"]] * 2 + [["Traps: tests"]]))
                events = [trap for trap in traps if patterns["Traps: events"].search(trap)]
                self.assertEqual([bool(severe.search(trap)) for trap in events], [False, True])

    @staticmethod
    def severity_pattern(template):
        """What the trigger about events looks for."""
        trigger, = (item["triggers"][0] for item in template["items"] if item["name"] == "Traps: events")
        return re.compile(re.search(r'"regexp","(.*)"\)', trigger["expression"]).group(1))


if __name__ == "__main__":
    unittest.main()
