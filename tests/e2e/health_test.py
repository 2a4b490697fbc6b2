"""The agent tells its own health over SNMP and in the log, whatever else is away."""

import signal
import unittest

from agent_health import NEVER, HealthReader
from alarm_table import ALARMS, CLEAR_LEAF, clearing
from fake_backend import FakeBackend
from notifications import DISK_FAILED, NotificationTest, disk
from talvik_e2e import ENTRY, EVERYTHING, HEALTH, MODULE, READER, TABLE, WRITER, wait_until
from trap_table import PORT, TRAP_ENTRY, assign


class Health(HealthReader, NotificationTest):
    def test_facts(self):
        agent = self.start()
        health = self.health(agent)
        self.assertRegex(str(health["talvikAgentVersion"]), r"^\d+\.\d+\.\d+$")
        self.assertEqual(health["talvikAgentModuleFile"], str(MODULE))
        self.assertEqual([health[f"talvikAgent{name}"] for name in ("ModuleState", "MasterState", "BackendName",
                                                                    "BackendState")], [1, 1, "embedded", 1])
        self.assertEqual(self.lines("snmpget", agent, EVERYTHING, f"{HEALTH}.1.3.0"),
                         [f"{HEALTH}.1.3.0 = Hex-STRING: {NEVER} "])
        self.assertEqual([health["talvikAgentObjectName", row] for row in (1, 2, 3, 4)],
                         ["talvikTopologyTable", "talvikAlarmTable", "talvikClearAlarm", "talvikTrapTable"])
        self.assertEqual([health["talvikAgentObjectAccess", row] for row in (1, 2, 3, 4)], [1, 1, 2, 2])
        self.assertIn(f"info host talvik-agentd {health['talvikAgentVersion']}, module {MODULE} loaded, "
                      "back end embedded, objects: 4, trap receivers: 0\n", agent.log())

    def test_requests_are_counted(self):
        agent = self.start()
        self.assertEqual(self.counted(agent, "Requests", "Sets", "Errors"), [0, 0, 0])
        for _ in range(3):
            self.lines("snmpget", agent, READER, f"{ENTRY}.1.1", f"{ENTRY}.2.1")
        self.lines("snmpbulkget", agent, READER, "-Cr5", TABLE)  # five of eight values
        self.tool("snmpget", agent, READER, f"{ENTRY}.1.2")  # which is not there
        self.assertEqual(self.counted(agent, "Requests", "Sets", "Errors"), [5, 0, 0])
        self.lines("snmpget", agent, READER, f"{ENTRY}.1.1", CLEAR_LEAF)  # two objects
        self.assertEqual(self.counted(agent, "Requests", "Sets", "Errors"), [7, 0, 0])
        self.add_receiver(agent, 1, 10162)
        self.snmpset(agent, WRITER, assign(PORT, 1, 0))  # no such port
        self.snmpset(agent, WRITER, clearing(99))  # no such alarm
        self.snmpset(agent, READER, clearing(99))  # may not write: never gets there
        self.assertEqual(self.counted(agent, "Requests", "Sets", "Errors"), [10, 3, 2])
        wait_until(lambda: self.counted(agent, "Receivers") == [1], "the receiver counted")
        health = self.health(agent)
        self.assertEqual([[health[f"talvikAgentObject{name}", row] for name in ("Requests", "Sets", "Errors")]
                          for row in (1, 2, 3, 4)], [[6, 0, 0], [0, 0, 0], [2, 1, 1], [2, 2, 1]])

    def test_back_end_is_watched_without_being_asked(self):
        path = self.folder / "backend.sock"
        agent = self.start(backend=f"unix:{path}")
        wait_until(lambda: self.counted(agent, "BackendState") == [3], "the back end tried once")
        self.assertEqual(self.counted(agent, "BackendName", "BackendCommands", "BackendFailures"), [f"unix:{path}", 0, 0])
        self.assertIn("genErr", self.tool("snmpgetnext", agent, READER, ALARMS).stderr)
        counted = self.counted(agent, "BackendState", "BackendCommands", "BackendFailures", "Errors")
        self.assertEqual(counted, [3, 1, 1, 1])
        backend = self.start_backend(path)
        wait_until(lambda: self.counted(agent, "BackendState") == [2], "the back end up")
        self.lines("snmpgetnext", agent, READER, ALARMS)
        self.assertEqual(self.counted(agent, "BackendCommands", "BackendFailures"), [2, 1])
        self.assertNotIn(NEVER, self.lines("snmpget", agent, EVERYTHING, f"{HEALTH}.1.9.0")[0])
        backend.kill()
        wait_until(lambda: self.counted(agent, "BackendState") == [3], "the back end down")

    def test_back_end_that_hung_for_a_while_is_up_without_another_command(self):
        path = self.folder / "backend.sock"
        backend = self.start_backend(path)
        agent = self.start(backend=f"unix:{path}")
        wait_until(lambda: self.counted(agent, "BackendState") == [2], "the back end up")
        backend.send(signal.SIGSTOP)
        self.lines("snmpget", agent, READER, f"{ENTRY}.8.1")
        self.assertEqual(self.counted(agent, "BackendState"), [3])
        counted = self.counted(agent, "BackendCommands", "BackendFailures")
        backend.send(signal.SIGCONT)
        wait_until(lambda: self.counted(agent, "BackendState") == [2], "the back end up again")
        self.assertEqual(self.counted(agent, "BackendCommands", "BackendFailures"), counted)

    def test_hanging_back_end_delays_nobody_who_asks_for_health(self):
        fake = FakeBackend(self.folder / "backend.sock", hangs=True)
        self.addCleanup(fake.close)
        agent = self.start(backend=f"unix:{fake.path}", backend_timeout=60000)
        self.assertEqual(self.counted(agent, "BackendState", "BackendCommands"), [4, 0])  # it may still answer
        wait_until(lambda: self.counted(agent, "BackendState") == [3], "no answer for so long that it is down")

    def test_notifications_are_counted(self):
        agent = self.start()
        receiver = self.trap_socket()
        self.add_receiver(agent, 1, receiver.port)
        self.add_receiver(agent, 2, receiver.port, version=3, user="nobody")
        with self.client() as client:
            client.raise_alarm(DISK_FAILED, disk(7))
        expected = [1, 2, 1, 1, 0, 0, 0]
        names = ["NotificationsTaken", "Receivers", "TrapsSent", "TrapsFailed", "InformsAnswered", "InformsGivenUp",
                 "TrapsWaiting"]
        wait_until(lambda: self.counted(agent, *names) == expected, "one trap sent and one failed")
        self.assertEqual(len(receiver.notifications()), 1)
        with self.manager(agent) as manager:
            for row in (1, 2):
                manager.set(assign(3, row, 6))  # what went to receivers that are gone stays counted
        self.assertEqual(self.counted(agent, "TrapsSent", "TrapsFailed"), [1, 1])

    def test_informs_are_counted(self):
        self.write_settings(receivers=[{"address": "127.0.0.1", "inform": True, "timeoutMs": 200, "retries": 0}])
        agent = self.start()
        trapd, silent = self.snmptrapd(), self.trap_socket()
        self.add_receiver(agent, 1, trapd.port)
        self.add_receiver(agent, 2, silent.port)
        with self.client() as client:
            client.raise_alarm(DISK_FAILED, disk(7))
        wait_until(lambda: self.counted(agent, "TrapsSent", "InformsAnswered", "InformsGivenUp", "TrapsWaiting")
                   == [2, 1, 1, 0], "one inform answered and one given up")

    def test_agent_without_a_module_has_health(self):
        agent = self.start(module="/no/such/module.so", module_failure="continue")
        health = self.health(agent)
        self.assertEqual([health["talvikAgentModuleFile"], health["talvikAgentModuleState"]], ["/no/such/module.so", 2])
        self.assertNotIn(("talvikAgentObjectName", 1), health)
        self.assertIn("module /no/such/module.so missing", agent.log())

    def test_version_1_sees_all_but_the_large_counters(self):
        agent = self.start()
        lines = self.walk(agent, ["-v1", "-c", "everything"], HEALTH)
        self.assertEqual(lines and [line for line in lines if "Counter64" in line], [])
        others = [line for line in self.walk(agent, EVERYTHING, HEALTH) if "Counter64" not in line]
        self.assertEqual(len(lines), len(others))

    def test_bulk_for_several_objects_may_end_where_health_is_hidden(self):
        agent = self.start()
        for index in (1, 2):
            self.add_receiver(agent, index, 10162)
        columns = [f"{TRAP_ENTRY}.{column}" for column in (7, 8)]
        found = self.lines("snmpbulkget", agent, READER, "-Cr9", *columns)
        last = [line for line in found if line.startswith(f"{TRAP_ENTRY}.8.") and "No more" not in line]
        self.assertEqual(len(last), 4)

    def test_health_cannot_be_written(self):
        agent = self.start()
        self.assertIn("notWritable", self.snmpset(agent, WRITER, (f"{HEALTH}.1.1.0", "s", "2")).stderr)


if __name__ == "__main__":
    unittest.main()
