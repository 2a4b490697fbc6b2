"""A module that cannot be used: the agent says so, and stops or serves all else, as it was told."""

import os
import subprocess
import unittest

from module_faults import Faults, unreadable
from notifications import ALARM_TRAP, DISK_FAILED, NotificationTest, disk
from talvik_e2e import BIN, EVERYTHING, LIMIT, ROOT, TEST_MODULES, TalvikTest, wait_until

GOES_ON = "talvik-agentd goes on without the module: "
CONSEQUENCE = ("; its subtrees are not served and alarms are not reported until that is put right and the agent is "
               "started again")
SUBTREES = (".2.91.9", ".2.91.10")
NOBODY = 65534
SYSTEM_DESCRIPTION = ".1.3.6.1.2.1.1.1"


class ModuleFailure(TalvikTest):
    def assert_serves_the_rest(self, agent):
        self.assertEqual(len(self.walk(agent, EVERYTHING, SYSTEM_DESCRIPTION)), 1)
        for subtree in SUBTREES:
            lines = self.walk(agent, EVERYTHING, ROOT + subtree)
            self.assertEqual([line for line in lines if "No Such Object" not in line], [])

    def assert_goes_on(self, fault):
        agent = self.start_agent(module_failure="continue", **fault.options)
        errors = [line for line in agent.log().splitlines() if " error host " in line]
        self.assertEqual(len(errors), 1, agent.log())
        for text in (GOES_ON, *fault.texts, CONSEQUENCE):
            self.assertIn(str(text), errors[0])
        self.assert_serves_the_rest(agent)
        self.assertEqual(agent.stop(), 0, agent.log())
        self.assertIn("ended", agent.log().splitlines()[-1])

    def test_the_agent_stops_unless_it_is_told_otherwise(self):
        for fault in Faults(self.folder).all():
            with self.subTest(fault=fault.name):
                self.assert_refuses_to_start(*fault.texts, **fault.options)

    def test_the_agent_goes_on_with_all_else_when_it_is_told_to(self):
        for fault in Faults(self.folder).all():
            with self.subTest(fault=fault.name):
                self.assert_goes_on(fault)

    def test_stop_is_the_default_and_no_other_word_is_taken(self):
        path = TEST_MODULES / "no_factory.so"
        self.assert_refuses_to_start("exports no SNMP_SvcModuleCreator", module=path, module_failure="stop")
        result = self.run_agent(module=path, module_failure="ignore")
        self.assertEqual(result.returncode, 2, result.stderr)
        self.assertIn("--module-failure", result.stderr)

    def test_a_check_finds_the_fault_either_way(self):
        result = self.run_agent("--check", module=TEST_MODULES / "null_factory.so", module_failure="continue")
        self.assertEqual(result.returncode, 1, result.stderr)
        self.assertIn("made no module", result.stderr)
        self.assertNotIn("OK", result.stdout)

    def test_only_the_module_is_forgiven(self):
        missing = self.folder / "missing.xml"
        self.assert_refuses_to_start(missing, device=missing, module_failure="continue")

    def test_a_good_module_is_served_whatever_the_choice(self):
        agent = self.start_agent(module_failure="continue")
        self.assertIn(f"{ROOT}.2.91.9.1.1.8.1 = INTEGER: 1", self.walk(agent))
        self.assertNotIn(GOES_ON, agent.log())

    def test_a_module_that_the_agents_user_may_not_read(self):
        fault = unreadable(self.folder)
        os.chmod(self.folder, 0o755)
        self.state.mkdir()
        user = {}
        if os.geteuid() == 0:
            user = {"user": NOBODY, "group": NOBODY, "extra_groups": []}
            os.chown(self.state, NOBODY, NOBODY)
        command = [str(BIN / "talvik-agentd"), *self.arguments(**fault.options)]
        try:
            result = subprocess.run([*command, "--check"], stdin=subprocess.DEVNULL, capture_output=True, text=True,
                                    timeout=LIMIT, cwd="/", **user)
        except PermissionError:
            self.skipTest("the built agent lies where no other user may run it")
        self.assertEqual(result.returncode, 1, result.stderr)
        for text in fault.texts:
            self.assertIn(text, result.stderr)


class NotificationsWithoutAModule(NotificationTest):
    def test_wait_in_the_back_end_until_there_is_one(self):
        self.backend_socket = self.folder / "backend.sock"
        self.start_backend(self.backend_socket)
        receiver = self.trap_socket()
        agent = self.start(backend=f"unix:{self.backend_socket}")
        self.add_receiver(agent, 1, receiver.port)
        self.assertEqual(agent.stop(), 0)

        agent = self.start(backend=f"unix:{self.backend_socket}", module=self.folder / "missing.so",
                           module_failure="continue")
        self.client().raise_alarm(DISK_FAILED, disk(7))
        self.status(1)  # the agent's loop goes round
        self.assertEqual(self.outbox_size(self.folder / "backend-state"), 1)
        self.assertEqual(agent.stop(), 0)
        self.assertNotIn(ALARM_TRAP, [one.oid for one in receiver.notifications()])

        self.start(backend=f"unix:{self.backend_socket}")
        wait_until(lambda: ALARM_TRAP in [one.oid for one in receiver.notifications()], "the alarm's trap")


if __name__ == "__main__":
    unittest.main()
