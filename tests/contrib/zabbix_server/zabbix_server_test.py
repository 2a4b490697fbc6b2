#!/usr/bin/env python3
"""contrib/zabbix in Zabbix itself: the template is imported, and a server polls a running agent with it.

`./dev zabbix-test` installs what this takes and runs it. The server gets the template twice: as it is, and with short intervals.
"""

import pathlib
import re
import signal
import sys
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1]))

from contrib_support import DISK_SLOW, PLACE, ContribTest  # noqa: E402 (the path comes first)
from talvik_e2e import AUTH, PRIV, free_port, wait_until  # noqa: E402
from trap_daemon import TrapDaemon  # noqa: E402
from zabbix_site import Site  # noqa: E402
from zabbix_template import TEMPLATE, load  # noqa: E402

WRITER = pathlib.Path(__file__).resolve().parents[1] / "zabbix_trap_lines.pl"
LIMIT = 60  # seconds until the server has noticed something
PAUSE = 0.3  # seconds between two questions to the API
MINOR_DISK, MAJOR_DISK = 4, 5  # as alarms are raised
WARNING, AVERAGE, HIGH = 2, 3, 4  # severities of Zabbix
UNSUPPORTED = "1"
SNMP, SNMPV3 = {"version": 2, "community": "reader"}, {
    "version": 3, "securityname": "monitor", "securitylevel": 2, "authprotocol": 3, "authpassphrase": AUTH, "privprotocol": 1,
    "privpassphrase": PRIV}  # authPriv, SHA256, AES128

# What makes an operator's minutes a test's seconds; each must occur.
SHORTER = {r"delay: (1m|5m|1h)": "delay: 2s", r",3m\)": ",10s)", r",5m\)=0": ",10s)=0"}


def shortened(text):
    for pattern, replacement in SHORTER.items():
        text, count = re.subn(pattern, replacement, text)
        if not count:
            raise AssertionError(f"the template has no {pattern} any more")
    return text


def setUpModule():
    global site
    site = Site()
    unittest.addModuleCleanup(site.end)
    host, = site.call("host.get", output=["hostid"])  # the package's own, which polls this machine
    site.call("host.delete", [host["hostid"]])


class ZabbixServer(ContribTest):
    def setUp(self):
        super().setUp()
        site.import_template(TEMPLATE.read_text())
        site.import_template(shortened(TEMPLATE.read_text()))

    def template(self):
        found, = site.call("template.get", filter={"host": load()["name"]}, output=["templateid"])
        return found["templateid"]

    def host(self, agent, user=SNMP):
        """A host with the template, which the server polls from now on."""
        groups = site.call("hostgroup.get", output=["groupid"], limit=1)
        interface = {"type": 2, "main": 1, "useip": 1, "ip": "127.0.0.1", "dns": "", "port": str(agent.port),
                     "details": {"bulk": 1, **user}}
        host, = site.call("host.create", host=f"controller-{agent.port}", groups=groups, interfaces=[interface],
                          templates=[{"templateid": self.template()}], inventory_mode=1)["hostids"]
        self.addCleanup(site.call, "host.delete", [host])
        return host

    def items(self, host):
        """The host's items by key."""
        found = site.call("item.get", hostids=[host], webitems=True,
                          output=["key_", "name", "state", "error", "lastvalue", "lastclock", "type", "description"])
        return {item["key_"]: item for item in found}

    def problems(self, host):
        """Severity by name of what is wrong now."""
        found = site.call("problem.get", hostids=[host], output=["name", "severity"])
        return {problem["name"]: int(problem["severity"]) for problem in found}

    def wait(self, condition, what):
        return wait_until(condition, what, LIMIT, PAUSE)

    def wait_for_items(self, host, keys):
        """Waits until each of these items is supported and has a value; returns all items."""
        def missing():
            items = self.items(host)
            return {key: items[key]["error"] if key in items else "not there" for key in keys
                    if key not in items or items[key]["state"] == UNSUPPORTED or items[key]["lastclock"] == "0"}

        try:
            self.wait(lambda: not missing(), "values of all items")
        except AssertionError as error:
            raise AssertionError(f"{error}; without: {missing()}") from None
        return self.items(host)

    def wait_for_problem(self, host, name, severity):
        try:
            self.wait(lambda: self.problems(host).get(name) == severity, f'the problem "{name}"')
        except AssertionError as error:
            raise AssertionError(f"{error}; there are: {self.problems(host)}") from None

    def wait_for_end(self, host, name):
        self.wait(lambda: name not in self.problems(host), f'the end of the problem "{name}"')

    def test_the_template_is_imported_whole(self):
        site.import_template(TEMPLATE.read_text())
        expected, template = load(), self.template()
        items = site.call("item.get", templateids=[template], output=["key_", "delay"])
        self.assertEqual({item["key_"]: item["delay"] for item in items},
                         {item["key"]: item["delay"] for item in expected["items"]})
        rules = site.call("discoveryrule.get", templateids=[template], output=["key_"], selectItems=["key_"],
                          selectTriggers="count")
        self.assertEqual(
            {rule["key_"]: ({item["key_"] for item in rule["items"]}, int(rule["triggers"])) for rule in rules},
            {rule["key"]: ({item["key"] for item in rule["item_prototypes"]},
                           sum(len(item.get("trigger_prototypes", ())) for item in rule["item_prototypes"]))
             for rule in expected["discovery_rules"]})
        triggers = site.call("trigger.get", templateids=[template], output=["description"])
        self.assertEqual({trigger["description"] for trigger in triggers},
                         {trigger["name"] for item in expected["items"] for trigger in item.get("triggers", ())})

    def polled(self, user):
        """The items of a host once all that is polled has a value, with the handlers and objects discovered."""
        host = self.host(self.start(), user)
        polled = {item["key"] for item in load()["items"] if item["type"] != "SNMP_TRAP"}
        handlers = {f"talvik.agent.handler.{what}[{row}]" for what in ("built", "refused") for row in (1, 2)}
        objects = {f"talvik.agent.object.{what}[{row}]" for what in ("requests", "errors") for row in range(1, 5)}
        return host, self.wait_for_items(host, polled | handlers | objects)

    def test_every_item_has_a_value(self):
        host, items = self.polled(SNMP)
        values = {key: item["lastvalue"] for key, item in items.items()}
        expected = {"talvik.topology.status": "1", "talvik.topology.code": "TALVIK-0001", "zabbix[host,snmp,available]": "1",
                    "talvik.agent.module": "1", "talvik.agent.master": "1", "talvik.agent.backend": "1",
                    "talvik.agent.errors": "0", "talvik.agent.traps.failed": "0", "talvik.agent.traps.waiting": "0"}
        self.assertEqual({key: values[key] for key in expected}, expected)
        self.assertRegex(values["talvik.agent.version"], r"^\d+\.\d+\.\d+$")
        self.assertRegex(values["talvik.agent.started"], r"^\d{4}-\d+-\d+,\d+:\d+:\d+")
        self.assertEqual({items[f"talvik.agent.object.errors[{row}]"]["name"] for row in range(1, 5)},
                         {f"Agent object {name}: errors" for name in ("talvikTopologyTable", "talvikAlarmTable",
                                                                      "talvikClearAlarm", "talvikTrapTable")})
        self.assertIn("1.3.6.1.4.1.99999.2.251.20.1.3", items["talvik.agent.handler.built[2]"]["description"])
        inventory, = site.call("host.get", hostids=[host], output=["hostid"], selectInventory=["asset_tag"])
        self.assertEqual(inventory["inventory"]["asset_tag"], "TALVIK-0001")
        self.assertEqual(self.problems(host), {})

    def test_every_item_has_a_value_over_v3(self):
        host, _ = self.polled(SNMPV3)
        self.assertEqual(self.problems(host), {})

    def test_a_hidden_health_is_not_supported_and_leaves_the_rest(self):
        self.hide_health()
        host = self.host(self.start())
        serial = self.raise_disk(self.client(), place="DAE000")
        alarm = self.name(serial, "major", "DAE000", 7)
        self.wait_for_problem(host, alarm, HIGH)
        health = {item["key"] for item in load()["items"] if item["key"].startswith("talvik.agent.")}
        self.wait(lambda: {key for key, item in self.items(host).items() if item["state"] == UNSUPPORTED} == health,
                  "the items of the health not supported, and no other")
        self.assertEqual(self.problems(host), {alarm: HIGH})

    @staticmethod
    def name(serial, severity, place, slot):
        return f"Alarm {serial} ({severity}): Disk failed, Enclosure {place}, slot {slot}"

    def test_an_alarm_is_a_problem_until_it_is_cleared(self):
        host, client = self.host(self.start()), self.client()
        major = self.raise_disk(client, 7, MAJOR_DISK)
        minor = self.raise_disk(client, 8, MINOR_DISK, place="DAE000")
        first, second = self.name(major, "major", PLACE, 7), self.name(minor, "minor", "DAE000", 8)
        self.wait_for_problem(host, first, HIGH)
        self.wait_for_problem(host, second, AVERAGE)
        self.assertEqual(self.items(host)[f"talvik.alarm.level[{major}]"]["lastvalue"], "2")
        client.clear(major)
        self.wait_for_end(host, first)
        self.assertEqual(self.problems(host), {second: AVERAGE})

    def test_a_back_end_that_is_away_is_a_problem_and_ends_no_other(self):
        host = self.host(self.start_apart())
        serial = self.raise_disk(self.alarm_client(), place="DAE000")
        alarm, away = self.name(serial, "major", "DAE000", 7), "The management back end does not answer"
        self.wait_for_problem(host, alarm, HIGH)
        self.backend.kill()
        self.wait_for_problem(host, away, HIGH)
        # The alarm's item says 0 for longer than it takes to end a problem while the back end is there.
        level = self.items(host)[f"talvik.alarm.level[{serial}]"]["itemid"]

        def zeros():
            past = site.call("history.get", itemids=[level], history=3, output=["clock"], filter={"value": "0"})
            clocks = [int(one["clock"]) for one in past]
            return clocks and max(clocks) - min(clocks) > 12

        self.wait(zeros, "the alarm's item at 0 for long")
        self.assertEqual(self.problems(host).get(alarm), HIGH)
        self.start_backend(self.apart)
        self.wait_for_end(host, away)
        self.wait(lambda: self.items(host)[f"talvik.alarm.level[{serial}]"]["lastvalue"] == "2", "the alarm's severity again")
        self.assertEqual(self.problems(host).get(alarm), HIGH)

    def test_an_agent_that_is_away_is_a_problem(self):
        port = free_port()
        agent = self.start(port=port)
        host = self.host(agent)
        self.wait_for_items(host, ["talvik.agent.started", "zabbix[host,snmp,available]"])
        agent.stop()
        self.wait_for_problem(host, "The SNMP agent does not answer", HIGH)
        self.start(port=port)
        self.wait_for_problem(host, "The agent has started again", WARNING)
        self.wait_for_end(host, "The SNMP agent does not answer")
        self.wait_for_end(host, "The agent has started again")

    def test_an_agent_without_its_module_is_a_problem(self):
        host = self.host(self.start(module=self.folder / "missing.so", module_failure="continue"))
        self.wait_for_problem(host, "The agent runs without its module", HIGH)

    def test_traps_that_cannot_be_sent_are_a_problem(self):
        agent = self.start()
        host = self.host(agent)
        self.wait_for_items(host, ["talvik.agent.traps.failed"])
        self.add_receiver(agent, 1, free_port(), address="no-such-host.invalid")
        self.raise_disk(self.client())
        self.wait_for_problem(host, "The agent cannot send traps", AVERAGE)

    def test_traps_are_logged_by_kind(self):
        agent = self.start()
        host = self.host(agent)
        self.wait_for_items(host, ["talvik.topology.status"])  # the server knows the host
        daemon = self.keep(TrapDaemon(self.folder, f'authCommunity log,execute public\nperl do "{WRITER}"\n', mib_text=True,
                                      TALVIK_TRAP_FILE=str(site.traps)))
        self.add_receiver(agent, 1, daemon.port)
        logs = {item["name"]: item["itemid"] for item in self.items(host).values() if item["name"].startswith("Traps: ")}

        def logged():
            return {name: len(site.call("history.get", itemids=[item], history=2, output=["value"])) for name, item in logs.items()}

        client = self.client()
        client.report_event(DISK_SLOW, b"A,1,2,3", level=3)
        client.test_trap(1)
        self.wait(lambda: logged()["Traps: events"] and logged()["Traps: tests"], "the traps of an event and a test in their logs")
        client.clear(self.raise_disk(client, place="DAE000"))
        self.wait(lambda: logged()["Traps: alarms"] == 2, "the traps of an alarm in their log")
        self.assertEqual(logged(), {"Traps: alarms": 2, "Traps: events": 1, "Traps: tests": 1})
        self.wait_for_problem(host, "An event of severity warning or worse was reported", WARNING)


if __name__ == "__main__":
    signal.signal(signal.SIGTERM, signal.default_int_handler)  # for unittest any other exception is a failed test
    unittest.main()
