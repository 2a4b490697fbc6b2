"""talvikctl watch, and what every command does differently on a terminal."""

import fcntl
import json
import os
import pty
import select
import signal
import struct
import subprocess
import termios
import time
import unittest

from talvik_e2e import BIN, LIMIT, SOURCE, TalvikTest

CTL = str(BIN / "talvikctl")
DEVICE = str(SOURCE / "etc" / "talvik-device.xml")
DISK = "501010001"


class Terminal:
    """A command whose standard output and error are a terminal."""

    def __init__(self, words, columns=80, rows=24, **environment):
        self.master, terminal = pty.openpty()
        fcntl.ioctl(terminal, termios.TIOCSWINSZ, struct.pack("4H", rows, columns, 0, 0))
        base = {key: value for key, value in os.environ.items() if key not in ("COLUMNS", "NO_COLOR")}
        self.process = subprocess.Popen(words, stdin=subprocess.DEVNULL, stdout=terminal, stderr=terminal,
                                        env={**base, "TERM": "xterm", "TZ": "UTC", **environment})
        os.close(terminal)
        self.text = ""

    def read_until(self, part):
        """Reads until the part was shown behind what was read before, or to the end if it is None."""
        end = time.monotonic() + LIMIT
        while part is None or part not in self.text:
            if time.monotonic() > end or not select.select([self.master], [], [], LIMIT)[0]:
                raise AssertionError(f"{part!r} was not shown: {self.text!r}")
            try:
                chunk = os.read(self.master, 65536)
            except OSError:  # the other side is closed
                chunk = b""
            if not chunk:
                if part is None:
                    break
                raise AssertionError(f"{part!r} was not shown: {self.text!r}")
            self.text += chunk.decode(errors="replace").replace("\r\n", "\n")
        before, self.text = self.text, ""
        return before

    def finish(self):
        """Everything up to the end, and the exit status."""
        text = self.read_until(None)
        os.close(self.master)
        return text, self.process.wait(LIMIT)

    def close(self):
        if self.process.poll() is None:
            self.process.kill()
            self.process.wait(LIMIT)


class CtlTerminalTest(TalvikTest):
    def setUp(self):
        self.socket = self.folder / "backend.sock"
        self.backend = self.start_backend(self.socket)

    def words(self, *words):
        return [CTL, *words, "--socket", str(self.socket), "--device", DEVICE]

    def ctl(self, *words, status=0):
        done = subprocess.run(self.words(*words), env=dict(os.environ, LC_ALL="C"), stdin=subprocess.DEVNULL,
                              capture_output=True, text=True, timeout=LIMIT)
        self.assertEqual(done.returncode, status, done.stdout + done.stderr)
        return done.stdout

    def on_terminal(self, *words, **how):
        terminal = Terminal(self.words(*words), **how)
        self.addCleanup(terminal.close)
        return terminal

    def shown(self, *words, **how):
        text, status = self.on_terminal(*words, **how).finish()
        self.assertEqual(status, 0, text)
        return text


class CtlTables(CtlTerminalTest):
    def setUp(self):
        super().setUp()
        self.ctl("alarm", "raise", DISK, "--param", "ä硬" * 40, "--severity", "critical", "--time", "0")

    def test_fit_the_terminal(self):
        text = self.shown("alarm", "list", columns=80)
        heading, line = text.splitlines()
        self.assertEqual(line, f"1       {DISK}  \x1b[1;31mcritical (6)\x1b[0m  1970-01-01T00:00:00+00:00  {'ä硬' * 6}ä…")
        self.assertIn("PARAMETERS", heading)
        self.assertTrue(self.shown("alarm", "list", COLUMNS="70").splitlines()[1].endswith("  ä硬ä硬ä硬…"))
        self.assertIn("ä硬" * 40, self.shown("alarm", "list", "--wide"))
        self.assertIn("ä硬" * 40, self.ctl("alarm", "list"))

    def test_fold_what_is_told(self):
        alarms, enums = (str(SOURCE / "etc" / f"alarm-{name}.json") for name in ("definitions", "enumerations"))
        bad = self.write("bad.json", '{"root": {"eventDefinition": {"param": [{"eventID": "0", "name": 7}]}}}')
        value = "a-serial-number-" * 8
        for words in (self.words("backend", "status"), self.words("trap", "status"), self.words("watch", "--count", "1"),
                      [CTL, "catalogue", "check", str(bad)],
                      [CTL, "catalogue", "expand", DISK, f"DAE000,7,{value},1", "--definitions", alarms, "--enums", enums]):
            whole = subprocess.run(words, stdin=subprocess.DEVNULL, capture_output=True, text=True, timeout=LIMIT).stdout
            self.assertNotIn("…", whole)
            if "expand" in words:
                self.assertIn(value, whole)
            for columns in (40, 80, 200):
                with self.subTest(words=words[1:3], columns=columns):
                    terminal = Terminal(words, columns=columns, NO_COLOR="1")
                    self.addCleanup(terminal.close)
                    text, _ = terminal.finish()
                    shown = [line for line in text.splitlines() if not line.startswith("talvikctl: ")]
                    self.assertLessEqual(max(len(line.replace("\x1b[H\x1b[2J", "")) for line in [*shown, ""]), columns, text)
                    if words[1] in ("backend", "catalogue"):  # nothing is lost
                        self.assertEqual("".join(text.split())[:200 if words[1] == "catalogue" else 20],
                                         "".join(whole.split())[:200 if words[1] == "catalogue" else 20])

    def test_have_colours_on_terminals_only(self):
        for text, colours in ((self.shown("alarm", "list"), True), (self.shown("alarm", "list", NO_COLOR="1"), False),
                              (self.shown("alarm", "list", TERM="dumb"), False), (self.ctl("alarm", "list"), False),
                              (self.shown("alarm", "list", "--color", "never"), False),
                              (self.ctl("alarm", "list", "--color", "always"), True),
                              (self.shown("alarm", "list", "--json"), False)):
            self.assertEqual("\x1b[" in text, colours, text)


class CtlProgress(CtlTerminalTest):
    def scenario(self):
        return str(self.write("s.json", json.dumps({"steps": [{"event": {"id": DISK}}, {"pauseMs": 1500}]})))

    def test_is_a_line_that_goes_away(self):
        text = self.shown("alarm", "scenario", self.scenario())
        self.assertIn("\r\x1b[Kstep 2 of 2, 1 s", text)
        self.assertTrue(text.endswith("\r\x1b[Ksteps[1]: paused for 1500 ms\ndone: 2 steps\n"), text)

    def test_is_not_shown_where_nobody_wants_it(self):
        running = [self.on_terminal("alarm", "scenario", self.scenario(), *words, **how)
                   for words, how in ((["--quiet"], {}), (["--json"], {}), ([], {"TERM": "dumb"}))]
        for terminal in running:
            self.assertNotIn("\x1b", terminal.finish()[0])

    def test_tells_that_an_answer_is_awaited(self):
        self.backend.send(signal.SIGSTOP)
        terminal = self.on_terminal("alarm", "list", "--timeout", "1500")
        self.assertIn("list the active alarms: waiting for an answer, 1 s", terminal.read_until("1 s"))
        text, status = terminal.finish()
        self.assertEqual(status, 3)
        self.assertIn("\r\x1b[Ktalvikctl: cannot list the active alarms", text)
        self.backend.send(signal.SIGCONT)


class CtlWatch(CtlTerminalTest):
    def start(self, *words):
        """A watch in a pipe; returns it and what reads its next line."""
        process = subprocess.Popen(self.words("watch", *words, "--interval", "0.1"), stdin=subprocess.DEVNULL,
                                   stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
        self.addCleanup(process.stdout.close)
        self.addCleanup(process.wait, LIMIT)
        self.addCleanup(process.kill)

        def line():
            self.assertTrue(select.select([process.stdout], [], [], LIMIT)[0], "no further line")
            return process.stdout.readline()

        return process, line

    def test_tells_each_change_in_a_line(self):
        self.ctl("alarm", "raise", DISK)
        process, line = self.start("alarms")
        self.assertRegex(line(), r"^\d{4}-\S+  active alarm  1  501010001  major \(5\)")
        self.ctl("alarm", "raise", DISK)
        self.assertIn("  raised alarm  2  ", line())
        self.ctl("alarm", "clear", "1")
        self.assertIn("  cleared alarm  1  ", line())
        process.send_signal(signal.SIGINT)
        self.assertEqual(process.wait(LIMIT), 0)

    def test_goes_on_when_the_back_end_is_away(self):
        self.ctl("alarm", "raise", DISK)
        process, line = self.start("alarms", "--json")
        active = json.loads(line())
        self.assertEqual((active["event"], active["what"], active["alarm"]["serial"]), ("active", "alarms", 1))
        self.backend.kill()
        away = json.loads(line())
        self.assertEqual((away["event"], sorted(away)), ("away", ["advice", "event", "reason", "time", "what"]))
        self.backend = self.start_backend(self.socket)
        self.assertEqual(json.loads(line())["event"], "back")
        self.ctl("alarm", "clear", "1")
        self.assertEqual(json.loads(line())["event"], "cleared")
        process.send_signal(signal.SIGTERM)
        self.assertEqual(process.wait(LIMIT), 0)

    def test_ends_after_so_many_looks(self):
        self.ctl("alarm", "raise", DISK)
        self.assertEqual(len(self.ctl("watch", "alarms", "--interval", "0.1", "--count", "3").splitlines()), 1)
        # A back end knows nothing of receivers.
        both = self.ctl("watch", "--count", "1", status=3)
        self.assertIn("active alarm  1", both)
        self.assertIn("traps: ", both)
        self.backend.stop()
        self.assertIn("start talvik-agentd", self.ctl("watch", "alarms", "--count", "1", status=3))

    def test_draws_anew_when_the_window_has_another_size(self):
        for _ in range(30):
            self.ctl("alarm", "raise", DISK, "--param", "a" * 60)
        terminal = self.on_terminal("watch", "alarms", "--interval", "3600", rows=24)
        terminal.read_until("\n13 more with smaller serial numbers\n")
        fcntl.ioctl(terminal.master, termios.TIOCSWINSZ, struct.pack("4H", 12, 80, 0, 0))
        terminal.process.send_signal(signal.SIGWINCH)
        self.assertIn("\x1b[H\x1b[2J", terminal.read_until("\n25 more with smaller serial numbers\n"))
        terminal.process.send_signal(signal.SIGINT)
        self.assertEqual(terminal.finish()[1], 0)

    def test_draws_over_its_picture_on_a_terminal(self):
        terminal = self.on_terminal("watch", "alarms", "--interval", "0.1")
        self.assertIn("\x1b[H\x1b[2J", terminal.read_until("no active alarms\n"))
        self.ctl("alarm", "raise", DISK)
        self.assertIn("active alarms: 1\n", terminal.read_until("since the last look:\n  raised alarm  1  "))
        terminal.read_until("nothing new since the last look\n")
        terminal.process.send_signal(signal.SIGINT)
        self.assertEqual(terminal.finish()[1], 0)


class CtlWatchTraps(TalvikTest):
    def test_counts_what_receivers_get(self):
        agent = self.start_agent()
        where = ["--socket", str(self.state / "agent.sock"), "--device", DEVICE]

        def ctl(*words):
            return subprocess.run([CTL, *words], stdin=subprocess.DEVNULL, capture_output=True, text=True, timeout=LIMIT,
                                  check=True).stdout

        ctl("trap", "add", "127.0.0.1", "--port", "9", "--agent", f"udp:127.0.0.1:{agent.port}", "--snmp-version", "2c",
            "--community", "writer")
        watch = subprocess.Popen([CTL, "watch", "traps", "--json", "--interval", "0.1", *where], stdin=subprocess.DEVNULL,
                                 stdout=subprocess.PIPE, text=True)
        self.addCleanup(watch.stdout.close)
        self.addCleanup(watch.wait, LIMIT)
        self.addCleanup(watch.kill)
        events = iter(watch.stdout.readline, "")
        first = next(event for event in map(json.loads, events) if event["what"] == "traps")
        self.assertIn(first["event"], ("receiver", "receiver-added"))
        self.assertEqual(first["receiver"]["index"], 1)
        ctl("trap", "test", "1", *where)
        changed = next(event for event in map(json.loads, events)
                       if event["event"] == "receiver-changed" and event["counted"]["sent"])
        self.assertEqual((changed["counted"]["sent"], changed["receiver"]["sent"]), (1, 1))


if __name__ == "__main__":
    unittest.main()
