"""contrib/net-snmp: the stock tools with the snmp.conf that is kept, asked by name as its users."""

import os
import re
import subprocess
import unittest

from contrib_support import (AUTH, CONTRIB, FILL_IN_AUTH, FILL_IN_PRIV, LIMIT, MIB_FOLDERS, PLACE, PRIV, ContribTest,
                             filled_in, needs)


@needs("snmptable", "snmptranslate")
class NetSnmp(ContribTest):
    def setUp(self):
        super().setUp()
        (self.folder / "home" / "cert_indexes").mkdir(parents=True)  # the tools tell when they make it
        self.write("home/snmp.conf", filled_in((CONTRIB / "net-snmp" / "snmp.conf").read_text(),
                                               **{FILL_IN_AUTH: AUTH, FILL_IN_PRIV: PRIV}))

    def ask(self, name, *arguments, status=0):
        """What a tool says that finds snmp.conf and the MIB, and nothing else."""
        home = str(self.folder / "home")
        environment = {name: value for name, value in os.environ.items() if name not in ("MIBS", "SNMP_PERSISTENT_FILE")}
        environment.update(SNMPCONFPATH=home, SNMP_PERSISTENT_DIR=home, MIBDIRS=MIB_FOLDERS, LC_ALL="C.UTF-8")
        done = subprocess.run([name, *map(str, arguments)], env=environment, stdin=subprocess.DEVNULL,
                              capture_output=True, text=True, timeout=LIMIT)
        self.assertEqual(done.returncode, status, done.stdout + done.stderr)
        return done.stdout + done.stderr

    def test_names_are_known(self):
        self.assertEqual(self.ask("snmptranslate", "-On", "KEL-TALVIK-MIB::talvikAlarmTitle.7"),
                         ".1.3.6.1.4.1.99999.2.91.10.1.1.1.4.7\n")
        self.assertEqual(self.ask("snmptranslate", ".1.3.6.1.4.1.99999.2.91.10.2.1.0.1"), "KEL-TALVIK-MIB::talvikAlarm\n")
        self.assertEqual(self.ask("snmptranslate", "-On", "TALVIK-AGENT-MIB::talvikAgentBackendState.0"),
                         ".1.3.6.1.4.1.99999.2.91.20.1.8.0\n")

    def test_shows_the_alarms_and_clears_one(self):
        agent = self.start()
        serial = self.raise_disk(self.client())
        where = f"127.0.0.1:{agent.port}"
        heading, row = self.ask("snmptable", "-Cf", "|", where, "talvikAlarmTable").strip().splitlines()[-2:]
        shown = dict(zip(heading.split("|"), row.split("|")))
        self.assertEqual([shown[f"talvikAlarm{name}"] for name in ("Title", "Location", "Level", "Category", "SerialNo")],
                         ["Disk failed", f"Enclosure {PLACE}, slot 7", "major", "fault", str(serial)])
        # Users of their own for reading and for trap receivers may not clear; the operator may, and nothing else.
        for user in ("monitor", "receivers"):
            self.assertIn("noAccess", self.ask("snmpset", "-u", user, where, "talvikClearAlarm.0", "u", serial, status=2))
        port = ("talvikTrapPort.1", "u", 162, "talvikTrapAddress.1", "s", "192.0.2.1", "talvikTrapRowStatus.1", "i",
                "createAndGo")
        self.assertIn("noAccess", self.ask("snmpset", where, *port, status=2))
        self.ask("snmpset", "-u", "receivers", where, *port)
        self.assertIn("192.0.2.1", self.ask("snmptable", "-u", "monitor", where, "talvikTrapTable"))
        self.ask("snmpset", where, "talvikClearAlarm.0", "u", serial)
        self.assertIn("No Such Instance", self.ask("snmpget", where, f"talvikAlarmTitle.{serial}"))

    def test_examples_of_the_readme_work(self):
        agent = self.start()
        self.raise_disk(self.client())
        text = (CONTRIB / "net-snmp" / "README.md").read_text()
        examples = re.findall(r"^    (snmp\w+ .*)$", text, re.MULTILINE)
        self.assertGreaterEqual(len(examples), 4)
        for example in examples:
            with self.subTest(example=example):
                name, *arguments = example.replace("HOST:1161", f"127.0.0.1:{agent.port}").split()
                told = self.ask(name, *arguments)
                self.assertRegex(told, "(KEL-TALVIK|TALVIK-AGENT)-MIB")
                self.assertNotRegex(told, "No Such|[Nn]o entries")

    def test_health_can_be_hidden_as_users_conf_says(self):
        config = self.config.read_text()
        hiding, = re.findall(r"^#(view talvikView +excluded .*\n)", config, re.MULTILINE)
        self.config.write_text(config.replace("#" + hiding, hiding))
        where = f"127.0.0.1:{self.start().port}"
        self.assertIn("No Such Object", self.ask("snmpget", where, "talvikAgentVersion.0"))
        self.assertIn("online", self.ask("snmpwalk", where, "talvikTopologyStatus"))


if __name__ == "__main__":
    unittest.main()
