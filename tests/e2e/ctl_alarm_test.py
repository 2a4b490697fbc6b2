"""talvikctl alarm raises and clears alarms at a running back end."""

import json
import os
import signal
import subprocess
import unittest

from talvik_e2e import LIMIT, SOURCE, TalvikTest, program

DEVICE = SOURCE / "etc" / "talvik-device.xml"
DISK = "501010001"
LOGIN = "507010006"


class CtlAlarm(TalvikTest):
    def setUp(self):
        self.socket = self.folder / "backend.sock"
        self.backend = self.start_backend(self.socket)

    def command(self, *words):
        return [*program("talvikctl"), *words, "--socket", str(self.socket), "--device", str(DEVICE)]

    def ctl(self, *words, status=0):
        """Runs a command, which must end with the status; returns standard output and error."""
        done = subprocess.run(self.command(*words), env=dict(os.environ, LC_ALL="C"), stdin=subprocess.DEVNULL,
                              capture_output=True, text=True, timeout=LIMIT)
        self.assertEqual(done.returncode, status, done.stdout + done.stderr)
        return done.stdout, done.stderr

    def refused(self, *words, status=1):
        out, error = self.ctl(*words, status=status)
        self.assertEqual(out, "")
        return error

    def active(self):
        return int(self.ctl("alarm", "resend")[0].split()[0])

    def test_raises_and_clears(self):
        self.assertEqual(self.ctl("alarm", "raise", DISK, "--param", "DAE000", "--param", "7", "--param", "", "--param",
                                  "1", "--severity", "major"), ("1\n", ""))
        self.assertEqual(json.loads(self.ctl("alarm", "raise", DISK, "--json")[0]),
                         {"serial": 2, "socket": str(self.socket)})
        self.assertEqual(self.ctl("alarm", "raise", "18446744073709551615", "--severity", "7", "--time", "0",
                                  "--param", "x" * 32768), ("3\n", ""))
        self.assertEqual(self.active(), 3)
        self.assertEqual(self.ctl("alarm", "clear", "2"), ("cleared alarm 2\n", ""))
        self.assertEqual(self.active(), 2)

    def test_reports_an_event_that_does_not_last(self):
        self.assertEqual(self.ctl("alarm", "event", LOGIN, "--param", "admin", "--param", "192.0.2.5"), ("1\n", ""))
        self.assertEqual(json.loads(self.ctl("alarm", "event", LOGIN, "--json")[0])["serial"], 2)
        self.assertEqual(self.active(), 0)
        self.assertIn("no alarm with that serial number is active", self.refused("alarm", "clear", "1"))

    def test_clears_what_it_can(self):
        for _ in range(3):
            self.ctl("alarm", "raise", DISK)
        out, error = self.ctl("alarm", "clear", "1", "9", "1", "3", status=1)
        self.assertEqual(out, "cleared alarm 1\ncleared alarm 3\n")
        self.assertRegex(error, r"^talvikctl: cannot clear alarm 9: no alarm .* is active; it was cleared before")
        told = json.loads(self.ctl("alarm", "clear", "1", "2", "--json", status=1)[0])
        self.assertEqual((told["cleared"], [each["serial"] for each in told["failed"]], told["notTried"]), ([2], [1], []))

    def test_tells_how_many_alarms_are_sent_again(self):
        self.assertEqual(self.ctl("alarm", "resend"), ("0 active alarms will be sent again\n", ""))
        self.ctl("alarm", "raise", DISK)
        self.assertEqual(self.ctl("alarm", "resend"), ("1 active alarm will be sent again\n", ""))
        self.assertEqual(json.loads(self.ctl("alarm", "resend", "--json")[0])["count"], 1)

    def test_refuses_wrong_input_before_it_asks(self):
        for words, said in ((["raise", "disk"], "\"disk\" is no number"), (["raise", DISK, "--param", "a,b"], "&#44;"),
                            (["raise", DISK, "--severity", "worst"], "critical (6)"), (["clear", "-1"], "--help"),
                            (["scenario", str(self.folder / "none.json")], "No such file or directory")):
            with self.subTest(words=words):
                self.assertIn(said, self.refused("alarm", *words, status=2))
        self.assertEqual(self.ctl("alarm", "raise", DISK)[0], "1\n")

    def test_keeps_serial_numbers_across_a_kill(self):
        self.ctl("alarm", "raise", DISK)
        self.backend.kill()
        self.assertIn("start talvik-agentd", self.refused("alarm", "raise", DISK, status=3))
        out, error = self.ctl("alarm", "clear", "1", "2", status=3)
        self.assertIn("cannot connect", error)
        self.assertIn("did not try to clear alarm 2", error)
        self.backend = self.start_backend(self.socket)
        self.assertEqual(self.ctl("alarm", "raise", DISK)[0], "2\n")
        self.assertEqual(self.active(), 2)

    def test_gives_up_on_a_back_end_that_hangs(self):
        self.backend.send(signal.SIGSTOP)
        error = self.refused("alarm", "raise", DISK, "--timeout", "100", status=3)
        self.assertIn("did not answer within 100 ms; it may have been done nonetheless", error)
        self.backend.send(signal.SIGCONT)

    def test_tells_a_back_end_from_an_agent(self):
        for words in (["status"], ["test", "1"]):
            self.assertIn("name agent.sock in the agent's state directory", self.refused("trap", *words))

    def test_plays_the_delivered_scenario(self):
        out, error = self.ctl("alarm", "scenario", str(SOURCE / "etc" / "example-scenario.json"))
        self.assertEqual(error, "")
        lines = out.splitlines()
        self.assertEqual(lines[0], f"steps[0]: reported {LOGIN}, serial number 1")
        self.assertEqual(lines[-1], f"done: {len(lines) - 1} steps")
        self.assertEqual(self.active(), 0)

    def scenario(self, *steps):
        return str(self.write("scenario.json", json.dumps({"steps": steps})))

    def test_repeats_many_times_on_one_connection(self):
        rounds = {"times": 300, "steps": [{"raise": {"id": DISK, "as": "x"}}, {"clear": "x"}]}
        out, _ = self.ctl("alarm", "scenario", self.scenario({"repeat": rounds}, {"raise": {"id": DISK}}))
        self.assertIn("steps[0].repeat.steps[1] (round 300 of 300): cleared x, serial number 300\n", out)
        self.assertTrue(out.endswith("done: 601 steps\n"), out[-200:])
        self.assertEqual(self.active(), 1)

    def test_does_nothing_of_a_scenario_that_is_not_right(self):
        file = self.scenario({"raise": {"id": DISK}}, {"raise": {"id": DISK, "severity": "bad"}})
        error = self.refused("alarm", "scenario", file, status=2)
        self.assertIn(f"scenario {file}, steps[1].raise.severity: \"bad\" is no severity", error)
        self.assertEqual(self.active(), 0)

    def test_stops_a_scenario_at_a_failure_or_goes_on(self):
        self.backend.stop()
        file = self.scenario({"raise": {"id": DISK, "as": "x"}}, {"pauseMs": 1}, {"clear": "x"})
        out, error = self.ctl("alarm", "scenario", file, status=3)
        self.assertEqual(out, "")
        self.assertIn("steps[0]: cannot raise alarm", error)
        self.assertIn("stopped after 0 of 3 steps; the others were not tried", error)
        out, error = self.ctl("alarm", "scenario", file, "--keep-going", status=3)
        self.assertEqual(out, "steps[1]: paused for 1 ms\n")
        self.assertIn("2 of 3 steps failed", error)


if __name__ == "__main__":
    unittest.main()
