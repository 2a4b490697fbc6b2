"""talvikctl trap lists and changes the trap destinations of a running agent."""

import json
import os
import subprocess
import unittest

from relay import Relay, is_set
from talvik_e2e import AUTH, CONFIG, LIMIT, PRIV, ROOT, TalvikTest, free_port, program

V1 = ["--snmp-version", "1", "--community", "writer"]
V2C = ["--snmp-version", "2c", "--community", "writer"]
READ_ONLY = ["--snmp-version", "2c", "--community", "reader"]
BLIND = f"""
view noTraps included {ROOT}.2.91.9
rwcommunity blind 127.0.0.1 -V noTraps
"""
CREDENTIALS = f"""defVersion 3
defSecurityName admin
defSecurityLevel authPriv
defAuthType SHA-256
defAuthPassphrase {AUTH}
defPrivType AES
defPrivPassphrase {PRIV}
"""


class LossyPath(Relay):
    """Loses the first answers to a SET of v2c."""

    def __init__(self, agent_port, loses=1):
        self.lost, self.loses, self.sets = 0, loses, False
        super().__init__(agent_port)

    def take_request(self, request):
        self.sets = is_set(request)
        super().take_request(request)

    def lets_through(self, answer):
        if not self.sets or self.lost == self.loses:
            return True
        self.lost += 1
        return False


class CtlTrap(TalvikTest):
    def setUp(self):
        self.config.write_text(CONFIG + BLIND)
        self.agent = self.start_agent()
        self.credentials = self.write("credentials.conf", CREDENTIALS)
        self.credentials.chmod(0o600)
        self.v3 = ["--credentials", str(self.credentials)]
        self.home = self.folder / "home"
        self.home.mkdir()

    def command(self, *words, port=None):
        return [*program("talvikctl"), "trap", *words, "--agent", f"udp:127.0.0.1:{port or self.agent.port}"]

    def environment(self):
        return dict(os.environ, HOME=str(self.home), SNMPCONFPATH=str(self.home), LC_ALL="C")

    def ctl(self, *words, status=0, port=None):
        """Runs a command, which must end with the status; returns standard output and error."""
        done = subprocess.run(self.command(*words, port=port), env=self.environment(), stdin=subprocess.DEVNULL,
                              capture_output=True, text=True, timeout=LIMIT)
        self.assertEqual(done.returncode, status, done.stdout + done.stderr)
        return done.stdout, done.stderr

    def rows(self):
        return json.loads(self.ctl("list", "--json", *V2C)[0])["destinations"]

    def refused(self, *words, status=1):
        out, error = self.ctl(*words, status=status)
        self.assertEqual(out, "")
        return error

    def test_manages_rows_with_every_version(self):
        for who in (V1, V2C, self.v3):
            with self.subTest(who=who[:2]):
                self.assertEqual(self.ctl("list", *who), ("no trap destinations\n", ""))
                self.assertEqual(self.ctl("add", "192.0.2.1", *who), ("1\n", ""))
                self.assertEqual(self.ctl("add", "::1", "--index", "7", "--port", "10162", "--version", "v3", "--type",
                                          "alarm-own-oid", "--user", "monitor", *who), ("7\n", ""))
                self.assertEqual(self.ctl("add", "192.0.2.2", *who), ("2\n", ""))
                self.ctl("modify", "7", "--port", "162", "--user", "--", *who)
                self.assertEqual(self.ctl("list", *who)[0].splitlines(), [
                    "INDEX  ADDRESS    PORT  VERSION  TYPE           USER  USABLE",
                    "1      192.0.2.1  162   v2c      alarm          --    192.0.2.1",
                    "2      192.0.2.2  162   v2c      alarm          --    192.0.2.2",
                    "7      ::1        162   v3       alarm-own-oid  --    ::1"])
                self.assertEqual(self.ctl("remove", "1", "2", "7", "7", *who)[0].count("removed"), 3)

    def test_prints_json_for_programs(self):
        self.assertEqual(json.loads(self.ctl("add", "nowhere.invalid", "--json", *V2C)[0])["index"], 1)
        self.assertEqual(self.rows(), [{"index": 1, "address": "nowhere.invalid", "port": 162, "version": "v2c",
                                        "versionCode": 2, "type": "alarm", "typeCode": 1, "user": "--",
                                        "usable": None}])
        self.assertIn("does not resolve", self.ctl("list", *V2C)[0])
        told = json.loads(self.ctl("remove", "5", "1", "--json", *V2C, status=1)[0])
        self.assertEqual((told["removed"], told["failed"][0]["index"]), ([1], 5))
        told = json.loads(self.ctl("modify", "1", "--port", "5", "--json", *V2C, status=1)[0])
        self.assertIn("there is no trap destination 1", told["reason"])

    def test_warns_of_a_row_that_nothing_can_be_sent_to(self):
        said = "nothing can be sent to trap destination {0} yet, as v3 needs a user; " \
               "name one with talvikctl trap modify {0} --user NAME"
        v3 = ("add", "192.0.2.1", "--version", "v3")
        self.assertEqual(self.ctl(*v3, *V2C), ("1\n", f"talvikctl: {said.format(1)}\n"))
        out, error = self.ctl(*v3, "--json", *V2C)
        self.assertEqual((json.loads(out)["warning"], error), (said.format(2), ""))
        self.assertNotIn("warning", json.loads(self.ctl(*v3, "--user", "me", "--json", *V2C)[0]))

    def test_never_creates_a_row_by_changing_it(self):
        for who in (V1, V2C, self.v3):
            with self.subTest(who=who[:2]):
                error = self.refused("modify", "3", "--address", "192.0.2.1", "--port", "162", *who)
                self.assertIn("shows no trap destination 3" if who is V1 else "there is no trap destination 3", error)
        self.assertEqual(self.rows(), [])

    def test_tells_an_unknown_row_from_a_table_that_is_not_shown(self):
        self.ctl("add", "192.0.2.1", *V2C)
        for who in (V1, V2C, self.v3):
            self.assertIn("there is no trap destination 3", self.refused("remove", "3", *who))
        for version, said in (("1", "shows no trap destination 1, and no other one; SNMPv1 does not tell"),
                              ("2c", "shows no table of trap destinations")):
            with self.subTest(version=version):
                self.assertIn(said, self.refused("remove", "1", "--snmp-version", version, "--community", "blind"))
        self.assertEqual(len(self.rows()), 1)

    def test_says_why_the_agent_refuses(self):
        self.ctl("add", "192.0.2.1", *V2C)
        for who in (V1, V2C):
            self.assertIn("trap destination 1 at", self.refused("add", "192.0.2.1", "--index", "1", *who))
            self.assertIn("at the type; give alarm", self.refused("add", "192.0.2.1", "--type", "5", *who))
        self.assertIn("wrongValue at the address; give an IPv4", self.refused("add", "a b", *V2C))
        for words in (["add", "192.0.2.1"], ["modify", "1", "--port", "5"], ["remove", "1"]):
            for who in (READ_ONLY, [*self.v3, "--snmp-user", "operator"]):
                self.assertRegex(self.refused(*words, *who), "noAccess at the .*; use a user or community that may")
        self.assertIn("SNMPv1 says no more", self.refused("remove", "1", "--snmp-version", "1", "--community", "reader"))
        self.assertEqual(len(self.rows()), 1)

    def test_says_what_is_wrong_with_the_credentials(self):
        self.assertIn("does not know the user", self.refused("list", *self.v3, "--snmp-user", "nobody"))
        self.assertIn("authentication failed", self.refused("list", *self.v3, "--auth-protocol", "SHA"))
        self.assertIn("community is right", self.refused("list", "--snmp-version", "2c", "--community", "wrong",
                                                         "--timeout", "200", status=3))
        self.credentials.chmod(0o644)
        self.assertIn("chmod 600", self.ctl("list", *self.v3, status=2)[1])

    def test_tells_that_nobody_answers(self):
        port = free_port()
        for who in (V2C, self.v3):
            _, error = self.ctl("list", *who, "--timeout", "100", port=port, status=3)
            self.assertIn("within 100 ms, asked 2 times; make sure that talvik-agentd runs", error)
        # For v3 the agent is asked who it is before anything is sent to it.
        for who, said in ((V2C, True), (self.v3, False)):
            _, error = self.ctl("add", "192.0.2.1", "--index", "1", *who, "--timeout", "100", port=port, status=3)
            self.assertEqual("may have been made nonetheless" in error, said, error)

    def test_takes_the_defaults_from_snmp_conf_and_leaves_nothing_at_home(self):
        (self.home / "snmp.conf").write_text(CREDENTIALS)
        self.assertEqual(self.ctl("add", "192.0.2.1"), ("1\n", ""))
        self.assertEqual([path.name for path in self.home.iterdir()], ["snmp.conf"])

    def test_knows_its_own_row_when_the_first_answer_is_lost(self):
        path = LossyPath(self.agent.port)
        self.addCleanup(path.close)
        self.assertEqual(self.ctl("add", "192.0.2.1", *V2C, "--timeout", "1000", port=path.port), ("1\n", ""))
        self.assertEqual(path.lost, 1)
        self.assertEqual([row["index"] for row in self.rows()], [1])

    def test_tells_that_a_change_without_an_answer_may_have_been_made(self):
        path = LossyPath(self.agent.port, loses=4)
        self.addCleanup(path.close)
        quick = [*V2C, "--timeout", "500"]
        _, error = self.ctl("add", "192.0.2.1", *quick, port=path.port, status=3)
        self.assertIn("asked 2 times; the change may have been made nonetheless, check with talvikctl trap list", error)
        self.assertEqual([row["index"] for row in self.rows()], [1])
        told = json.loads(self.ctl("remove", "1", "2", "--json", *quick, port=path.port, status=3)[0])
        self.assertIn("may have been made", told["failed"][0]["reason"])
        self.assertEqual((told["removed"], told["notTried"]), ([], [2]))
        self.assertEqual((self.rows(), path.lost), ([], 4))

    def test_gives_concurrent_adds_indexes_of_their_own(self):
        running = [subprocess.Popen(self.command("add", f"192.0.2.{number}", *V2C), env=self.environment(),
                                    stdout=subprocess.PIPE, text=True) for number in range(1, 9)]
        indexes = sorted(int(process.communicate(timeout=LIMIT)[0]) for process in running)
        self.assertEqual(indexes, list(range(1, 9)))
        self.assertEqual({row["address"] for row in self.rows()}, {f"192.0.2.{number}" for number in range(1, 9)})


if __name__ == "__main__":
    unittest.main()
