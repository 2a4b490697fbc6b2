"""talvikctl trap status and trap test ask a running agent what becomes of its traps."""

import json
import os
import socket
import subprocess
import unittest

from talvik_e2e import LIMIT, SOURCE, TalvikTest, program, wait_until

WRITER = ["--snmp-version", "2c", "--community", "writer"]


class CtlReceivers(TalvikTest):
    def setUp(self):
        self.agent = self.start_agent()
        self.socket = self.state / "agent.sock"
        self.receivers = []
        for _ in range(2):
            receiver = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
            receiver.bind(("127.0.0.1", 0))
            receiver.settimeout(LIMIT)
            self.addCleanup(receiver.close)
            self.receivers.append(receiver)

    def run_ctl(self, words, status):
        done = subprocess.run([*program("talvikctl"), "trap", *words], env=dict(os.environ, LC_ALL="C"),
                              stdin=subprocess.DEVNULL, capture_output=True, text=True, timeout=LIMIT)
        self.assertEqual(done.returncode, status, done.stdout + done.stderr)
        return done.stdout, done.stderr

    def ask(self, *words, status=0):
        return self.run_ctl([*words, "--socket", str(self.socket), "--device", str(SOURCE / "etc" / "talvik-device.xml")],
                            status)

    def add_receivers(self):
        for receiver in self.receivers:
            self.run_ctl(["add", "127.0.0.1", "--port", str(receiver.getsockname()[1]), "--agent",
                          f"udp:127.0.0.1:{self.agent.port}", *WRITER], 0)

    def status(self):
        return json.loads(self.ask("status", "--json")[0])["receivers"]

    def test_sends_a_test_trap_to_one_receiver(self):
        self.add_receivers()
        self.assertIn("the test trap to receiver 2", self.ask("test", "2")[0])
        self.assertEqual([row["sent"] for row in self.status()], [0, 1])
        self.assertIn(b"Test trap", self.receivers[1].recv(65535))
        self.receivers[0].setblocking(False)
        self.assertRaises(BlockingIOError, self.receivers[0].recv, 65535)

    def test_shows_the_receivers(self):
        self.assertEqual(self.ask("status"), ("no trap receivers\n", ""))
        self.add_receivers()
        wait_until(lambda: len(self.status()) == 2, "two receivers")
        heading, first, second = self.ask("status")[0].splitlines()
        self.assertEqual(heading.split(), ["INDEX", "ADDRESS", "PORT", "VERSION", "TYPE", "USER", "SENDS", "STATE", "SENT",
                                           "FAILED", "ANSWERED", "GIVEN", "UP", "WAITING"])
        for index, line in ((1, first), (2, second)):
            port = self.receivers[index - 1].getsockname()[1]
            self.assertEqual(line.split(), [str(index), "127.0.0.1", str(port), "v2c", "alarm", "--", "trap", "ok", "0",
                                            "0", "0", "0", "0"])

    def test_says_that_a_test_trap_cannot_be_sent(self):
        self.run_ctl(["add", "192.0.2.1", "--version", "v3", "--user", "nobody-knows", "--agent",
                      f"udp:127.0.0.1:{self.agent.port}", *WRITER], 0)
        told = json.loads(self.ask("test", "1", "--json", status=1)[0])
        self.assertIn("receiver 1 (192.0.2.1 port 162) did not get the test trap: ", told["reason"])
        self.assertIn("nobody-knows", told["reason"])
        self.assertIn("if no user or setting is missing, make sure that there is a way", told["advice"])

    def test_says_what_it_cannot_do(self):
        self.assertIn("there is no trap receiver with that index", self.ask("test", "7", status=1)[1])
        self.agent.stop()
        for words in (["status"], ["test", "1"]):
            self.assertIn("start talvik-agentd, or name agent.sock", self.ask(*words, status=3)[1])
        told = json.loads(self.ask("status", "--json", status=3)[0])
        self.assertIn("cannot connect", told["reason"])


if __name__ == "__main__":
    unittest.main()
