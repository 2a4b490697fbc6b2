"""An agent with alarms and trap destinations, for the tests of the MIB against what is served."""

import json
import pathlib
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "e2e"))

from alarm_table import Alarm, AlarmTableTest  # noqa: E402
from notifications import ALARM, OWN_OID, V2C  # noqa: E402
from talvik_e2e import SOURCE  # noqa: E402

ALARMS = [Alarm(3), Alarm(7, disk=8, level=3)]


def definitions_in(catalogue):
    """Every alarm definition in a part of the catalogue."""
    if isinstance(catalogue, dict):
        if "eventID" in catalogue:
            yield catalogue
        catalogue = list(catalogue.values())
    if isinstance(catalogue, list):
        for part in catalogue:
            yield from definitions_in(part)


def id_without_oid():
    """The id of an alarm in the delivered catalogue whose definition has an empty OID."""
    catalogue = json.loads((SOURCE / "etc" / "alarm-definitions.json").read_text())
    return next(int(one["eventID"]) for one in definitions_in(catalogue) if one.get("alarmOid") == "")


class MibAgentTest(AlarmTableTest):
    """A test with an agent that has two active alarms and sends all it reports to one receiver, by both OIDs."""

    def start_with_receiver(self, port, **changes):
        agent = self.start_with(ALARMS, **changes)
        self.add_receiver(agent, 1, port, V2C, ALARM)
        self.add_receiver(agent, 2, port, V2C, OWN_OID)
        return agent
