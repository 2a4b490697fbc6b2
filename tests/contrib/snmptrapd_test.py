"""contrib/snmptrapd: the stock receiver takes the agent's notifications, and the handler writes a line for each."""

import json
import re
import subprocess
import sys
import unittest

from contrib_support import CONTRIB, DISK_SLOW, INFO, PLACE, ContribTest, filled_in, needs
from notifications import DISK_ADVICE, OWN_OID, TRAP_USER, V1, V2C, V3, users
from talvik_e2e import LIMIT, wait_until
from trap_daemon import TrapDaemon

CONFIG = (CONTRIB / "snmptrapd" / "snmptrapd.conf").read_text()
HANDLER = CONTRIB / "snmptrapd" / "talvik-trap-handler"
MOMENT, MOMENT_SHOWN = 1700000000, "2023-11-15T03:43:20+05:30"
HEXADECIMAL = ("-On", "-Ox")


@needs("snmptrapd")
class SnmptrapdHandler(ContribTest):
    def receiver(self, agent, *options, mib_text=False):
        """An snmptrapd with the configuration that is kept, and the file that its handler appends to."""
        engine_id = re.search("SNMP engine ID ([0-9a-f]+), boots", agent.log()).group(1)
        output = self.folder / f"alarms-{len(self.daemons)}.json"
        config = filled_in(CONFIG, **{"FILL-IN-COMMUNITY": "public", "192.0.2.20": "127.0.0.1",
                                      "FILL-IN-ENGINE-ID": engine_id,
                                      "/usr/local/bin/talvik-trap-handler": str(HANDLER),
                                      "/var/lib/snmp/talvik-alarms.json": str(output)})
        return self.keep(TrapDaemon(self.folder, config, mib_text, options)), output

    def lines_of(self, output, count):
        def written():
            text = output.read_text() if output.exists() else ""
            return text if text.count("\n") >= count else None

        return [json.loads(line) for line in wait_until(written, f"{count} lines in {output.name}").splitlines()]

    def expected(self, serial, category, kind="alarm"):
        return {"notification": kind, "category": category, "severity": "major", "serial": serial, "id": "501010001",
                "time": MOMENT_SHOWN, "node": "TALVIK-0001", "title": "Disk failed",
                "location": f"Enclosure {PLACE}\"\\, slot 7", "advice": DISK_ADVICE, "product": "2102350TLV10H7000042",
                "detail": f"Disk 7 in enclosure {PLACE}\"\\ (serial number SN-7) has failed: too many media errors."}

    def test_writes_a_line_for_each_notification_of_every_version(self):
        agent = self.start()
        trap, own, v1 = self.receiver(agent), self.receiver(agent, mib_text=True), self.receiver(agent, *HEXADECIMAL)
        v3, inform = self.receiver(agent), self.receiver(agent, mib_text=True)
        self.write_settings(users=users(), receivers=[{"address": "127.0.0.1", "port": inform[0].port, "inform": True,
                                                       "timeoutMs": 10000}])
        self.add_receiver(agent, 1, trap[0].port, V2C)
        self.add_receiver(agent, 2, own[0].port, V2C, OWN_OID)
        self.add_receiver(agent, 3, v1[0].port, V1, OWN_OID)
        self.add_receiver(agent, 4, v3[0].port, V3, user=TRAP_USER)
        self.add_receiver(agent, 5, inform[0].port, V3, user=TRAP_USER)
        client = self.client()
        serial = client.raise_alarm(501010001, f'{PLACE}"\\,7,SN-7,1'.encode(), time=MOMENT)
        for (_, output), oid in ((trap, "91.10.2.1.0.1"), (own, "251.20.1.2.2.1.1.1"), (v1, "251.20.1.2.2.1.1.0.1"),
                                 (v3, "91.10.2.1.0.1"), (inform, "91.10.2.1.0.1")):
            with self.subTest(oid=oid, output=output.name):
                line = self.lines_of(output, 1)[0]
                self.assertRegex(line.pop("received"), r"^\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d[+-]\d\d:\d\d$")
                self.assertEqual(line, {**self.expected(serial, "fault"), "from": "127.0.0.1",
                                        "oid": f"1.3.6.1.4.1.99999.2.{oid}"})
        client.clear(serial)
        client.report_event(DISK_SLOW, b"A,1,2,3", level=INFO)
        client.test_trap(1)
        found = [self.summary(line) for line in self.lines_of(trap[1], 4)]
        self.assertEqual(sorted(found), sorted([
            ("alarm", "fault", "major", serial, "Disk failed"), ("alarm", "clear", "major", serial, "Disk failed"),
            ("alarm", "event", "info", serial + 1, "Disk responds slowly"), ("test", "event", "info", 0, "Test trap")]))

    @staticmethod
    def summary(line):
        return line["notification"], line["category"], line["severity"], line["serial"], line["title"]

    def test_tells_when_the_agent_starts(self):
        agent = self.start()
        (first, second) = self.receiver(agent), self.receiver(agent, mib_text=True)
        for index, (daemon, _) in enumerate((first, second), 1):
            self.add_receiver(agent, index, daemon.port)
        self.assertEqual(agent.stop(), 0)
        self.start()
        for _, output in (first, second):
            self.assertIn(self.lines_of(output, 1)[0]["notification"], ("coldStart", "warmStart"))

    def test_takes_nothing_of_strangers(self):
        agent = self.start()
        daemon, output = self.receiver(agent)
        oid = "1.3.6.1.4.1.99999.2.91.10.2.1.0.1"
        for community in ("private", "public"):
            self.snmptrap("-v2c", "-c", community, daemon, oid)
        # The second is taken, though it says nothing, and by then the first has been refused.
        self.assertEqual([line["notification"] for line in self.lines_of(output, 1)], ["alarm"])

    def snmptrap(self, *parts):
        *options, daemon, oid = parts
        done = subprocess.run(["snmptrap", *options, f"127.0.0.1:{daemon.port}", "", oid], capture_output=True, text=True,
                              timeout=LIMIT)
        self.assertEqual(done.returncode, 0, done.stderr)

    def test_says_what_it_cannot_read(self):
        for text, reason in (("a\nb\n", "names no notification"), ("", "names no notification")):
            done = subprocess.run([sys.executable, "-B", HANDLER, self.folder / "out"], input=text, capture_output=True,
                                  text=True, timeout=LIMIT)
            self.assertEqual(done.returncode, 1)
            self.assertIn(reason, done.stderr)


if __name__ == "__main__":
    unittest.main()
