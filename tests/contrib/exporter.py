"""The exporter of contrib/prometheus beside an agent, and what it gives."""

import re
import urllib.request

from contrib_support import CONTRIB, LIMIT, ContribTest, filled_in
from talvik_e2e import free_port

PROMETHEUS = CONTRIB / "prometheus"
EXPORTER = "prometheus-snmp-exporter"
SAMPLE = re.compile(r"^(\w+)(?:\{(.*)\})? (\S+)$", re.MULTILINE)
LABEL = re.compile(r'(\w+)="((?:[^"\\]|\\.)*)"')


def get(url):
    with urllib.request.urlopen(url, timeout=LIMIT) as answer:
        return answer.read().decode()


def labels_of(samples, name):
    return [labels for found, labels, _ in samples if found == name]


class ExporterTest(ContribTest):
    """A test with an exporter that knows the agent's user."""

    def start_exporter(self, agent):
        module = self.write("snmp.yml", filled_in((PROMETHEUS / "snmp.yml").read_text()))
        self.exporter = f"127.0.0.1:{free_port()}"
        self.daemon("exporter", EXPORTER, f"--config.file={module}",
                    f"--web.listen-address={self.exporter}").wait_for_log("Listening on")
        self.url = f"http://{self.exporter}/snmp?module=talvik&target=127.0.0.1:{agent.port}"

    def scrape(self):
        """Name, labels and value of each sample."""
        return [(name, dict(LABEL.findall(labels)), float(value)) for name, labels, value in SAMPLE.findall(get(self.url))]

    def values(self, name):
        """Of each sample of a metric."""
        return [value for found, _, value in self.scrape() if found == name]
