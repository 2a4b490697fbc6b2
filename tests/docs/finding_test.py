#!/usr/bin/env python3
"""The search for commands itself, on pages made for it: what is new is found, and what differs is told."""

import unittest

from commands import commands_of_page, differs, kind_of, unaccounted
from pages import read_page
from scenes import NotRun


def page(text):
    return read_page("docs/page.md", text)


def commands(text):
    return [(command.line, command.text, command.shown) for command in commands_of_page(page(text), {})]


def kinds(text):
    return [kind_of(block) for block in page(text).blocks]


class FindingCommands(unittest.TestCase):
    def test_finds_them_in_indented_blocks_with_what_they_show(self):
        self.assertEqual(commands("Text:\n\n    talvikctl alarm list\n    SERIAL  ID\n    ./dev run   # so\n"),
                         [(3, "talvikctl alarm list", ["SERIAL  ID"]), (5, "./dev run   # so", [])])

    def test_finds_them_behind_dollars(self):
        self.assertEqual(commands("```console\n$ frobnicate --now\nsnmpget this is printed\n$ sudo ls\n```\n"),
                         [(2, "frobnicate --now", ["snmpget this is printed"]), (4, "sudo ls", [])])

    def test_takes_every_line_of_a_shell_fence_but_comments(self):
        self.assertEqual(commands("```sh\n# first\nfrobnicate --now\n\nother\n```\n"),
                         [(3, "frobnicate --now", []), (5, "other", [])])

    def test_joins_continued_lines(self):
        self.assertEqual(commands("```sh\nsnmpset a \\\n    b \\\n    c\nls\n```\n"),
                         [(2, "snmpset a b c", []), (5, "ls", [])])

    def test_finds_those_with_variables_in_front(self):
        self.assertEqual(commands("    SMIPATH=a:b smilint -s\n\n\n    M=\"-m X -M Y\"\n"),
                         [(1, "SMIPATH=a:b smilint -s", []), (4, 'M="-m X -M Y"', [])])

    def test_tells_synopses_from_commands(self):
        found = commands_of_page(page("    talvikctl catalogue check FILE [--json]\n    talvikctl catalogue expand 1\n"), {})
        self.assertEqual([command.is_synopsis for command in found], [True, False])


class KindsOfBlocks(unittest.TestCase):
    def test_are_settings_data_or_commands(self):
        self.assertEqual(kinds("    view all included .1\n    rouser me authPriv\n"), ["settings"])
        self.assertEqual(kinds("```json\n{}\n```\n\n    {\"a\": 1}\n"), ["data", "data"])
        self.assertEqual(kinds("```text\nanything\n```\n"), ["data"])

    def test_are_nothing_where_it_cannot_be_told(self):
        self.assertEqual(kinds("    frobnicate-that-nobody-has --now\n"), [None])
        self.assertEqual(kinds("```\nfrobnicate-that-nobody-has --now\n```\n"), [None])
        found = list(unaccounted({"docs/page.md": page("A\n\n    frobnicate-that-nobody-has --now\n")}, {}))
        self.assertEqual(len(found), 1)
        self.assertTrue(found[0].startswith("docs/page.md:3: cannot tell what this block is: \"frobnicate"), found)

    def test_are_nothing_where_a_command_stands_in_a_text(self):
        self.assertEqual(kinds("```text\n$ talvikctl trap list\n```\n"), [None])
        self.assertEqual(kinds("```json\nsnmpget -v2c HOST\n```\n"), [None])

    def test_a_fence_that_is_not_closed_is_told(self):
        with self.assertRaisesRegex(AssertionError, "docs/page.md:2: this fence is not closed"):
            page("A\n```sh\nls\n")


class Comparing(unittest.TestCase):
    def test_takes_what_is_printed_as_it_is_shown(self):
        self.assertIsNone(differs(["a", "b"], ["a", "", "b"]))
        self.assertIsNone(differs(["a ... c"], ["a b c"]))
        self.assertIsNone(differs(["...", "b", "..."], ["a", "b", "c"]))

    def test_tells_each_difference(self):
        self.assertIn("shown: 'b'", differs(["a", "b"], ["a", "c"]))
        self.assertIn("shown: 'b'", differs(["a", "b"], ["a"]))
        self.assertIn("not shown: 'c'", differs(["a"], ["a", "c"]))
        self.assertIn("shown: 'a'", differs(["...", "b", "a"], ["a", "b"]))
        self.assertIn("shown", differs(["a ... c"], ["a b d"]))


class TheList(unittest.TestCase):
    def test_takes_whole_commands_and_beginnings(self):
        self.assertTrue(NotRun("./dev test", "", "", "").matches("./dev test"))
        self.assertFalse(NotRun("./dev test", "", "", "").matches("./dev test asan"))
        self.assertTrue(NotRun("./dev test*", "", "", "").matches("./dev test asan"))
        self.assertTrue(NotRun("./dev test*", "", "", "").matches("A='b c' ./dev test asan"))


if __name__ == "__main__":
    unittest.main()
