"""talvikctl's help, its pages and the completion of shells, all made from its own command tree."""

import json
import os
import re
import shlex
import shutil
import subprocess
import unittest

from talvik_e2e import BIN, LIMIT, SOURCE, TalvikTest

PAGE = SOURCE / "docs" / "talvikctl.md"
MARK = "<!-- From here on: talvikctl help --format markdown -->\n"
CTL = str(BIN / "talvikctl")


def commands_of(entry):
    """The entry and all below it."""
    yield entry
    for below in entry["commands"]:
        yield from commands_of(below)


def words_of(example):
    """The words that talvikctl itself gets from a line of a shell."""
    words = shlex.split(example, comments=True)
    words = words[words.index("talvikctl") + 1:]
    ends = [place for place, word in enumerate(words) if word in ("|", ">")]
    return words[:ends[0]] if ends else words


class CtlHelp(TalvikTest):
    def ctl(self, *words, status=0):
        done = subprocess.run([CTL, *words], env=dict(os.environ, LC_ALL="C"), stdin=subprocess.DEVNULL,
                              capture_output=True, text=True, timeout=LIMIT)
        self.assertEqual(done.returncode, status, f"{words}: {done.stdout}{done.stderr}")
        return done.stdout

    def tree(self):
        return json.loads(self.ctl("help", "--json"))

    def test_every_command_and_option_is_explained(self):
        seen = list(commands_of(self.tree()))
        self.assertGreater(len(seen), 20)
        for entry in seen:
            with self.subTest(command=entry["path"]):
                self.assertTrue(entry["description"])
                self.assertTrue(entry["examples"])
                self.assertEqual(bool(entry["exitStatus"]), not entry["commands"] or entry["path"] == "talvikctl")
                for option in entry["options"] + entry["arguments"]:
                    self.assertTrue(option["description"], option["names"])
                if not entry["commands"] and entry["name"] != "completion":
                    self.assertIn("--json", [name for option in entry["options"] for name in option["names"]])

    def test_every_example_is_a_command_line(self):
        for entry in commands_of(self.tree()):
            for example in entry["examples"]:
                with self.subTest(example=example):
                    self.ctl("--parse-only", *words_of(example))
                    self.assertTrue(" ".join(["talvikctl", *words_of(example)]).startswith(entry["path"].split()[0]))

    def test_parse_only_finds_what_is_wrong_and_does_nothing(self):
        self.ctl("--parse-only", "alarm", "clear", "0", status=2)
        self.assertEqual(self.ctl("--parse-only", "alarm", "clear", "1", "--socket", "/nobody"), "")

    def test_help_is_the_same_as_a_command_and_as_an_option(self):
        for entry in commands_of(self.tree()):
            words = entry["path"].split()[1:]
            with self.subTest(command=entry["path"]):
                text = self.ctl("help", *words)
                self.assertEqual(text, self.ctl(*words, "--help"))
                self.assertIn("Examples:", text)
        self.ctl("help", "alarm", "shout", status=2)

    def test_the_reference_page_is_not_stale(self):
        written = PAGE.read_text()
        self.assertIn(MARK, written)
        self.assertEqual(written.split(MARK)[1].strip(), self.ctl("help", "--format", "markdown").strip(),
                         f"write what talvikctl help --format markdown prints behind the mark in {PAGE.name}")

    def test_the_commands_of_the_page_are_command_lines(self):
        examples = re.findall(r"^    (talvikctl .*)$", PAGE.read_text().split(MARK)[0], re.MULTILINE)
        self.assertGreater(len(examples), 5)
        for example in examples:
            with self.subTest(example=example):
                self.ctl("--parse-only", *words_of(example))

    def test_the_manual_page_has_every_command(self):
        page = self.ctl("help", "--format", "man")
        self.assertTrue(page.startswith('.TH TALVIKCTL 1 "" talvik "User commands"\n.SH NAME\n'))
        for entry in commands_of(self.tree()):
            self.assertIn(f"\n.SS {entry['path']}".replace("-", "\\-"), page)
        for line in page.splitlines():
            self.assertRegex(line, r"^(\.(TH|SH|SS|TP|PP|B|BR|I|IR|nf|fi)( |$)|[^.']|$|\\&)")

    def test_output_that_cannot_be_written_is_a_failure(self):
        with open("/dev/full", "w") as full:
            done = subprocess.run([CTL, "help", "--format", "man"], stdout=full, stderr=subprocess.PIPE, text=True,
                                  timeout=LIMIT)
        self.assertEqual(done.returncode, 1)
        self.assertIn("cannot write to standard output", done.stderr)


class CtlCompletion(TalvikTest):
    def script(self, shell):
        return subprocess.run([CTL, "completion", shell], capture_output=True, text=True, timeout=LIMIT, check=True).stdout

    def offered(self, line):
        """What bash would offer at the end of the line, cut up as bash itself does it."""
        words = [word for part in line.split(" ") for word in re.findall(r"=|[^=]+", part) or [""]]
        program = self.script("bash") + "\nCOMP_WORDS=(" + " ".join(shlex.quote(word) for word in words) + ")\n" + \
            f"COMP_CWORD={len(words) - 1}\n_talvikctl\nprintf '%s\\n' \"${{COMPREPLY[@]}}\"\n"
        done = subprocess.run(["bash", "--norc", "--noprofile", "-c", program], capture_output=True, text=True,
                              timeout=LIMIT, cwd=self.folder)
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        return done.stdout.split()

    def test_bash_offers_commands(self):
        self.assertEqual(self.offered("talvikctl al"), ["alarm"])
        self.assertEqual(self.offered("talvikctl alarm "), ["list", "raise", "event", "clear", "resend", "scenario"])
        self.assertEqual(self.offered("talvikctl help trap mo"), ["modify"])
        self.assertEqual(self.offered("talvikctl completion "), ["bash", "zsh", "fish"])
        self.assertEqual(self.offered("talvikctl nonsense al"), ["alarm"])

    def test_bash_offers_options_and_their_words(self):
        self.assertEqual(self.offered("talvikctl alarm list --af"), ["--after"])
        self.assertEqual(self.offered("talvikctl alarm list --color "), ["auto", "always", "never"])
        self.assertEqual(self.offered("talvikctl alarm list --color=al"), ["always"])
        self.assertEqual(self.offered("talvikctl alarm list --color="), ["auto", "always", "never"])
        self.assertEqual(self.offered("talvikctl alarm raise 1 --severity m"), ["minor", "major"])
        self.assertEqual(self.offered("talvikctl trap add a --type alarm-"), ["alarm-own-oid", "alarm-legacy"])
        self.assertEqual(self.offered("talvikctl alarm list --after "), [])
        self.assertEqual(self.offered("talvikctl --v"), ["--version"])

    def test_bash_offers_files(self):
        self.write("capture.bin", "")
        self.write("catalogue.json", "")
        for line in ("talvikctl package dump ca", "talvikctl alarm list --device ca", "talvikctl alarm list --device=ca",
                     "talvikctl trap list --credentials ca"):
            with self.subTest(line=line):
                self.assertEqual(sorted(self.offered(line)), ["capture.bin", "catalogue.json"])

    def test_every_shell_knows_every_command_and_option(self):
        tree = json.loads(subprocess.run([CTL, "help", "--json"], capture_output=True, timeout=LIMIT, check=True).stdout)
        for shell in ("bash", "zsh", "fish"):
            script = self.script(shell)
            for entry in commands_of(tree):
                with self.subTest(shell=shell, command=entry["path"]):
                    path = {"bash": f'"{entry["path"]}")', "zsh": f'_{entry["path"].replace(" ", "_")}() {{',
                            "fish": f"'__talvikctl_at{entry['path'][len('talvikctl'):]}'"}[shell]
                    self.assertIn(path, script)
                    for option in entry["options"]:
                        for name in option["names"]:
                            self.assertIn(f"-l {name[2:]} " if shell == "fish" and name.startswith("--") else
                                          f"-s {name[1:]} " if shell == "fish" else name, script)

    def test_the_scripts_are_right_for_their_shells(self):
        for shell in ("bash", "zsh", "fish"):
            if shutil.which(shell):
                with self.subTest(shell=shell):
                    file = self.write(f"completion.{shell}", self.script(shell))
                    done = subprocess.run([shell, "-n", str(file)], capture_output=True, text=True, timeout=LIMIT)
                    self.assertEqual((done.returncode, done.stderr), (0, ""))

    @unittest.skipUnless(shutil.which("fish"), "fish is not installed")
    def test_fish_offers_what_bash_does(self):
        file = self.write("completion.fish", self.script("fish"))

        def offered(line):
            done = subprocess.run(["fish", "--no-config", "-c", f"source {file}; complete -C {shlex.quote(line)}"],
                                  capture_output=True, text=True, timeout=LIMIT, cwd=self.folder,
                                  env=dict(os.environ, HOME=str(self.folder)))
            self.assertEqual(done.stderr, "")
            return sorted(part.split("\t")[0] for part in done.stdout.splitlines())

        self.assertEqual(offered("talvikctl alarm "), ["clear", "event", "list", "raise", "resend", "scenario"])
        self.assertEqual(offered("talvikctl alarm list --color "), ["always", "auto", "never"])
        self.assertEqual(offered("talvikctl alarm list --af"), ["--after"])
        self.write("capture.bin", "")
        self.assertIn("capture.bin", offered("talvikctl package dump ca"))


if __name__ == "__main__":
    unittest.main()
