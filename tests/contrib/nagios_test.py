"""contrib/nagios: check_snmp and the plugin that is kept, called as the commands are defined."""

import os
import re
import shlex
import subprocess
import unittest

from contrib_support import AUTH, CONTRIB, INFO, LIMIT, MAJOR, MINOR, PRIV, ContribTest, filled_in, needs

PLUGINS, OURS = "/usr/lib/nagios/plugins", CONTRIB / "nagios"
OK, WARNING, CRITICAL, UNKNOWN = range(4)


@needs("snmpbulkwalk")
class Nagios(ContribTest):
    def check(self, name, agent, folder, address="127.0.0.1", auth=AUTH):
        """Runs a command as commands.cfg has it; gives its exit status and what it says."""
        line = re.search(rf"command_name +{name}\n +command_line +(.*)$", (OURS / "commands.cfg").read_text(),
                         re.MULTILINE).group(1)
        line = filled_in(line, **{"$USER1$": str(folder), "$HOSTADDRESS$": address, "$_HOSTTALVIK_PORT$": str(agent.port),
                                  "$_HOSTTALVIK_AUTH$": auth, "$_HOSTTALVIK_PRIV$": PRIV})
        client = str(self.folder / "client")
        done = subprocess.run(shlex.split(line), stdin=subprocess.DEVNULL, capture_output=True, text=True, timeout=LIMIT,
                              env=dict(os.environ, SNMPCONFPATH=client, SNMP_PERSISTENT_DIR=client, MIBS="", LC_ALL="C"))
        return done.returncode, done.stdout.strip()

    @needs(f"{PLUGINS}/check_snmp")
    def test_tells_whether_the_back_end_answers(self):
        agent = self.start_apart()
        self.assertEqual(self.check("check_talvik_backend", agent, PLUGINS), (OK, "SNMP OK - back end 1 | 'back end'=1;;1:1"))
        self.backend.kill()
        status, text = self.check("check_talvik_backend", agent, PLUGINS)
        self.assertEqual((status, text.split(" | ")[0]), (CRITICAL, "SNMP CRITICAL - back end *2*"))

    def test_counts_the_alarms(self):
        agent = self.start_apart()
        client = self.alarm_client()

        def found():
            status, text = self.check("check_talvik_alarms", agent, OURS)
            return status, text.removeprefix("TALVIK ").split(" | ")[0]

        self.assertEqual(found(), (OK, "OK - active alarms: none"))
        self.raise_disk(client, 1, INFO)
        self.assertEqual(found(), (OK, "OK - active alarms: 1 info"))
        minor = self.raise_disk(client, 2, MINOR)
        self.assertEqual(found(), (WARNING, "WARNING - active alarms: 1 minor, 1 info"))
        major = self.raise_disk(client, 3, MAJOR)
        self.assertEqual(self.check("check_talvik_alarms", agent, OURS),
                         (CRITICAL, "TALVIK CRITICAL - active alarms: 1 major, 1 minor, 1 info | "
                                    "critical=0 major=1 minor=1 warning=0 info=1"))
        for serial in (minor, major):
            client.clear(serial)
        self.assertEqual(found(), (OK, "OK - active alarms: 1 info"))
        self.backend.kill()
        self.assertEqual(found(), (UNKNOWN, "UNKNOWN - the back end does not answer, or the user's view hides it"))

    def test_says_what_hinders_it(self):
        agent = self.start()
        status, text = self.check("check_talvik_alarms", agent, OURS, auth="wrong-passphrase")
        self.assertEqual(status, UNKNOWN)
        self.assertIn("Authentication failure", text)


if __name__ == "__main__":
    unittest.main()
