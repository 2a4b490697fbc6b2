"""A master that comes, goes and hangs, and a back end that does; the agent goes on through all of it."""

import signal
import socket
import subprocess
import unittest

from agentx_master import REGISTER, RESPONSE, AgentxTest, Forgetful
from alarm_table import ALARMS
from fake_backend import FakeBackend
from notifications import ALARM_TRAP, DISK_FAILED, disk
from talvik_e2e import (BIN, CLEAR_ALARM_LINE, CONFIG, EVERYTHING, HEALTH, LIMIT, READER, ROOT, TABLE, free_port, topology,
                        wait_until)
from trap_table import TRAPS, Destination, create, walk_of

SYS_DESCR = ".1.3.6.1.2.1.1.1.0"
DESCRIPTION = f"{SYS_DESCR} = STRING: \"end-to-end test\""


class AgentxMaster(AgentxTest):
    def serves(self, master):
        result = self.tool("snmpwalk", master, READER, TABLE)
        return result.stdout.splitlines() == topology()

    def test_master_may_come_later_and_come_back(self):
        port = free_port()
        master = self.start_master(port=port)
        master.kill()
        master.socket.unlink()
        agent = self.start_subagent(master, connected=False)
        agent.wait_for_log("cannot be reached: No such file or directory; nobody can ask this agent until")
        for times in (1, 2, 3):
            master = self.start_master(port=port)
            wait_until(lambda: self.connections(agent) == times, "the agent connected")
            wait_until(lambda: self.serves(master), "the topology table served")
            master.kill()
            wait_until(lambda: agent.log().count("cannot be reached: it has ended the session") == times,
                       "that it has gone")
        self.assertEqual(agent.stop(), 0)
        self.assertNotIn("not reconnecting", agent.log())

    def test_hung_master_holds_nothing_up(self):
        master = self.start_master()
        self.keep_alarms([])
        agent = self.start_subagent(master)
        receiver = self.trap_socket()
        self.add_receiver(master, 1, receiver.port)
        master.send(signal.SIGSTOP)
        with self.client() as client:
            client.raise_alarm(DISK_FAILED, disk(7))
        wait_until(lambda: any(one.oid == ALARM_TRAP for one in receiver.notifications()), "the alarm's trap")
        self.assertEqual(agent.stop(), 0)

    def test_restarted_agent_is_served_again(self):
        master = self.start_master()
        for _ in range(3):
            agent = self.start_subagent(master)
            wait_until(lambda: self.serves(master), "the topology table served")
            agent.kill()
            wait_until(lambda: not self.serves(master), "the table gone with the agent")
        self.assertEqual(self.lines("snmpget", master, EVERYTHING, SYS_DESCR), [DESCRIPTION])

    def test_second_agent_says_that_it_is_not_served_and_takes_over_from_the_first(self):
        master = self.start_master()
        first = self.start_subagent(master, state_dir=self.folder / "first")
        second = self.start_subagent(master, connected=False, state_dir=self.folder / "second",
                                     backend=f"unix:{self.folder / 'none'}")
        refused = ("refuses 5 of the 5 subtrees of this agent (registering pdu failed: 263!), so nobody can ask this agent "
                   "for them; if another subagent serves them, end that one")
        second.wait_for_log(refused)
        self.assertEqual(self.walk(master, READER, TABLE), topology())  # the first one's, whose back end answers
        tries = master.log().count("duplicate registration")
        wait_until(lambda: master.log().count("duplicate registration") >= tries + 2, "further tries")
        first.stop()
        second.wait_for_log(": connected, requests come through it")
        self.assertEqual(self.walk(master, READER, TABLE), topology(2))  # the second one's, without a back end
        self.assertEqual(second.log().count("refuses"), 1, second.log())
        self.assertIn(f"{HEALTH}.1.6.0 = INTEGER: 2", self.lines("snmpget", master, EVERYTHING, f"{HEALTH}.1.6.0"))
        self.assertEqual(second.stop(), 0)

    def test_lost_registrations_are_made_again_in_a_session_of_their_own(self):
        for loses in (REGISTER, RESPONSE):
            with self.subTest(loses=loses):
                master = self.start_master()
                between = Forgetful(self.folder, master, loses)
                self.addCleanup(between.close)
                agent = self.start_subagent(master, connected=False, agentx=str(between.path))
                wait_until(lambda: sum(between.lost) >= 2, "another try")
                self.assertLessEqual(max(between.lost), 1)  # nothing waits after the first one in a session
                self.assertEqual(self.connections(agent), 0)
                between.loses = None
                agent.wait_for_log(": connected, requests come through it")
                wait_until(lambda: self.serves(master), "the topology table served")
                self.assertEqual(agent.log().count("cannot be reached: it does not answer whether it takes"), 1, agent.log())
                self.assertNotIn("refuses", agent.log())
                self.assertEqual(agent.stop(), 0)
                wait_until(lambda: not self.serves(master), "the table gone with the agent")
                self.assertEqual(between.withdrawn, 0)  # a hung master would take its time over each
                between.close()
                between.path.unlink()
                master.stop()

    def test_master_over_tcp(self):
        with socket.socket() as probe:
            probe.bind(("127.0.0.1", 0))
            address = f"tcp:127.0.0.1:{probe.getsockname()[1]}"
        master = self.start_master(address=address)
        self.start_subagent(master)
        wait_until(lambda: self.serves(master), "the topology table served")


class AgentxBackend(AgentxTest):
    def start_with_backend(self, master_config="", **changes):
        self.path = self.folder / "backend.sock"
        self.master = self.start_master(config=CONFIG + master_config)
        return self.start_subagent(self.master, backend=f"unix:{self.path}", **changes)

    def error_of_table(self):
        with self.manager(self.master, "reader") as manager:
            return manager.get_next(ALARMS).error

    def assert_others_go_on(self):
        self.assertEqual(self.lines("snmpget", self.master, EVERYTHING, SYS_DESCR), [DESCRIPTION])
        self.assertEqual(self.walk(self.master, READER, TABLE), topology(2))
        behind = f"{ROOT}.2.91.9.2"  # from where the master goes on with the table of alarms
        self.assertEqual(self.lines("snmpgetnext", self.master, READER, behind), [CLEAR_ALARM_LINE])
        self.set(self.master, *create(5))
        self.assertEqual(self.walk(self.master, READER, TRAPS), walk_of(Destination(5)))

    def test_absent_back_end(self):
        agent = self.start_with_backend()
        self.assertEqual(self.error_of_table(), "genErr")
        self.assert_others_go_on()
        backend = self.start_backend(self.path)
        wait_until(lambda: self.error_of_table() == "noError", "the table")
        backend.kill()
        wait_until(lambda: self.error_of_table() == "genErr", "no table without the back end")
        self.assertEqual(self.connections(agent), 1)

    def test_hanging_back_end_does_not_try_the_masters_patience(self):
        fake = FakeBackend(self.folder / "backend.sock", hangs=True)
        self.addCleanup(fake.close)
        agent = self.start_with_backend("agentXTimeout 1\nagentXRetries 0\n")
        self.assertEqual(self.error_of_table(), "genErr")
        self.assert_others_go_on()
        self.assertEqual(self.connections(agent), 1)
        self.assertNotIn("cannot be reached", agent.log())


class AgentxUsage(AgentxTest):
    def test_wrong_usage_is_told(self):
        for options, expected in (
                ({"agentx": "tcp:192.0.2.1:705"}, "an AgentX master on this machine is due"),
                ({"agentx": "unix:" + "/x" * 60}, "an AgentX master on this machine is due"),
                ({"agentx": "udp:127.0.0.1:705"}, "an AgentX master on this machine is due"),
                ({"agentx": "/run/x", "listen": "udp:127.0.0.1:1161"}, "--listen excludes --agentx")):
            with self.subTest(options=options):
                result = subprocess.run([str(BIN / "talvik-agentd"), *self.arguments(**options)], capture_output=True,
                                        text=True, timeout=LIMIT, stdin=subprocess.DEVNULL)
                self.assertEqual(result.returncode, 2, result.stderr)
                self.assertIn(expected, result.stderr)

    def check(self, *others, **options):
        return subprocess.run([str(BIN / "talvik-agentd"), *self.arguments(**options), *others, "--check"],
                              capture_output=True, text=True, timeout=LIMIT, stdin=subprocess.DEVNULL)

    def test_check_needs_no_master(self):
        for result in (self.check(agentx="/no/such/master"), self.check("--agentx")):
            self.assertEqual((result.returncode, result.stdout), (0, "OK\n"), result.stderr)
        self.config.write_text(CONFIG + "agentXSocket /elsewhere\n")
        result = self.check(agentx="/no/such/master")
        self.assertEqual(result.returncode, 1, result.stdout)
        self.assertIn("remove agentXSocket", result.stderr)


if __name__ == "__main__":
    unittest.main()
