"""SIGHUP: what is read again while the agent runs, what is not, and what becomes of files that are wrong."""

import signal
import unittest

from agent_health import NEVER, HealthReader
from agentx_master import AgentxTest
from notifications import V3, NotificationTest, users
from talvik_e2e import (AUTH, BIN, CONFIG, EVERYTHING, HEALTH, OPERATOR, PRIV, READER, SOURCE, TABLE, WRITER, Daemon,
                        topology, v3, wait_until)
from trap_receivers import user_lines
from trap_table import TRAPS

ENDS = "stay as they are until a restart"
SECURITY_TO_GROUP = ".1.3.6.1.6.3.16.1.2.1"
LATE = ["-v2c", "-c", "late"]
LATE_LINE = "rocommunity late 127.0.0.1 -V talvik\n"


class ReloadTest(HealthReader, NotificationTest):
    def reload(self, agent):
        """What the agent says to SIGHUP."""
        before = len(agent.log())
        agent.send(signal.SIGHUP)
        wait_until(lambda: ENDS in agent.log()[before:], "the end of what SIGHUP does")
        return agent.log()[before:]

    def reload_with(self, agent, config):
        self.config.write_text(config)
        return self.reload(agent)

    def may_read(self, agent, user):
        result = self.tool("snmpget", agent, ["-t1", "-r0", *user], f"{TABLE}.1.1.1")
        return result.returncode == 0 and "STRING" in result.stdout


class Access(ReloadTest):
    def test_communities_and_views_are_taken_over(self):
        agent = self.start()
        self.assertTrue(self.may_read(agent, READER))
        said = self.reload_with(agent, CONFIG.replace("rocommunity reader", "rocommunity former") + LATE_LINE)
        self.assertIn(f"agent configuration {self.config}: access control taken over, users changed or new: 0", said)
        self.assertEqual([self.may_read(agent, user) for user in (READER, LATE, EVERYTHING, OPERATOR)],
                         [False, True, True, True])
        self.reload_with(agent, CONFIG.replace("view talvik included .1.3.6.1.4.1.99999\n",
                                               f"view talvik included {TRAPS}\n"))
        self.assertEqual([self.may_read(agent, user) for user in (READER, LATE, EVERYTHING, OPERATOR)],
                         [False, False, True, False])
        self.reload_with(agent, CONFIG)
        self.assertEqual([self.may_read(agent, user) for user in (READER, LATE, EVERYTHING, OPERATOR)],
                         [True, False, True, True])

    def test_users_are_taken_over_and_the_engine_stays_as_it_is(self):
        agent = self.start()
        engine = self.engine(agent)
        other = "another-passphrase"
        said = self.reload_with(agent, CONFIG.replace(f'operator SHA-256 "{AUTH}"', f'operator SHA-256 "{other}"')
                                + f'createUser late SHA-256 "{AUTH}" AES "{PRIV}"\nrouser late authPriv -V talvik\n')
        self.assertIn("access control taken over, users changed or new: 2", said)
        self.assertEqual([self.may_read(agent, user) for user in (OPERATOR, v3("operator", auth=other), v3("late"))],
                         [False, True, True])
        self.assertEqual(self.engine(agent), engine)
        agent.stop()
        again = self.start()
        self.assertTrue(self.may_read(again, v3("operator", auth=other)))
        self.assertEqual(self.engine(again), (engine[0], engine[1] + 1))

    def test_unchanged_file_changes_nothing(self):
        agent = self.start()
        engine = self.engine(agent)
        for _ in range(20):
            said = self.reload(agent)
        self.assertIn("access control unchanged, users changed or new: 0", said)
        self.assertTrue(self.may_read(agent, OPERATOR))
        self.assertEqual(self.engine(agent), engine)

    def test_wrong_file_leaves_all_as_it_was(self):
        agent = self.start()
        for wrong, reason in (("access nobody \"\" usm nonsense exact all none none\n",
                               "talvik-agentd.conf: line 17: Error: bad security level"),
                              ("view talvik sideways .1\n", "TYPE must be included/excluded"),
                              ('createUser short SHA-256 "abc"\n', "createUser short: "),
                              (f'createUser strange SHA-333 "{AUTH}"\n', "createUser strange: ")):
            with self.subTest(wrong=wrong):
                said = self.reload_with(agent, CONFIG.replace("rocommunity reader", "rocommunity former") + LATE_LINE
                                        + wrong)
                errors = [line for line in said.splitlines() if " error host SIGHUP: agent configuration" in line]
                self.assertEqual(len(errors), 1, said)
                self.assertIn(reason, errors[0])
                self.assertIn("access control and users stay as they were", errors[0])
                allowed = [self.may_read(agent, user) for user in (READER, LATE, OPERATOR, v3("admin"))]
                self.assertEqual(allowed, [True, False, True, True])
        self.config.unlink()
        self.assertIn("cannot be read; access control and users stay", self.reload(agent))
        self.assertTrue(self.may_read(agent, READER))
        self.reload_with(agent, CONFIG + LATE_LINE)
        self.assertTrue(self.may_read(agent, LATE))

    def test_user_of_the_trap_settings_is_no_user_of_the_agent(self):
        agent = self.start()
        self.add_receiver(agent, 1, 10162, version=V3, user="trapuser")
        self.wait_for_status(1, lambda status: status.state == "ok", "the receiver known")
        with self.client() as client:
            client.test_trap(1)
        said = self.reload_with(agent, CONFIG + f'createUser trapuser SHA-256 "{AUTH}" AES "{PRIV}"\n')
        self.assertIn('user "trapuser" is one of the trap settings already', said)

    def test_v3_traps_have_the_new_passphrase_of_the_agents_own_user(self):
        agent = self.start()
        other = "another-passphrase"
        receiver = self.snmptrapd(user_lines("operator", self.engine(agent)[0], auth=other))
        self.reload_with(agent, CONFIG.replace(f'operator SHA-256 "{AUTH}"', f'operator SHA-256 "{other}"'))
        self.add_receiver(agent, 1, receiver.port, version=V3, user="operator")
        with self.client() as client:
            wait_until(lambda: 1 in client.receivers(), "the receiver known")
            client.test_trap(1)
        receiver.wait_for(1)


    def test_what_managers_wrote_into_the_access_control_is_kept(self):
        agent = self.start()
        group = f"{SECURITY_TO_GROUP}.3.2.4.104.111.115.116"  # of "host", v2c
        self.set(agent, (group, "s", "guests"), (group.replace(".1.3.2.4.", ".1.5.2.4."), "i", 4))
        for config in (CONFIG + LATE_LINE, CONFIG):
            self.assertIn("taken over", self.reload_with(agent, config))
            self.assertEqual(self.lines("snmpget", agent, WRITER, group), [f'{group} = STRING: "guests"'])


class Others(ReloadTest):
    def test_what_takes_a_restart_is_said(self):
        device = self.write("device.xml", (SOURCE / "etc" / "talvik-device.xml").read_text())
        agent = self.start(device=device)
        said = self.reload_with(agent, CONFIG + "agentAddress udp:127.0.0.1:1\nsysLocation cellar\n")
        for word in ("agentaddress", "syslocation"):
            self.assertIn(f"{word} has changed; it takes effect at the next start", said)
        self.assertIn(f"SIGHUP: {device}: unchanged", said)
        for name in ("libSnmpTalvikMibModule.so", "KEL-TALVIK-MIB.json", "alarm-definitions.json",
                     "alarm-enumerations.json"):
            self.assertRegex(said, rf"SIGHUP: \S*{name}: unchanged")
        device.write_text(device.read_text() + "\n")
        said = self.reload(agent)
        self.assertIn(f"SIGHUP: {device}: has changed; it is read at the start only, restart the agent", said)
        self.assertTrue(self.may_read(agent, READER))

    def test_trap_settings_are_read(self):
        agent = self.start()
        self.assertIn(f"trap settings {self.settings}: read again", self.reload(agent))
        self.settings.write_text("{ nonsense")
        self.assertIn("the former settings stay in use", self.reload(agent))
        self.write_settings(users=users())
        self.assertIn(f"trap settings {self.settings}: read again", self.reload(agent))
        agent.stop()
        said = self.reload(self.start_agent(trap_settings="/no/such"))
        self.assertIn("there is no such file, the defaults hold", said)

    def test_health_says_when(self):
        agent = self.start()
        when = [f"{HEALTH}.1.3.0"]
        self.assertIn(NEVER, self.lines("snmpget", agent, EVERYTHING, *when)[0])
        self.reload(agent)
        self.assertNotIn(NEVER, self.lines("snmpget", agent, EVERYTHING, *when)[0])

    def test_requests_and_changes_go_on(self):
        agent = self.start()
        self.add_receiver(agent, 1, 10162)
        self.reload_with(agent, CONFIG + LATE_LINE)
        self.assertEqual(self.walk(agent, LATE, TABLE), topology())
        self.add_receiver(agent, 2, 10162)
        self.assertEqual(len(self.walk(agent, LATE, TRAPS)), 16)


class LogFile(ReloadTest):
    def test_log_file_is_opened_anew(self):
        log = self.folder / "agent-file.log"
        agent = self.start(log_file=log)
        moved = self.folder / "agent-file.log.1"
        log.rename(moved)
        self.reload(agent)
        self.assertIn(f"SIGHUP: log file {log}: opened anew", log.read_text())
        self.assertNotIn("SIGHUP", moved.read_text())
        agent.stop()
        self.assertIn("ending on SIGTERM", log.read_text())

    def test_log_file_that_cannot_be_opened_stays_the_former(self):
        log = self.folder / "logs" / "agent-file.log"
        log.parent.mkdir()
        agent = self.start(log_file=log)
        moved = self.folder / "agent-file.log.1"
        log.rename(moved)
        log.mkdir()
        self.assertIn("lines go on to the file that was open", self.reload(agent))
        self.assertIn("lines go on to the file that was open", moved.read_text())

    def test_back_end_opens_its_log_file_anew(self):
        log, path = self.folder / "backend-file.log", self.folder / "backend.sock"
        backend = self.keep(Daemon(self.folder, "backendd", [BIN / "talvik-backendd", "--socket", path, "--device",
                                                             SOURCE / "etc" / "talvik-device.xml", "--state-dir",
                                                             self.folder / "backend-state", "--log-file", log]))
        backend.wait_for_log("ready, listening on")
        log.rename(self.folder / "moved")
        backend.send(signal.SIGHUP)
        wait_until(lambda: log.exists() and "opened anew" in log.read_text(), "the new log file")
        with self.client(path) as client:
            client.raise_alarm(501010001, b"0,7,S,1")
        self.assertEqual(backend.stop(), 0)
        self.assertIn("stopped by a signal", log.read_text())


class UnderMaster(AgentxTest):
    def test_access_control_is_the_masters(self):
        master = self.start_master()
        agent = self.start_subagent(master)
        self.config.write_text(CONFIG + LATE_LINE)
        agent.send(signal.SIGHUP)
        agent.wait_for_log("access control is the AgentX master's, users changed or new: 0")
        agent.wait_for_log(ENDS)
        self.assertEqual(self.walk(master, READER, TABLE), topology())


if __name__ == "__main__":
    unittest.main()
