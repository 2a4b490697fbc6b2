"""contrib/prometheus with contrib/grafana: alarms become alerts in a running Prometheus."""

import json
import unittest
import urllib.parse

from contrib_support import PLACE, filled_in, needs
from dashboard import chosen, expressions_in, load, metrics_in
from exporter import EXPORTER, PROMETHEUS, ExporterTest, get
from talvik_e2e import free_port, wait_until


@needs(EXPORTER, "prometheus")
class PrometheusAlerts(ExporterTest):
    def test_alarms_become_alerts_and_stay_while_nobody_can_say(self):
        agent = self.start_apart()
        kept, cleared = (self.raise_disk(self.alarm_client(), number, place=PLACE + "x" * 300) for number in (1, 2))
        self.start_exporter(agent)
        self.start_prometheus(agent)
        self.wait_for_alerts({kept, cleared})
        title, location = next((alert["labels"]["talvikAlarmTitle"], alert["labels"]["talvikAlarmLocation"])
                               for alert in self.alerts())
        self.assertEqual((title, location), ("Disk failed", f"Enclosure {PLACE}{'x' * 300}"[:200] + "…"))
        self.assert_dashboard_is_served()
        self.assertEqual(self.query("talvikAgentTrapsFailed"), {(None,): 0.0})
        self.add_receiver(agent, 1, free_port(), version=3, user="nobody")  # whom the agent does not know
        self.alarm_client().clear(cleared)
        wait_until(lambda: "TalvikAgentTrapsFailed" in self.alert_names(), "an alert about traps", pause=0.1)
        self.wait_for_alerts({kept})
        self.assertEqual(self.query("talvik:alarms:count"), {("major",): 1.0})
        self.backend.kill()
        wait_until(lambda: self.query("talvikTopologyStatus") == {(None,): 2.0}, "a status of 2 in Prometheus")
        wait_until(lambda: self.query("talvikAlarmLevel_info") == {}, "no alarms in Prometheus")
        self.wait_for_rules()
        self.wait_for_alerts({kept})
        # Told once: of the health that says the same, the topology table's word is taken.
        self.assertEqual(self.query("talvikAgentBackendState"), {(None,): 3.0})
        self.assertEqual(self.alert_names(), {"TalvikAlarm", "TalvikAgentTrapsFailed", "TalvikBackendDown"})

    def assert_dashboard_is_served(self):
        names = set(self.api("label/__name__/values"))
        for expression in expressions_in(load()):
            with self.subTest(expression=expression):
                self.assertLessEqual(metrics_in(expression), names)
                wait_until(lambda: self.query(chosen(expression)) != {}, "a value")  # an increase takes two scrapes

    def start_prometheus(self, agent):
        self.prometheus = f"127.0.0.1:{free_port()}"
        text = filled_in((PROMETHEUS / "prometheus.yml").read_text(),
                         **{"192.0.2.20:1161": f"127.0.0.1:{agent.port}", "127.0.0.1:9116": self.exporter,
                            "scrape_interval: 60s": "scrape_interval: 1s", "scrape_timeout: 30s": "scrape_timeout: 1s",
                            "evaluation_interval: 60s": "evaluation_interval: 1s",
                            "- talvik.rules.yml": f"- {PROMETHEUS / 'talvik.rules.yml'}"})
        config = self.write("prometheus.yml", text)
        self.daemon("prometheus", "prometheus", f"--config.file={config}", f"--storage.tsdb.path={self.folder / 'tsdb'}",
                    f"--web.listen-address={self.prometheus}").wait_for_log("Server is ready to receive web requests")

    def api(self, path):
        return json.loads(get(f"http://{self.prometheus}/api/v1/{path}"))["data"]

    def query(self, expression):
        """Values by the severity that they are of."""
        found = self.api("query?" + urllib.parse.urlencode({"query": expression}))["result"]
        return {(one["metric"].get("talvikAlarmLevel"),): float(one["value"][1]) for one in found}

    def alerts(self):
        return [alert for alert in self.api("alerts")["alerts"] if alert["labels"]["alertname"] == "TalvikAlarm"]

    def alert_names(self):
        return {alert["labels"]["alertname"] for alert in self.api("alerts")["alerts"]}

    def wait_for_alerts(self, serials):
        def seen():
            firing = self.alerts()
            return {int(alert["labels"]["talvikAlarmSerialNo"]) for alert in firing} == serials and all(
                (alert["state"], alert["labels"]["severity"]) == ("firing", "major") for alert in firing)

        wait_until(seen, f"alerts for the alarms {serials}", pause=0.1)

    def wait_for_rules(self):
        """Waits until all rules were evaluated once more, beginning now."""
        for _ in range(2):
            before = self.last_evaluation()
            wait_until(lambda: self.last_evaluation() != before, "an evaluation of the rules", pause=0.1)

    def last_evaluation(self):
        return self.api("rules")["groups"][0]["lastEvaluation"]


if __name__ == "__main__":
    unittest.main()
