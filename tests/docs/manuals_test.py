#!/usr/bin/env python3
"""The manual pages of the daemons, which are written by hand, against what the programs themselves say."""

import os
import pathlib
import re
import subprocess
import unittest

SOURCE = pathlib.Path(__file__).resolve().parents[2]
BIN = pathlib.Path(os.environ.get("TALVIK_BIN_DIR", SOURCE / "build" / "release" / "bin"))
OPTION = re.compile(r"(?<![\w-])--[a-z][a-z-]*")


def options_of(program):
    done = subprocess.run([BIN / program, "--help"], capture_output=True, text=True, timeout=30, check=True)
    return {word for line in done.stdout.splitlines() if re.match(r"  (-h,)?--", line)
            for word in OPTION.findall(line.split()[0].replace(",", " "))}


def described_in(page):
    """The options that have an entry of their own."""
    lines = page.replace("\\-", "-").splitlines()
    return {OPTION.search(entry).group() for mark, entry in zip(lines, lines[1:]) if mark == ".TP" and OPTION.search(entry)}


class Manuals(unittest.TestCase):
    def check(self, program):
        page = (SOURCE / "packaging" / "man" / f"{program}.8").read_text()
        self.assertIn("--log-level", options_of(program))
        self.assertEqual(described_in(page), options_of(program))

    def test_of_the_agent_has_every_option(self):
        self.check("talvik-agentd")

    def test_of_the_back_end_has_every_option(self):
        self.check("talvik-backendd")


if __name__ == "__main__":
    unittest.main()
