"""contrib/grafana: a dashboard that any Grafana can take, for metrics that there are."""

import json
import re
import unittest

from contrib_support import CONTRIB, needs
from dashboard import DASHBOARD, expressions_in, load, metrics_in, panels_in
from mib import enumeration

PROMETHEUS = CONTRIB / "prometheus"
# What Prometheus and the exporter give of every target.
OF_EVERY_TARGET = {"up", "snmp_scrape_duration_seconds"}
DATA_SOURCE = {"type": "prometheus", "uid": "${datasource}"}


def known_metrics():
    """The names that the exporter's module and the rules make."""
    module = (PROMETHEUS / "snmp.yml").read_text()
    types = dict(re.findall(r"^  - name: (\w+)\n    oid: .*\n    type: (\w+)", module, re.MULTILINE))
    recorded = re.findall(r"- record: (\S+)", (PROMETHEUS / "talvik.rules.yml").read_text())
    return {name + "_info" if kind == "EnumAsInfo" else name for name, kind in types.items()} | set(recorded) | OF_EVERY_TARGET


def labels_in(expression):
    return set(re.findall(r'(\w+)\s*(?:=~|!~|!=|=)\s*"', expression))


class GrafanaDashboard(unittest.TestCase):
    def test_asks_for_metrics_that_there_are(self):
        expressions = expressions_in(load())
        self.assertGreaterEqual(len(expressions), 5)
        for expression in expressions:
            with self.subTest(expression=expression):
                self.assertNotEqual(metrics_in(expression), set())
                self.assertLessEqual(metrics_in(expression), known_metrics())

    def test_names_labels_that_there_are(self):
        module = (PROMETHEUS / "snmp.yml").read_text()
        known = set(re.findall(r"labelname: (\w+)", module)) | {"talvikAlarmLevel", "talvikAgentVersion", "job", "instance"}
        used = set().union(*(labels_in(expression) for expression in expressions_in(load())))
        used |= set(re.findall(r"\{\{(\w+)\}\}", DASHBOARD.read_text()))
        for panel in load()["panels"]:
            for transformation in panel.get("transformations", []):
                used |= set(transformation["options"]["renameByName"]) - {"Value"}
        self.assertLessEqual(used, known)
        self.assertIn("talvikAlarmLocation", used)

    def test_belongs_to_no_instance(self):
        dashboard = load()
        self.assertIsNone(dashboard["id"])
        self.assertNotIn("uid", dashboard)
        variables = {variable["name"]: variable for variable in dashboard["templating"]["list"]}
        self.assertEqual((variables["datasource"]["type"], variables["datasource"]["query"]), ("datasource", "prometheus"))
        parts = [*panels_in(dashboard), variables["instance"],
                 *(target for panel in panels_in(dashboard) for target in panel["targets"])]
        self.assertEqual([part["datasource"] for part in parts], [DATA_SOURCE] * len(parts))
        self.assertEqual(json.dumps(dashboard).count('"uid"'), len(parts))
        numbers = [panel["id"] for panel in dashboard["panels"]]
        self.assertEqual(len(set(numbers)), len(numbers))

    @needs("snmptranslate")
    def test_shows_every_state_of_the_agent_by_its_name(self):
        shown = {}
        for panel in panels_in(load()):
            for mapped in panel["fieldConfig"]["defaults"].get("mappings", []):
                shown[panel["targets"][0]["expr"].partition("{")[0]] = {
                    int(number): one["text"] for number, one in mapped["options"].items()}
        states = [f"talvikAgent{name}State" for name in ("Module", "Backend", "Master")] + ["talvikTopologyStatus"]
        self.assertEqual({name: shown[name] for name in states}, {name: enumeration(name) for name in states})

    def test_panels_do_not_overlap(self):
        places = [[panel["gridPos"][side] for side in "xywh"] for panel in load()["panels"]]
        cells = [(column, line) for x, y, w, h in places for column in range(x, x + w) for line in range(y, y + h)]
        self.assertEqual(len(set(cells)), len(cells))
        self.assertLess(max(column for column, _ in cells), 24)


if __name__ == "__main__":
    unittest.main()
