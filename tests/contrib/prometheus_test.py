"""contrib/prometheus: the files as their programs read them, and what the exporter gives of an agent."""

import time
import unittest
import urllib.error

from contrib_support import DISK_SLOW, LIMIT, MIB_FOLDERS, MIBS, MINOR, PLACE, needs, run
from agentx_master import SNMPD, AgentxTest
from exporter import EXPORTER, PROMETHEUS, ExporterTest, get, labels_of
from talvik_e2e import wait_until

GENERATOR = "prometheus-snmp-generator"


class PrometheusFiles(unittest.TestCase):
    @needs(GENERATOR)
    def test_generator_makes_the_module_that_is_kept(self):
        made = run("sh", "-c", 'cd "$0" && exec prometheus-snmp-generator --fail-on-parse-errors generate -o /dev/stdout',
                   PROMETHEUS, MIBDIRS=MIB_FOLDERS, MIBS=MIBS)
        self.assertEqual(made, (PROMETHEUS / "snmp.yml").read_text())

    @needs("promtool")
    def test_prometheus_takes_the_configuration_and_the_rules(self):
        self.assertIn("14 rules found", run("promtool", "check", "config", PROMETHEUS / "prometheus.yml"))
        run("promtool", "test", "rules", PROMETHEUS / "talvik.rules_test.yml")


@needs(EXPORTER)
class PrometheusScrape(ExporterTest):
    def test_gives_the_alarms_with_their_texts(self):
        agent = self.start_apart()
        first, second = self.raise_disk(self.alarm_client()), self.alarm_client().raise_alarm(
            DISK_SLOW, 'D"A\\E,8,1,2'.encode(), level=MINOR, time=1700000000)
        self.start_exporter(agent)
        samples = self.scrape()
        self.assertEqual(labels_of(samples, "talvikAlarmLevel_info"), [
            {"talvikAlarmSerialNo": str(first), "talvikAlarmLevel": "major", "talvikAlarmNodeCode": "TALVIK-0001",
             "talvikAlarmTitle": "Disk failed", "talvikAlarmLocation": f"Enclosure {PLACE}, slot 7",
             "talvikAlarmId": "501010001"},
            {"talvikAlarmSerialNo": str(second), "talvikAlarmLevel": "minor", "talvikAlarmNodeCode": "TALVIK-0001",
             "talvikAlarmTitle": "Disk responds slowly", "talvikAlarmLocation": 'Enclosure D\\"A\\\\E, slot 8',
             "talvikAlarmId": "501010007"}])
        self.assertIn(1700000000, [value for name, _, value in samples if name == "talvikAlarmTime"])
        self.assertIn(("talvikTopologyStatus", {"talvikTopologyNodeIndex": "1", "talvikTopologyNodeCode": "TALVIK-0001",
                                                "talvikTopologyNodeName": "Array"}, 1.0), samples)
        # What the rules count on: a back end that is away leaves no alarms, and says so in the same scrape.
        self.backend.kill()
        wait_until(lambda: not labels_of(samples := self.scrape(), "talvikAlarmLevel_info")
                   and [2.0] == [value for name, _, value in samples if name == "talvikTopologyStatus"],
                   "a scrape without alarms that says that the back end is away")
        agent.kill()
        with self.assertRaises(urllib.error.HTTPError):
            get(self.url)

    def test_gives_the_health_of_the_agent(self):
        agent = self.start_apart()
        self.raise_disk(self.alarm_client())
        self.start_exporter(agent)
        wait_until(lambda: self.values("talvikAgentHandlerBuilt") == [1.0, 1.0], "the alarm at both handlers")
        samples = self.scrape()
        states = {name: value for name, labels, value in samples if not labels}
        self.assertEqual([states[f"talvikAgent{name}"] for name in ("ModuleState", "MasterState", "BackendState")], [1, 1, 2])
        self.assertEqual([states[f"talvikAgent{name}"] for name in (
            "Receivers", "NotificationsTaken", "TrapsSent", "TrapsFailed", "InformsAnswered", "InformsGivenUp",
            "TrapsWaiting", "BackendFailures", "Errors", "Sets")], [0, 1] + [0] * 8)
        self.assertGreater(states["talvikAgentBackendCommands"], 0)
        self.assertGreater(states["talvikAgentRequests"], 0)
        self.assertLess(abs(states["talvikAgentStarted"] - time.time()), 2 * LIMIT)
        version, = labels_of(samples, "talvikAgentVersion")
        self.assertRegex(version["talvikAgentVersion"], r"^\d+\.\d+\.\d+$")
        for name in ("Requests", "Sets", "Errors"):
            self.assertEqual([labels["talvikAgentObjectName"] for labels in labels_of(samples, f"talvikAgentObject{name}")],
                             ["talvikAlarmTable", "talvikClearAlarm", "talvikTopologyTable", "talvikTrapTable"])
        self.assertEqual({labels["talvikAgentHandlerNumber"]: labels["talvikAgentHandlerBase"]
                          for labels in labels_of(samples, "talvikAgentHandlerRefused")},
                         {"1": "1.3.6.1.4.1.99999.2.91.10.3.1.1", "2": "1.3.6.1.4.1.99999.2.251.20.1.3"})
        self.backend.kill()
        wait_until(lambda: self.values("talvikAgentBackendState") == [3.0], "a scrape that says that the back end is down")
        self.assertGreater(len(self.values("talvikAgentErrors")), 0)

    def test_gives_the_alarms_alone_where_health_is_hidden(self):
        self.hide_health()
        agent = self.start_apart()
        self.raise_disk(self.alarm_client())
        self.start_exporter(agent)
        samples = self.scrape()
        self.assertEqual(len(labels_of(samples, "talvikAlarmLevel_info")), 1)
        self.assertEqual([name for name, _, _ in samples if name.startswith("talvikAgent")], [])


@needs(EXPORTER, SNMPD)
class PrometheusScrapeOfAMaster(AgentxTest, ExporterTest):
    def test_tells_that_it_has_its_agent_and_that_it_has_lost_it(self):
        master = self.start_master(config=self.config.read_text())
        agent = self.start_subagent(master)
        self.start_exporter(master)
        self.assertEqual(self.values("talvikAgentMasterState"), [2.0])
        self.assertEqual(self.values("talvikTopologyStatus"), [1.0])
        agent.kill()
        # What TalvikAgentMasterLost counts on: the scrape does not fail.
        wait_until(lambda: not [name for name, _, _ in self.scrape() if name.startswith("talvik")],
                   "a scrape that finds nothing of the agent")


if __name__ == "__main__":
    unittest.main()
