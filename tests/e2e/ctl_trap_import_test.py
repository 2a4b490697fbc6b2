"""talvikctl trap import gives a running agent the trap destinations of a list."""

import json
import os
import signal
import subprocess
import unittest

from ctl_watch_test import Terminal
from relay import Relay, is_set
from talvik_e2e import CONFIG, LIMIT, ROOT, TalvikTest, free_port, program

TRAPS = ROOT + ".2.91.10.4.1"
VIEWS = f"""
view noUser included {ROOT}
view noUser excluded {TRAPS}.1.8
rwcommunity blindToUsers 127.0.0.1 -V noUser
view whole included {ROOT}
view noVersion included {TRAPS}
view noVersion excluded {TRAPS}.1.5
com2sec halfway 127.0.0.1 halfway
group halfway v2c halfway
access halfway "" v2c noauth exact whole noVersion none
"""


class CutPath(Relay):
    """Lets so many SETs of v2c through; the answer to the next one is lost, or already the request itself, and so is
    everything after it."""

    def __init__(self, agent_port, sets, loses_the_request=False):
        self.left, self.loses_the_request = sets, loses_the_request
        super().__init__(agent_port)

    def take_request(self, request):
        if self.left < 0:
            return
        self.left -= is_set(request)
        if self.left >= 0:
            super().take_request(request)
        elif not self.loses_the_request:
            super().take_request(request)
            self.back.recv(65535)  # the agent has done it


def destination(index, address, port=162, version="v2c", kind="alarm", user="--"):
    return {"index": index, "address": address, "port": port, "version": version, "type": kind, "user": user}


LIST = [destination(1, "192.0.2.1"), destination(4, "nowhere.invalid", 10162, "v3", "alarm-own-oid", "monitor"),
        destination(7, "2001:db8::1", user="ä")]


class CtlTrapImport(TalvikTest):
    def setUp(self):
        self.config.write_text(CONFIG + VIEWS)
        self.agent = self.start_agent()
        self.home = self.folder / "home"
        self.home.mkdir()

    def command(self, *words, port=None, community="writer"):
        return [*program("talvikctl"), "trap", *words, "--agent", f"udp:127.0.0.1:{port or self.agent.port}",
                "--snmp-version", "2c", "--community", community]

    def settings(self):
        return {"HOME": str(self.home), "SNMPCONFPATH": str(self.home), "LC_ALL": "C"}

    def ctl(self, *words, status=0, given="", **where):
        """Runs a command, which must end with the status; returns standard output and error."""
        done = subprocess.run(self.command(*words, **where), env=dict(os.environ, **self.settings()), input=given,
                              capture_output=True, text=True, timeout=LIMIT)
        self.assertEqual(done.returncode, status, done.stdout + done.stderr)
        return done.stdout, done.stderr

    def list_of(self, agent):
        return self.ctl("list", "--json", port=agent.port)[0]

    def rows(self, agent=None):
        """What the agent has, without what it decides itself."""
        rows = json.loads(self.list_of(agent or self.agent))["destinations"]
        return [{name: row[name] for name in LIST[0]} for row in rows]

    def file(self, *destinations):
        return str(self.write("receivers.json", json.dumps(destinations)))

    def imported(self, *destinations, words=(), **how):
        return self.ctl("import", self.file(*destinations), *words, **how)

    def test_gives_another_agent_what_one_lists(self):
        self.imported(*LIST)
        self.assertEqual(self.rows(), LIST)
        exported = self.list_of(self.agent)
        other = self.start_agent(state_dir=self.folder / "other")
        out, error = self.ctl("import", "-", port=other.port, given=exported)
        self.assertEqual((out.splitlines()[-1], error), ("done: 3 added, 0 modified, 0 removed, 0 unchanged", ""))
        self.assertEqual(self.rows(other), LIST)
        self.assertEqual(self.ctl("import", "-", port=other.port, given=exported)[0], "nothing to do: 3 unchanged\n")
        for index in ("1", "4"):
            self.ctl("remove", index)
        self.ctl("add", "192.0.2.99", "--index", "4")
        self.ctl("import", "-", "--replace", given=exported)
        self.assertEqual(self.rows(), LIST)

    def test_restores_several_rows_of_one_receiver(self):
        twice = [destination(2, "192.0.2.1"), destination(5, "192.0.2.1", version="v3", user="me"), destination(6, "192.0.2.1")]
        self.imported(*twice)
        exported = self.list_of(self.agent)
        words = ("import", "-", "--replace")
        self.assertEqual(self.ctl(*words, given=exported)[0], "nothing to do: 3 unchanged\n")
        self.ctl("remove", "2")
        self.ctl("modify", "5", "--user", "you")
        self.assertIn("done: 1 added, 1 modified, 0 removed, 1 unchanged", self.ctl(*words, given=exported)[0])
        self.assertEqual(self.rows(), twice)

    def test_adds_and_changes_and_keeps_the_others(self):
        self.ctl("add", "192.0.2.9")
        self.ctl("add", "192.0.2.2", "--user", "me")
        out, _ = self.imported({"address": "192.0.2.2", "version": "v3"}, destination(1, "192.0.2.1"), "192.0.2.3")
        self.assertEqual(out.splitlines(), [
            "CHANGE  INDEX  ADDRESS    PORT  VERSION    TYPE   USER  RESULT",
            "add     3      192.0.2.1  162   v2c        alarm  --    done",
            "add     4      192.0.2.3  162   v2c        alarm  --    done",
            "modify  2      192.0.2.2  162   v2c -> v3  alarm  me    done",
            "done: 2 added, 1 modified, 0 removed, 0 unchanged, 1 not in the list"])
        self.assertEqual(self.rows(), [destination(1, "192.0.2.9"), destination(2, "192.0.2.2", version="v3", user="me"),
                                       destination(3, "192.0.2.1"), destination(4, "192.0.2.3")])

    def test_shows_in_a_dry_run_what_it_would_do(self):
        for address in ("192.0.2.9", "192.0.2.2", "192.0.2.8"):
            self.ctl("add", address)
        before = self.rows()
        words = ("--dry-run", "--replace")
        self.assertIn("nothing was changed: 1 to add, 1 to modify, 2 to remove, 0 unchanged",
                      self.imported("192.0.2.1", destination(2, "192.0.2.2", version="v3"), words=words)[0])
        told = json.loads(self.imported("192.0.2.1", destination(2, "192.0.2.2", version="v3"), words=(*words, "--json"))[0])
        self.assertEqual([(one["change"], one["result"], one["destination"]["index"]) for one in told["changes"]],
                         [("add", "planned", 4), ("modify", "planned", 2), ("remove", "planned", 1), ("remove", "planned", 3)])
        self.assertEqual((told["dryRun"], told["changes"][1]["before"]["version"]), (True, "v2c"))
        self.assertEqual(self.rows(), before)

    def test_changes_nothing_when_the_list_is_not_right(self):
        self.ctl("add", "192.0.2.9")
        for file, said in ((self.file("192.0.2.1", {"address": "192.0.2.2", "port": 0}),
                            "line 1, [1].port: expected a whole number from 1 to 65535"),
                           (str(self.folder / "none.json"), "none.json: cannot be read: No such file"),
                           (str(self.folder), "cannot be read: Is a directory"), ("-", "standard input: is empty")):
            with self.subTest(said=said):
                out, error = self.ctl("import", "--replace", file, status=2)
                self.assertEqual((out, said in error), ("", True), error)
        self.assertIn("would leave no receiver", self.imported(words=["--replace"], status=2)[1])
        self.assertEqual(self.rows(), [destination(1, "192.0.2.9")])

    def test_refuses_an_agent_that_does_not_show_all(self):
        self.ctl("add", "192.0.2.9")
        _, error = self.imported("192.0.2.9", community="blindToUsers", status=1)
        self.assertIn("does not show all columns of trap destination 1; use a user or community whose view", error)

    def test_says_how_far_it_came_and_goes_on_when_it_is_repeated(self):
        self.ctl("add", "192.0.2.9", "--index", "9")
        path = CutPath(self.agent.port, sets=2, loses_the_request=True)
        self.addCleanup(path.close)
        words = ["--replace", "--timeout", "300", "--retries", "0"]
        told = json.loads(self.imported(*LIST, words=[*words, "--json"], port=path.port, status=3)[0])
        self.assertEqual([one["result"] for one in told["changes"]], ["done", "done", "failed", "notTried"])
        self.assertIn("may have been made nonetheless", told["changes"][2]["reason"])
        self.assertEqual(self.rows(), [*LIST[:2], destination(9, "192.0.2.9")])
        out, _ = self.imported(*LIST, words=["--replace"])
        self.assertEqual(out.splitlines()[-1], "done: 1 added, 0 modified, 1 removed, 2 unchanged")
        self.assertEqual(self.rows(), LIST)

    def test_finds_done_what_was_not_answered(self):
        path = CutPath(self.agent.port, sets=1)
        self.addCleanup(path.close)
        out, error = self.imported(*LIST, words=["--timeout", "300", "--retries", "0"], port=path.port, status=3)
        self.assertEqual([line.split("  ")[-1].strip() for line in out.splitlines()], ["RESULT", "done", "failed", "not tried"])
        self.assertIn("talvikctl: stopped after 1 of 3 changes; run the command again to do the rest\n", error)
        self.assertEqual(self.rows(), LIST[:2])
        self.assertIn("done: 1 added, 0 modified, 0 removed, 2 unchanged", self.imported(*LIST)[0])
        self.assertEqual(self.rows(), LIST)

    def test_stops_when_the_agent_refuses(self):
        self.ctl("add", "192.0.2.1")
        self.ctl("add", "192.0.2.2", "--index", "5")
        told = json.loads(self.imported(destination(1, "192.0.2.1", user="me"), destination(5, "192.0.2.2", version="v3"),
                                        words=["--json"], community="halfway", status=1)[0])
        self.assertEqual([one["result"] for one in told["changes"]], ["done", "failed"])
        self.assertIn("noAccess at the version", told["changes"][1]["reason"])

    def test_fits_the_terminal_and_has_colours(self):
        running = Terminal(self.command("import", self.file(f"{'long' * 15}.example.net")), columns=70, **self.settings())
        self.addCleanup(running.close)
        text, status = running.finish()
        self.assertEqual(status, 0, text)
        self.assertEqual([len(line) <= 70 for line in text.replace("\x1b[32mdone\x1b[0m", "done").splitlines()], [True] * 3)
        self.assertIn("\x1b[32mdone\x1b[0m", text)
        self.assertRegex(text, " longlong[long]*…  162 ")

    def test_tells_that_nobody_answers(self):
        out, error = self.imported("192.0.2.1", words=["--timeout", "100"], port=free_port(), status=3)
        self.assertEqual(out, "")
        self.assertIn("make sure that talvik-agentd runs", error)

    def test_completes_when_it_is_repeated_after_an_interrupt(self):
        path = CutPath(self.agent.port, sets=1)
        self.addCleanup(path.close)
        running = Terminal(self.command("import", self.file(*LIST), port=path.port), **self.settings())
        self.addCleanup(running.close)
        running.read_until("change 2 of 3, ")
        running.process.send_signal(signal.SIGINT)
        self.assertEqual(running.finish()[1], -signal.SIGINT)
        self.assertEqual(self.rows(), LIST[:2])
        self.imported(*LIST)
        self.assertEqual(self.rows(), LIST)


if __name__ == "__main__":
    unittest.main()
