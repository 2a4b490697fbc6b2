"""talvikctl alarm list shows the active alarms of a running back end."""

import json
import os
import signal
import subprocess
import unittest

from backend_wire import BackendClient
from talvik_e2e import LIMIT, SOURCE, TalvikTest, program

DEVICE = SOURCE / "etc" / "talvik-device.xml"
DISK = 501010001
LARGEST_ID = 2 ** 64 - 1
LAST_SERIAL = 2 ** 32 - 1
NONE = "no active alarms\n"


class CtlAlarmList(TalvikTest):
    def setUp(self):
        self.socket = self.folder / "backend.sock"
        self.backend = self.start_backend(self.socket)

    def ctl(self, *words, status=0, zone="UTC"):
        """Runs a command, which must end with the status; returns standard output and error."""
        done = subprocess.run([*program("talvikctl"), "alarm", *words, "--socket", str(self.socket), "--device",
                               str(DEVICE)], env=dict(os.environ, LC_ALL="C", TZ=zone), stdin=subprocess.DEVNULL,
                              capture_output=True, text=True, timeout=LIMIT)
        self.assertEqual(done.returncode, status, done.stdout + done.stderr)
        return done.stdout, done.stderr

    def table(self, *words, **others):
        out, error = self.ctl("list", *words, **others)
        self.assertEqual(error, "")
        return out

    def listed(self, *words):
        return json.loads(self.table("--json", *words))

    def serials(self, *words):
        return [alarm["serial"] for alarm in self.listed(*words)]

    def raise_many(self, parameters):
        """Raises an alarm with each of the parameters; their serial numbers."""
        with BackendClient(self.socket) as client:
            return list(client.raise_many(DISK, parameters))

    def test_shows_that_nothing_is_active(self):
        self.assertEqual(self.table(), NONE)
        self.assertEqual(self.table("--json"), "[]\n")
        self.ctl("event", str(DISK))
        self.assertEqual(self.table(), NONE)
        self.ctl("raise", str(DISK))
        self.ctl("clear", "2")
        self.assertEqual(self.table("--after", "0", "--limit", "1"), NONE)

    def test_shows_each_alarm_in_a_table(self):
        self.ctl("raise", str(DISK), "--param", "DAE000", "--param", "7", "--time", "1700000000")
        self.ctl("raise", str(LARGEST_ID), "--severity", "7", "--time", "0", "--param", "a\x1b[2J\n\u202eb")
        lines = [
            "SERIAL  ID                    SEVERITY      TIME                       PARAMETERS",
            "1       501010001             major (5)     2023-11-14T22:13:20+00:00  DAE000,7",
            "2       18446744073709551615  critical (7)  1970-01-01T00:00:00+00:00  a\\x1B[2J\\x0A\\xE2\\x80\\xAEb",
        ]
        self.assertEqual(self.table().splitlines(), lines)
        self.assertIn("2023-11-15T03:43:20+05:30", self.table(zone="IST-5:30"))

    def test_shows_each_alarm_in_json(self):
        with BackendClient(self.socket) as client:
            client.raise_alarm(LARGEST_ID, b"a,\xff\n", level=9, time=253402300799)
            client.raise_alarm(DISK, level=2, time=0)
        self.assertEqual(self.listed(), [
            {"serial": 1, "id": str(LARGEST_ID), "severity": None, "level": 9, "time": 253402300799,
             "parameters": "a,\\xFF\n"},
            {"serial": 2, "id": str(DISK), "severity": "info", "level": 2, "time": 0, "parameters": ""}])

    def test_goes_on_behind_a_serial_number_and_ends_at_a_limit(self):
        self.raise_many([b"x"] * 6)
        self.ctl("clear", "3", "6")
        for words, serials in ((["--after", "1"], [2, 4, 5]), (["--after", "3"], [4, 5]), (["--limit", "3"], [1, 2, 4]),
                               (["--after", "2", "--limit", "1"], [4]), (["--after", "5"], []),
                               (["--after", str(LAST_SERIAL)], []), (["--limit", str(LAST_SERIAL)], [1, 2, 4, 5])):
            with self.subTest(words=words):
                self.assertEqual(self.serials(*words), serials)

    def test_shows_more_than_one_answer_holds(self):
        serials = self.raise_many(b"%d" % number for number in range(2001))
        alarms = self.listed()
        self.assertEqual([alarm["serial"] for alarm in alarms], serials)
        self.assertEqual([alarm["parameters"] for alarm in alarms], [str(number) for number in range(2001)])
        self.assertEqual(len(self.table("--limit", "1001").splitlines()), 1 + 1001)

    def test_shows_the_longest_parameters(self):
        serials = self.raise_many([b"p" * 32768] * 40)
        alarms = self.listed()
        self.assertEqual([alarm["serial"] for alarm in alarms], serials)
        self.assertEqual({alarm["parameters"] for alarm in alarms}, {"p" * 32768})

    def test_shows_what_a_killed_back_end_had(self):
        self.raise_many([b"a", b"b"])
        self.backend.kill()
        self.assertRegex(self.ctl("list", status=3)[1],
                         r"^talvikctl: cannot list the active alarms at .*; start talvik-agentd, or talvik-backendd")
        told = json.loads(self.ctl("list", "--json", status=3)[0])
        self.assertEqual(sorted(told), ["advice", "reason", "socket"])
        self.backend = self.start_backend(self.socket)
        self.assertEqual(self.serials(), [1, 2])

    def test_gives_up_on_a_back_end_that_hangs(self):
        self.backend.send(signal.SIGSTOP)
        out, error = self.ctl("list", "--timeout", "100", status=3)
        self.assertEqual(out, "")
        self.assertIn("did not answer within 100 ms", error)
        self.assertNotIn("nonetheless", error)
        self.backend.send(signal.SIGCONT)

    def test_refuses_wrong_input_before_it_asks(self):
        for words in (["--after", str(LAST_SERIAL + 1)], ["--after=-1"], ["--limit", "0"], ["--limit", "ten"], ["7"]):
            with self.subTest(words=words):
                out, error = self.ctl("list", *words, status=2)
                self.assertEqual(out, "")
                self.assertIn("--help", error)


class AgentAlarmList(TalvikTest):
    def test_asks_an_agent_that_has_the_back_end_in_it(self):
        self.start_agent()
        socket = self.state / "agent.sock"
        with BackendClient(socket) as client:
            client.raise_alarm(DISK, b"DAE000")
        done = subprocess.run([*program("talvikctl"), "alarm", "list", "--json", "--socket", str(socket), "--device",
                               str(DEVICE)], stdin=subprocess.DEVNULL, capture_output=True, text=True, timeout=LIMIT)
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        self.assertEqual([alarm["parameters"] for alarm in json.loads(done.stdout)], ["DAE000"])


if __name__ == "__main__":
    unittest.main()
