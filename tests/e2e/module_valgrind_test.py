"""Valgrind finds nothing of the module lost, freed twice or read too late: loaded, used, unloaded and at the end.

No suppressions: the libraries have nothing to hide in these runs either.
"""

import os
import shutil
import subprocess
import unittest

from notifications import ALARM_TRAP, DISK_FAILED, NotificationTest, disk
from talvik_e2e import BIN, CLEAR_ALARM, EVERYTHING, TEST_MODULES, WRITER, Daemon, free_port, wait_until

LIMIT = 120  # seconds; valgrind takes twenty times as long as the program alone
FOUND = 99
VALGRIND = ["valgrind", "--quiet", "--leak-check=full", "--show-leak-kinds=definite,indirect",
            "--errors-for-leak-kinds=definite,indirect", f"--error-exitcode={FOUND}", "--num-callers=40",
            "--keep-debuginfo=yes"]  # the stacks of what was unloaded
# Four ways to use the module, and one operation with each of its calls into the host failing in turn.
USES = "ModuleUse.Loaded*:ModuleUse.Two*:ModuleUse.TheOrder*:ModuleUse.EachCall*:Operations/HostFaults.*/TopologyQuery"
TESTS = 5


def is_sanitized():
    program = (BIN / "talvik-agentd").read_bytes()
    return any(library in program for library in (b"libasan.so", b"libtsan.so"))


# Under CI=true it is there or the tests fail.
@unittest.skipUnless(shutil.which("valgrind") or os.environ.get("CI"), "there is no valgrind")
@unittest.skipIf(is_sanitized(), "a sanitizer and valgrind do not go together")
class ModuleUnderValgrind(NotificationTest):
    def run_to_its_end(self, *command):
        return subprocess.run([*VALGRIND, *map(str, command)], stdin=subprocess.DEVNULL, capture_output=True, text=True,
                              timeout=LIMIT, cwd=self.folder)

    def test_loads_uses_and_unloads(self):
        result = self.run_to_its_end(BIN / "talvik-contract-faults", f"--gtest_filter={USES}")
        self.assertEqual(result.returncode, 0, result.stdout + result.stderr)
        self.assertIn(f"PASSED  ] {TESTS} tests.", result.stdout)

    def test_an_agent_that_cannot_use_its_module(self):
        for module in ("handlers_throw", "registers_then_throws"):
            result = self.run_to_its_end(BIN / "talvik-agentd", "--check",
                                         *self.arguments(free_port(), module=TEST_MODULES / f"{module}.so"))
            self.assertEqual(result.returncode, 1, result.stderr)
            self.assertIn("cannot start", result.stderr)

    def test_an_agent_from_start_to_end(self):
        port = free_port()
        agent = self.keep(Daemon(self.folder, "agentd", [*VALGRIND, BIN / "talvik-agentd",
                                                         *self.arguments(port, trap_settings=self.settings)]))
        agent.port = port
        wait_until(lambda: "ready, listening on" in agent.log() or not agent.is_alive(), "the agent", LIMIT)
        self.assertTrue(agent.is_alive(), agent.log())
        receiver = self.trap_socket()
        self.add_receiver(agent, 1, receiver.port)
        self.client().raise_alarm(DISK_FAILED, disk(7))
        wait_until(lambda: ALARM_TRAP in [one.oid for one in receiver.notifications()], "the alarm's trap", LIMIT)
        self.assertGreater(len(self.walk(agent, EVERYTHING)), 20)
        self.lines("snmpset", agent, WRITER, CLEAR_ALARM, "u", "1")
        agent.send(15)
        self.assertEqual(agent.process.wait(LIMIT), 0, agent.log())


if __name__ == "__main__":
    unittest.main()
