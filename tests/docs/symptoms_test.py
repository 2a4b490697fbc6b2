#!/usr/bin/env python3
"""docs/troubleshooting.md quotes what programs say: each quotation is in the sources, or in the stock tools' library.

What an agent and the stock tools say in the most frequent cases is made here, too.
"""

import ctypes.util
import pathlib
import re
import tempfile
import unittest

from pages import SOURCE, read_page
from place import Place

PAGE = "docs/troubleshooting.md"
ROOMS = ("alarmconfig", "backend", "framework", "handlers", "host", "notify", "tools", "trap")
LITERAL = re.compile(r'"((?:[^"\\\n]|\\.)*)"')
HOLE = re.compile(r"\{[^}]*\}|%[-0-9.]*(?:ll|z)?[a-z]")
QUOTED = re.compile(r'"([^"]+ [^"]+)"')  # several words
TEXTS_OF_THE_SYSTEM = ("No such file or directory", "Permission denied", "Connection refused")


def texts_of(source):
    """The texts in C++ source, with "..." for what is put in when it runs."""
    texts, end = [], None
    for match in LITERAL.finditer(source):
        between = None if end is None else source[end:match.start()]
        literal = HOLE.sub("...", match[1].replace('\\"', '"').replace("\\n", " "))
        if between is not None and not between.strip():
            texts[-1] += literal
        elif between is not None and re.fullmatch(r"[^;{}]*[+?:][^;{}]*", between):
            texts[-1] += "..." + literal
        else:
            texts.append(literal)
        end = match.end()
    return texts


def sources_text():
    """All texts of the sources, one a line."""
    files = [file for room in ROOMS for file in sorted((SOURCE / room).rglob("*.cpp"))]
    return "\n".join(text for file in files for text in texts_of(file.read_text(encoding="utf-8")))


def library_text():
    """What the stock tools' library holds."""
    name = ctypes.util.find_library("netsnmp")
    found = [path for folder in ("/usr/lib", "/lib") for path in pathlib.Path(folder).glob(f"*/{name}*")]
    return "\n".join(path.read_bytes().decode("latin-1") for path in found[:1])


def pieces(quotation):
    """The parts of a quotation that do not differ from case to case; a sentence may be put together of several."""
    found = [piece.strip() for piece in re.split(r"\.\.\.|[:;] |[()]", quotation)]
    return [piece for piece in found if len(piece) > 3]


def missing_pieces(quotations, corpus):
    return [f"{line}: {piece!r}" for line, quotation in quotations for piece in pieces(quotation) if piece not in corpus]


class Quotations(unittest.TestCase):
    maxDiff = None

    def quotations(self):
        """What stands in blocks of text, and what stands between quotation marks elsewhere."""
        text = (SOURCE / PAGE).read_text(encoding="utf-8")
        page = read_page(PAGE, text)
        inside = {number: line for block in page.blocks for number, line in enumerate(block.lines, block.line)}
        quoted = [(number, match[1]) for number, line in enumerate(text.splitlines(), 1) if number not in inside
                  for match in QUOTED.finditer(line)]
        return quoted + [(number, line) for block in page.blocks if block.language == "text"
                         for number, line in enumerate(block.lines, block.line)]

    def test_are_what_the_programs_say(self):
        quotations = self.quotations()
        self.assertGreater(len(quotations), 30)
        # The program's own name is put in front elsewhere.
        cut = [(number, line.removeprefix("talvikctl: ")) for number, line in quotations]
        self.assertEqual(missing_pieces(cut, sources_text() + library_text() + "\n".join(TEXTS_OF_THE_SYSTEM + STOCK)), [])

    def test_are_found_missing_when_a_program_says_something_else(self):
        self.assertEqual(missing_pieces([(7, "cannot frobnicate ...: why not")], "cannot listen on ...: why not?"),
                         ["7: 'cannot frobnicate'"])

    def test_texts_of_sources_are_joined(self):
        self.assertEqual(texts_of('log("a {} b "\n    "c %d");'), ["a ... b c ..."])
        self.assertEqual(texts_of('fail("a " + path + ": b"); say("c");'), ["a ...: b", "c"])


# What the stock tools themselves say, not their library; SAID shows that they do.
STOCK = ("Timeout: No Response from", "Reason: ", "Unknown Object Identifier",
         "No more variables left in this MIB View (It is past the end of the MIB tree)")
READER = "-t 1 -r 0 -v3 -l authPriv -a SHA-256 -A AUTH -x AES -X PRIV -u reader"
STATUS = "1.3.6.1.4.1.99999.2.91.9.1.1.8.1"
CLEAR = "1.3.6.1.4.1.99999.2.91.10.1.2.0"
# What the page says of it, the command, and what is printed.
SAID = [
    ("an unknown community", f"snmpget -t 0.3 -r 0 -v2c -c unknown HOST:1161 {STATUS}", "Timeout: No Response from"),
    ("another privacy passphrase", f"snmpget {READER} -t 0.5 -X not-the-passphrase HOST:1161 {STATUS}",
     "Timeout: No Response from"),
    ("an engine ID that is not the agent's", f"snmpget {READER} -t 0.5 -e 0x80001F8801020304 HOST:1161 {STATUS}",
     "Timeout: No Response from"),
    ("an unknown user", f"snmpget {READER} -u nobody HOST:1161 {STATUS}", "Unknown user name"),
    ("another passphrase", f"snmpget {READER} -A not-the-passphrase HOST:1161 {STATUS}", "Authentication failure"),
    ("a lower level", f"snmpget {READER} -l authNoPriv HOST:1161 {STATUS}", "authorizationError"),
    ("a view without the subtree", f"snmpget -v2c -c blind HOST:1161 {STATUS}", "No Such Object"),
    ("a walk of that view", "snmpwalk -v2c -c blind HOST:1161 1.3.6.1.4.1.99999", "No more variables left in this MIB View"),
    ("an alarm that is not active", "snmpget -v2c -c public HOST:1161 1.3.6.1.4.1.99999.2.91.10.1.1.1.4.77", "No Such Instance"),
    ("a SET of a reader", f"snmpset {READER} HOST:1161 {CLEAR} u 1", "Reason: noAccess"),
    ("the same over SNMPv1", f"snmpset -v1 -c public HOST:1161 {CLEAR} u 1", "Reason: (noSuchName)"),
    ("a read-only column", f"snmpset {READER} -u admin HOST:1161 1.3.6.1.4.1.99999.2.91.9.1.1.5.1 s x", "Reason: notWritable"),
    ("a clear of what is not active", f"snmpset {READER} -u admin HOST:1161 {CLEAR} u 77", "Reason: inconsistentValue"),
    ("a name without the MIB", "snmpget -v2c -c public HOST:1161 talvikAlarmTitle.1", "Unknown Object Identifier"),
    ("talvikctl and an unknown user", "talvikctl trap list --snmp-user nobody", "does not know the user"),
    ("talvikctl as a reader", "talvikctl trap add 192.0.2.1 --snmp-user reader", "noAccess at the row; use a user or community"),
    ("talvikctl where nobody is", "talvikctl alarm list --socket /run/talvik/none.sock", "cannot list the active alarms at"),
    ("a state folder that is in use", "talvik-agentd", "is in use by another agent"),
    ("alarms that are in use", "talvik-backendd --socket /run/talvik/other.sock --state-dir /var/lib/talvik",
     "are in use by another process"),
    ("a port that is taken", "talvik-agentd --state-dir /run/talvik/state", "(is another agent running there?)"),
    ("a module that is not there", "talvik-agentd --module /run/talvik/none.so --check", "cannot start: module"),
]
AWAY = [
    ("the topology table", f"snmpget -v2c -c public HOST:1161 {STATUS}", "INTEGER: 2"),
    ("the alarm table", "snmpget -v2c -c public HOST:1161 1.3.6.1.4.1.99999.2.91.10.1.1.1.4.1",
     "Reason: (genError) A general failure occured"),
    ("a clear", f"snmpset {READER} -u admin HOST:1161 {CLEAR} u 1", "Reason: resourceUnavailable"),
    ("talvikctl backend status", "talvikctl backend status --socket /run/talvik/backend.sock", "down"),
]


class Symptoms(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="talvik-docs-")
        self.addCleanup(folder.cleanup)
        self.place = Place(folder.name)
        self.addCleanup(self.place.stop)
        with open(self.place.config, "a", encoding="ascii") as config:
            config.write(self.place.here('createUser reader SHA-256 "AUTHENTICATION-PASSPHRASE" AES "PRIVACY-PASSPHRASE"\n'
                                         "rouser reader authPriv -V all\nview nothing included .1.3.6.1.2.1.1\n"
                                         "rocommunity blind 127.0.0.1 -V nothing\n"))
        self.place.start_agent()

    def assert_said(self, cases):
        for what, command, text in cases:
            with self.subTest(what):
                self.assertIn(text, "\n".join(self.place.run(command).lines))

    def test_are_what_the_page_says(self):
        self.assert_said(SAID)

    def test_of_a_back_end_that_is_away(self):
        back_end = self.place.start(
            "talvik-backendd", "talvik-backendd --socket /run/talvik/backend.sock --state-dir /run/talvik/state")
        self.place.start("talvik-agentd", "talvik-agentd --backend unix:/run/talvik/backend.sock")
        back_end.stop()

        self.assert_said(AWAY)

        self.assertRegex(self.place.agent.log(), r"back end unix:\S+ is down: .*; commands fail until it answers again")
        self.assertRegex(self.place.agent.log(), r"no notifications from the back end unix:\S+: ")


if __name__ == "__main__":
    unittest.main()
