"""contrib/nagios: check_snmp and the plugin that is kept, called as the commands are defined."""

import os
import re
import shlex
import subprocess
import unittest
from unittest import mock

from contrib_support import AUTH, CONTRIB, INFO, LIMIT, MAJOR, MINOR, PRIV, ContribTest, filled_in, needs, script
from talvik_e2e import wait_until

PLUGINS, OURS = "/usr/lib/nagios/plugins", CONTRIB / "nagios"
OK, WARNING, CRITICAL, UNKNOWN = range(4)


@needs("snmpbulkwalk")
class Nagios(ContribTest):
    def check(self, name, agent, folder, address="127.0.0.1", auth=AUTH, more=()):
        """Runs a command as commands.cfg has it; gives its exit status and what it says."""
        line = re.search(rf"command_name +{name}\n +command_line +(.*)$", (OURS / "commands.cfg").read_text(),
                         re.MULTILINE).group(1)
        line = filled_in(line, **{"$USER1$": str(folder), "$HOSTADDRESS$": address, "$_HOSTTALVIK_PORT$": str(agent.port),
                                  "$_HOSTTALVIK_AUTH$": auth, "$_HOSTTALVIK_PRIV$": PRIV})
        client = str(self.folder / "client")
        done = subprocess.run([*shlex.split(line), *more], stdin=subprocess.DEVNULL, capture_output=True, text=True,
                              timeout=LIMIT, env=dict(os.environ, SNMPCONFPATH=client, SNMP_PERSISTENT_DIR=client, MIBS="",
                                                      LC_ALL="C"))
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

    def test_tells_how_the_agent_is(self):
        agent = self.start_apart()

        def found():
            return self.check("check_talvik_agent", agent, OURS)

        wait_until(lambda: found()[0] == OK, "a back end that is up")
        client = self.alarm_client()
        self.add_receiver(agent, 1, self.trap_socket().port)
        self.raise_disk(client)
        status, text = wait_until(lambda: "TrapsSent=1c" in (now := found())[1] and now, "the trap counted")
        self.assertEqual(status, OK)
        self.assertRegex(text, r"^TALVIK OK - module loaded, back end up \| BackendFailures=0c Requests=[1-9]\d*c Errors=0c "
                               r"NotificationsTaken=1c TrapsSent=1c TrapsFailed=0c InformsGivenUp=0c TrapsWaiting=0$")
        self.backend.kill()
        status, text = wait_until(lambda: (now := found())[0] != OK and now, "a back end that is down")
        self.assertEqual((status, text.split(" | ")[0]), (CRITICAL, "TALVIK CRITICAL - module loaded, back end down"))

    def test_tells_that_the_module_is_missing(self):
        agent = self.start(module="/no/such/module.so", module_failure="continue",
                           backend=f"unix:{self.folder / 'nobody.sock'}")
        status, text = self.check("check_talvik_agent", agent, OURS)
        self.assertEqual((status, text.split(" | ")[0]), (CRITICAL, "TALVIK CRITICAL - module missing, back end unknown"))

    def test_counts_the_alarms_where_health_is_hidden(self):
        self.hide_health()
        agent = self.start()
        self.raise_disk(self.client())
        self.assertEqual(self.check("check_talvik_alarms", agent, OURS)[0], CRITICAL)
        self.assertEqual(self.check("check_talvik_agent", agent, OURS), (
            UNKNOWN, "TALVIK UNKNOWN - the agent's health is not there: the user's view hides it, or an AgentX master answers "
                     "for no agent"))

    def test_gives_an_agent_that_does_not_answer_no_more_than_its_limit(self):
        silent = self.trap_socket()
        for name in ("check_talvik_alarms", "check_talvik_agent"):
            with self.subTest(name):
                self.assertEqual(self.check(name, silent, OURS, more=["--limit", "0.5"]),
                                 (UNKNOWN, "TALVIK UNKNOWN - no answer, or not all of it, within 0.5 s"))

    def test_a_limit_is_a_number_of_seconds(self):
        silent = self.trap_socket()
        for more in (["--limit", "0"], ["--limit", "soon"], ["--limit", "nan"], ["--limit"]):
            with self.subTest(more):
                self.assertEqual(self.check("check_talvik_alarms", silent, OURS, more=more),
                                 (UNKNOWN, "TALVIK UNKNOWN - --limit takes a number of seconds greater than 0"))


class OneLimit(unittest.TestCase):
    def test_all_walks_together_have_the_time_of_the_check(self):
        plugin = script(OURS / "check_talvik_alarms")
        now, given = 1000.0, []

        def walk(command, timeout, **_):
            nonlocal now
            given.append(timeout)
            now += 4
            return subprocess.CompletedProcess(command, 0, f"{plugin.STATUS}.1 = INTEGER: 1\n", "")

        with mock.patch.object(plugin.time, "monotonic", lambda: now), mock.patch.object(plugin.subprocess, "run", walk):
            agent = plugin.Agent(["HOST"], 10)
            self.assertEqual(plugin.alarms(agent)[0], CRITICAL)  # what it takes for a critical alarm is the status
            self.assertEqual(given, [10, 6, 2])
            with self.assertRaisesRegex(RuntimeError, "within 10 s"):
                agent.column(plugin.STATUS)
        self.assertEqual(len(given), 3)
        self.assertLess(plugin.LIMIT, 60)  # Nagios' own


if __name__ == "__main__":
    unittest.main()
