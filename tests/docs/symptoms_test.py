#!/usr/bin/env python3
"""docs/troubleshooting.md quotes what programs say, and programs say all that it quotes.

A quotation is what stands in a block of text or between quotation marks, with "..." for what differs. Each is either part of a text in
the sources, or has a row of ROWS below: a command that is run here and prints it. Each row stands on the page.
"""

import pathlib
import re
import signal
import tempfile
import unittest
from typing import NamedTuple

from pages import SOURCE, read_page
from place import Place
from talvik_e2e import wait_until

PAGE = "docs/troubleshooting.md"
ROOMS = ("alarmconfig", "backend", "framework", "handlers", "host", "notify", "tools", "trap")
LITERAL = re.compile(r'"((?:[^"\\\n]|\\.)*)"')
HOLE = re.compile(r"\{[^}]*\}|%[-0-9.]*(?:ll|z)?[a-z]")
QUOTED = re.compile(r'"([^"]*)"')


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


def texts_of_the_sources():
    files = [file for room in ROOMS for file in sorted((SOURCE / room).rglob("*.cpp"))]
    return [text for file in files for text in texts_of(file.read_text(encoding="utf-8"))]


def pattern(quotation):
    """What finds the quotation in one line; "..." stands for anything."""
    parts = [re.escape(part.strip()) for part in quotation.removeprefix("talvikctl: ").split("...")]
    return re.compile(".*".join(parts))


def quotations_of(text):
    """Line and text of each quotation: what stands in blocks of text, and several words between quotation marks in one paragraph or
    table row."""
    page = read_page(PAGE, text)
    inside = {number for block in page.blocks for number, _ in enumerate(block.lines, block.line)}
    prose = "\n".join("" if number in inside or line.startswith("```") else line
                      for number, line in enumerate(text.splitlines(), 1))
    found = [(number, line) for block in page.blocks if block.language == "text"
             for number, line in enumerate(block.lines, block.line) if line.strip()]
    for part in re.finditer(r"(?m)^[|#].*$|(?:^(?![|#]).+\n?)+", prose):
        line = prose.count("\n", 0, part.start()) + 1
        found += [(line, " ".join(words)) for quoted in QUOTED.findall(part[0]) if len(words := quoted.split()) > 1]
    return found


def said_by_nobody(quotations, texts, rows):
    """Where each quotation stands that is part of no text and has no row."""
    said = {row.text for row in rows}
    return [f"{PAGE}:{line}: nothing says {quotation!r}" for line, quotation in quotations
            if quotation not in said and not any(pattern(quotation).search(text) for text in texts)]


class Said(NamedTuple):
    """A text of the page, and a command that prints it; without a command it is in the agent's log."""

    what: str
    command: str
    text: str
    printed: str = ""  # where that is something else than the text, as of a value that the page describes


READER = "-t 1 -r 0 -v3 -l authPriv -a SHA-256 -A AUTH -x AES -X PRIV -u reader"
PUBLIC = "-t 1 -r 0 -v2c -c public"
STATUS = "1.3.6.1.4.1.99999.2.91.9.1.1.8.1"
ALARM = "1.3.6.1.4.1.99999.2.91.10.1.1.1.4"
CLEAR = "1.3.6.1.4.1.99999.2.91.10.1.2.0"
NO_ACCESS = "talvikctl: ... refused to ... trap destination ...: ...noAccess...; use a user or community that may write"
NO_SUCH_USER = "talvikctl: ... does not know the user; name a user that the agent's configuration creates"
# Of a running agent.
SAID = [
    Said("where it listens", "", "ready, listening on ..."),
    Said("an unknown community", f"snmpget -t 0.3 -r 0 -v2c -c unknown HOST:1161 {STATUS}", "Timeout: No Response from ..."),
    Said("another privacy passphrase", f"snmpget {READER} -t 0.5 -X not-the-passphrase HOST:1161 {STATUS}",
         "Timeout: No Response from ..."),
    Said("an engine ID that is not the agent's", f"snmpget {READER} -t 0.5 -e 0x80001F8801020304 HOST:1161 {STATUS}",
         "Timeout: No Response from ..."),
    Said("an unknown user", f"snmpget {READER} -u nobody HOST:1161 {STATUS}", "Unknown user name"),
    Said("another passphrase", f"snmpget {READER} -A not-the-passphrase HOST:1161 {STATUS}",
         "Authentication failure (incorrect password, community or key)"),
    Said("a lower level", f"snmpget {READER} -l authNoPriv HOST:1161 {STATUS}",
         "authorizationError (access denied to that object)"),
    Said("a manager that remembers more boots", f"snmpget {READER} -t 0.3 -Z 1000,1000 -Dusm HOST:1161 {STATUS}",
         "Remote boot count invalid"),
    Said("a view without the subtree", f"snmpget -v2c -c blind HOST:1161 {STATUS}", "No Such Object"),
    Said("the same in full", f"snmpget -v2c -c blind HOST:1161 {STATUS}", "No Such Object available on this agent at this OID"),
    Said("a walk of that view", "snmpwalk -v2c -c blind HOST:1161 1.3.6.1.4.1.99999",
         "No more variables left in this MIB View (It is past the end of the MIB tree)"),
    Said("an alarm that is not active", f"snmpget {PUBLIC} HOST:1161 {ALARM}.77", "No Such Instance currently exists at this OID"),
    Said("a SET of a reader", f"snmpset {READER} HOST:1161 {CLEAR} u 1", "Reason: noAccess"),
    Said("the same over SNMPv1", f"snmpset -v1 -c public HOST:1161 {CLEAR} u 1",
         "Reason: (noSuchName) There is no such variable name in this MIB."),
    Said("a read-only column", f"snmpset {READER} -u admin HOST:1161 1.3.6.1.4.1.99999.2.91.9.1.1.5.1 s x",
         "Reason: notWritable (That object does not support modification)"),
    Said("a clear of what is not active", f"snmpset {READER} -u admin HOST:1161 {CLEAR} u 77",
         "Reason: inconsistentValue (The set value is illegal or unsupported in some way)"),
    Said("a name without the MIB", f"snmpget {PUBLIC} HOST:1161 talvikAlarmTitle.1", "Unknown Object Identifier ..."),
    Said("talvikctl and an unknown user", "talvikctl trap list --snmp-user nobody", NO_SUCH_USER),
    Said("talvikctl as a reader", "talvikctl trap add 192.0.2.1 --snmp-user reader", NO_ACCESS),
    Said("talvikctl and an agent that is not there", "talvikctl trap list --agent udp:127.0.0.1:9 --timeout 100",
         "talvikctl: no answer from ..."),
    Said("talvikctl where nobody is", "talvikctl alarm list --socket /run/talvik/none.sock",
         "talvikctl: ...: cannot connect: ..."),
    Said("the reason of it", "talvikctl alarm list --socket /run/talvik/none.sock",
         "cannot connect: No such file or directory"),
    Said("a state folder that is in use", "talvik-agentd",
         "the state directory ... is in use by another agent: end it, or give this one another --state-dir"),
    Said("alarms that are in use", "talvik-backendd --socket /run/talvik/other.sock --state-dir /var/lib/talvik",
         "... are in use by another process: end it (fuser shows which one it is)"),
    Said("a port that is taken", "talvik-agentd --state-dir /run/talvik/state",
         "cannot listen on ...: ... (is another agent running there?)"),
    Said("a module that is not there", "talvik-agentd --module /run/talvik/none.so --check",
         "... talvik-agentd cannot start: module ...: ..."),
    Said("a word that does not exist", "echo wrong > /run/talvik/wrong.conf; talvik-agentd --config /run/talvik/wrong.conf --check",
         "... talvik-agentd cannot start: agent configuration ..."),
    Said("a device configuration that is no XML",
         "echo '<a>' > /run/talvik/wrong.xml; talvik-agentd --device /run/talvik/wrong.xml --check",
         "... talvik-agentd cannot start: device configuration ..., line ...: ..."),
    Said("trap settings of a wrong type",
         "echo '{\"users\": 1}' > /run/talvik/wrong.json; talvik-agentd --trap-settings /run/talvik/wrong.json --check",
         "trap settings ...: expected ..."),
]
# Of an agent with a back end of its own.
THERE = [
    Said("a socket that is taken", "talvik-backendd --socket /run/talvik/backend.sock --state-dir /run/talvik/other",
         "cannot listen on unix:...: another program listens there: stop it or choose another path"),
]
# Of the same once its back end has gone.
AWAY = [
    Said("the topology table", f"snmpget {PUBLIC} HOST:1161 {STATUS}", "Column 8 of the topology table shows 2", "INTEGER: 2"),
    Said("the alarm table", f"snmpget {PUBLIC} HOST:1161 {ALARM}.1", "Reason: (genError) A general failure occured"),
    Said("a clear", f"snmpset {READER} -u admin HOST:1161 {CLEAR} u 1", "a clear resourceUnavailable",
         "Reason: resourceUnavailable"),
    Said("talvikctl backend status", "talvikctl backend status --socket /run/talvik/backend.sock", "The back end is away", "down"),
    Said("the log of it", "", "back end ... is down: ...; commands fail until it answers again"),
    Said("the log of notifications", "", "no notifications from the back end unix:...: ...; trying again, at least every ... ms. "
         "It keeps what it has to report meanwhile"),
    Said("the log of requests", "", "... the back end cannot be reached (...); requests for it are answered genErr"),
]
# Of an agent that may send small messages only.
SMALL = [
    Said("many variables", f"snmpget {PUBLIC} HOST:1161" + f" {STATUS}" * 40,
         "(tooBig) Response message would have been too large."),
]
# Of an agent that is told to read its configuration again.
REFUSED = [
    Said("a wrong line", "", "SIGHUP: agent configuration ...: ...; access control and users stay as they were"),
]
MISSPELT = [
    Said("a misspelt word", "", "...: line ...: Warning: Unknown token: ..."),
    Said("an address", "", "SIGHUP: agent configuration ...: ... has changed; it takes effect at the next start"),
]
FULL = [
    Said("a folder that is a file", "", "cannot be written: ", "net-snmp/talvik-agentd.conf cannot be written: Not a directory"),
]
ROWS = SAID + THERE + AWAY + SMALL + REFUSED + MISSPELT + FULL


class Quotations(unittest.TestCase):
    maxDiff = None

    def page(self):
        return (SOURCE / PAGE).read_text(encoding="utf-8")

    def test_are_what_the_programs_say(self):
        quotations = quotations_of(self.page())
        self.assertGreater(len(quotations), 50)
        self.assertEqual(said_by_nobody(quotations, texts_of_the_sources(), ROWS), [])

    def test_that_are_made_here_stand_on_the_page(self):
        page = " ".join(self.page().split())
        self.assertEqual([row for row in ROWS if row.text not in page], [])

    def test_are_found_missing_when_nothing_says_them(self):
        quotations = [(7, "cannot frobnicate ...: why not"), (8, "cannot listen on ...: why")]
        self.assertEqual(said_by_nobody(quotations, ["cannot listen on ...: why not?", "frobnicate"], []),
                         [f"{PAGE}:7: nothing says 'cannot frobnicate ...: why not'"])

    def test_are_found_wherever_they_stand(self):
        text = 'It says "one\nthing" and\n\n| "word" | or | "in a row" |\n| "word" |\n\n```text\nin a block\n```\n'
        self.assertEqual(quotations_of(text), [(8, "in a block"), (1, "one thing"), (4, "in a row")])

    def test_texts_of_sources_are_joined(self):
        self.assertEqual(texts_of('log("a {} b "\n    "c %d");'), ["a ... b c ..."])
        self.assertEqual(texts_of('fail("a " + path + ": b"); say("c");'), ["a ...: b", "c"])


class Symptoms(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="talvik-docs-")
        self.addCleanup(folder.cleanup)
        self.place = Place(folder.name)
        self.addCleanup(self.place.stop)

    def configure(self, text):
        with open(self.place.config, "a", encoding="ascii") as config:
            config.write(self.place.here('createUser reader SHA-256 "AUTHENTICATION-PASSPHRASE" AES "PRIVACY-PASSPHRASE"\n'
                                         "rouser reader authPriv -V all\n" + text))

    def assert_said(self, rows):
        for row in rows:
            looked_for = pattern(row.printed or row.text)
            with self.subTest(row.what):
                if row.command:
                    self.assertRegex("\n".join(self.place.run(row.command).lines), looked_for)
                else:
                    wait_until(lambda: looked_for.search(self.place.agent.log()), f"{row.text}:\n{self.place.agent.log()}")

    def test_of_a_running_agent(self):
        self.configure("view nothing included .1.3.6.1.2.1.1\nrocommunity blind 127.0.0.1 -V nothing\n")
        self.place.start_agent()

        self.assert_said(SAID)

    def test_of_a_back_end_that_is_away(self):
        self.configure("")
        back_end = self.place.start(
            "talvik-backendd", "talvik-backendd --socket /run/talvik/backend.sock --state-dir /run/talvik/state")
        self.place.start("talvik-agentd", "talvik-agentd --backend unix:/run/talvik/backend.sock")
        self.assert_said(THERE)

        back_end.stop()
        self.assert_said(AWAY)

    def test_of_an_agent_of_small_messages(self):
        self.configure("[snmp] sendMessageMaxSize 484\n")
        self.place.start_agent()

        self.assert_said(SMALL)

    def reload_with(self, text):
        with open(self.place.config, "a", encoding="ascii") as config:
            config.write(text)
        self.place.agent.send(signal.SIGHUP)

    def test_of_a_configuration_that_is_read_again(self):
        self.place.start_agent()
        good = self.place.config.read_text(encoding="ascii")
        self.reload_with("view talvik sideways .1\n")
        self.assert_said(REFUSED)

        self.place.config.write_text(good, encoding="ascii")
        self.reload_with("misspelt word\nagentAddress udp:1\n")
        self.assert_said(MISSPELT)

        state = pathlib.Path(self.place.here("/var/lib/talvik/net-snmp"))
        state.rename(state.with_name("moved"))
        state.write_text("", encoding="ascii")
        self.reload_with("rocommunity late 127.0.0.1\n")
        self.assert_said(FULL)


if __name__ == "__main__":
    unittest.main()
