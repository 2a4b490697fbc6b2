#!/usr/bin/env python3
"""Makes docs/mib-reference.md of the MIB: its text, as libsmi reads it, and the description that the agent loads; and
docs/agent-mib-reference.md of the text of the MIB that tells the agent's health.

Without arguments it writes both. --check says whether the files are what it would write, and ends with 1 if not.
"""

import argparse
import json
import re
import sys
import textwrap

from mib_text import AGENT_MIB_TEXT, MIB_DESCRIPTION, SOURCE, MibTextError, read_mib

REFERENCE = SOURCE / "docs" / "mib-reference.md"
AGENT_REFERENCE = SOURCE / "docs" / "agent-mib-reference.md"
COMMAND = "tools/dev/mib_reference.py"
WIDTH = 128

INTRODUCTION = f"""\
<!-- Made by {COMMAND} of the files KEL-TALVIK-MIB in mibs/. Change those and run it again. -->

Every object and notification of the private MIB. The page is made of `mibs/KEL-TALVIK-MIB.txt`, which managers load, and of
`mibs/KEL-TALVIK-MIB.json`, which the agent loads; [mibs/README.md](../mibs/README.md) says how to load it, and
[day-to-day.md](day-to-day.md) how to work with it. Tools show an Unsigned32 as Gauge32: in messages the two are one type."""
FOOT = "[The guide](README.md) · Next: [MIB reference: the agent's health](agent-mib-reference.md)"
AGENT_INTRODUCTION = f"""\
<!-- Made by {COMMAND} of mibs/TALVIK-AGENT-MIB.txt. Change that and run it again. -->

Every object of what the agent tells of itself. The page is made of `mibs/TALVIK-AGENT-MIB.txt`;
[operations.md](operations.md#health-of-the-agent) says which of them are worth an alarm."""
AGENT_FOOT = "[The guide](README.md) · Next: [Back-end protocol](backend-protocol.md)"


def wrapped(text, start="", indent=""):
    return textwrap.fill(text, WIDTH, initial_indent=start, subsequent_indent=indent, break_long_words=False,
                         break_on_hyphens=False)


class Page:
    """One page in the making."""

    def __init__(self, module, description):
        self.module = module
        self.told = {column["name"]: column for table in description["tables"] for column in table["columns"]}
        self.told |= {table["name"]: table for table in description["tables"]}
        self.conventions = {one.name for one in module.conventions}
        names = [one.name for one in module.objects() + module.tables + module.notifications]
        self.names = re.compile(r"\b(" + "|".join(sorted([*names, *self.conventions], key=len, reverse=True)) + r")\b")
        self.parts = []

    def add(self, *parts):
        self.parts += parts

    def inline(self, text):
        """Text within a line, with the names of the MIB set apart."""
        return self.names.sub(r"`\1`", text.replace("<", "&lt;").replace("*", r"\*"))

    def prose(self, text):
        """A description: its paragraphs, and what it says label by label as a list."""
        for paragraph in text.split("\n\n"):
            if not re.match(r"\w+\(\d+\)  ", paragraph):
                self.add(wrapped(self.inline(" ".join(paragraph.split()))))
                continue
            items = re.split(r"^(\w+\(\d+\))  ", paragraph, flags=re.MULTILINE)[1:]
            self.add("\n".join(wrapped(self.inline(" ".join(meaning.split())), f"- {label}: ", "  ")
                               for label, meaning in zip(items[::2], items[1::2])))

    def table(self, heading, rows):
        lines = ["| " + " | ".join(row) + " |" for row in (heading, *rows)]
        self.add("\n".join([lines[0], "|" + "---|" * len(heading), *lines[1:]]))

    def syntax(self, syntax):
        """An object's syntax in a few words."""
        shown = syntax.written
        if shown in self.conventions:
            shown = f"[{shown}](#{shown.lower()})"
        elif syntax.labels and shown == "INTEGER":
            shown += ": " + labels_of(syntax)
        if syntax.own_bounds:
            what = " octets" if syntax.base == "OCTET STRING" else ""
            shown += f", {' or '.join(f'{low} to {high}' for low, high in syntax.own_bounds)}{what}"
        return shown

    def facts(self, one):
        """What there is to know of an object besides its description."""
        told = self.told.get(one.name, {})
        parts = [f"`{one.oid}`", self.syntax(one.syntax), one.access]
        parts += [f"in {one.units}"] if one.units else []
        parts += [f"default {one.default}"] if one.default else []
        parts += ["needed to create a row"] if told.get("required") else []
        accepted = self.module.write_syntaxes.get(one.name)
        parts += ["takes " + ", ".join(accepted)] if accepted else []
        parts += [f"writing it changes `{told['aliasOf']}`"] if "aliasOf" in told else []
        return wrapped(" · ".join(parts))

    def objects(self, objects):
        for one in objects:
            self.add(f"#### {one.name}", self.facts(one))
            self.prose(one.description)

    def overview(self):
        rows = [(one.oid, one.name, "table", one.description) for one in self.module.tables]
        rows += [(f"{one.oid}.0", one.name, f"scalar, {one.access}", one.description) for one in self.module.scalars]
        rows += [(one.oid, one.name, "notification", one.description) for one in self.module.notifications]
        self.add("## At a glance")
        self.table(("OID", "Name", "Kind", "What it is"),
                   [(f"`{oid}`", f"[{name}](#{name.lower()})", kind, self.inline(first_sentence(text)))
                    for oid, name, kind, text in sorted(rows, key=lambda row: [int(part) for part in row[0].split(".")])])

    def tables(self):
        self.add("## Tables")
        for table in self.module.tables:
            told = self.told.get(table.name, {})
            parts = [f"`{table.oid}`", "index " + ", ".join(f"`{name}`" for name in table.index)]
            parts += [f"rows are created and deleted by `{told['rowStatus']}`"] if "rowStatus" in told else []
            if told.get("answerLifetimeMs"):
                parts += [f"an answer is kept for {told['answerLifetimeMs'] / 1000:g} s at most"]
            self.add(f"### {table.name}", wrapped(" · ".join(parts)))
            self.prose(table.description)
            self.prose(table.row_description)
            self.table(("Column", "Name", "Syntax", "Access"),
                       [(one.oid.rsplit(".", 1)[1], f"[{one.name}](#{one.name.lower()})", self.syntax(one.syntax), one.access)
                        for one in table.columns])
            self.objects(table.columns)

    def notifications(self):
        if not self.module.notifications:
            return
        objects = {one.name: one for one in self.module.notification_objects}
        self.add("## Notifications")
        for one in self.module.notifications:
            parent = objects[one.members[0]].oid.rsplit(".", 1)[0]
            self.add(f"### {one.name}", wrapped(f"`{one.oid}` · {len(one.members)} objects under `{parent}`"))
            self.prose(one.description)
        parents = dict.fromkeys(one.oid.rsplit(".", 1)[0] for one in objects.values())
        for parent in parents:
            members = [one for one in objects.values() if one.oid.startswith(parent + ".")]
            carriers = [f"`{one.name}`" for one in self.module.notifications if members[0].name in one.members]
            self.add(f"### Objects under {parent}", f"In {' and '.join(carriers)}, each as instance 0.")
            self.table(("Number", "Name", "Syntax"),
                       [(one.oid.rsplit(".", 1)[1], f"[{one.name}](#{one.name.lower()})", self.syntax(one.syntax))
                        for one in members])
            self.objects(members)

    def types(self):
        if not self.module.conventions:
            return
        self.add("## Textual conventions")
        for one in self.module.conventions:
            bounds = "".join(f", {low} to {high} octets" for low, high in one.syntax.own_bounds)
            hint = f" · display hint {one.hint}" if one.hint else ""
            self.add(f"### {one.name}", wrapped(one.syntax.base + bounds + (": " if one.syntax.labels else "")
                                                + labels_of(one.syntax) + hint))
            self.prose(one.description)

    def conformance(self):
        self.add("## Conformance")
        self.table(("Group", "OID", "Members"), [(one.name, f"`{one.oid}`", ", ".join(one.members))
                                                 for one in self.module.groups])
        self.table(("Compliance statement", "Status", "Mandatory groups"),
                   [(one.name, one.status, ", ".join(one.members)) for one in self.module.compliances])
        self.add("## Revisions")
        self.table(("Date (UTC)", "What changed"), [(date, self.inline(" ".join(text.split())))
                                                    for date, text in self.module.revisions])

    def text(self, introduction, foot):
        self.add(f"# MIB reference: {self.module.name}", introduction)
        self.prose(self.module.description)
        self.overview()
        self.tables()
        self.add("## Scalars")
        for one in self.module.scalars:
            self.add(f"### {one.name}", self.facts(one))
            self.prose(one.description)
        self.notifications()
        self.types()
        self.conformance()
        self.add("---", foot)
        return "\n\n".join(self.parts) + "\n"


def labels_of(syntax):
    return ", ".join(f"{label}({number})" for label, number in syntax.labels.items())


def first_sentence(text):
    return re.split(r"(?<=\.)\s", " ".join(text.split()), maxsplit=1)[0]


def reference(path=None, description=None):
    """The page for the MIB in those files; those of the source tree if there are none."""
    module = read_mib(path) if path else read_mib()
    return Page(module, json.loads((description or MIB_DESCRIPTION).read_text())).text(INTRODUCTION, FOOT)


def agent_reference(path=AGENT_MIB_TEXT):
    """The page of the agent's health; the agent needs no description of it."""
    return Page(read_mib(path), {"tables": []}).text(AGENT_INTRODUCTION, AGENT_FOOT)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--check", action="store_true", help="write nothing, say whether the file is up to date")
    arguments = parser.parse_args()
    try:
        texts = {REFERENCE: reference(), AGENT_REFERENCE: agent_reference()}
    except MibTextError as error:
        sys.exit(f"mib_reference: {error}")
    for page, text in texts.items():
        if not arguments.check:
            page.write_text(text)
        elif not page.exists() or page.read_text() != text:
            sys.exit(f"{page.relative_to(SOURCE)} is not what the MIB says now; run {COMMAND}")


if __name__ == "__main__":
    main()
