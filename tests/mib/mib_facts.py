"""What the MIBs say, fact by fact: from the text by libsmi and by net-snmp, and from the agent's description.

A fact is a value under the name that it is about and what it tells of it, such as ("talvikTrapPort", "access").
"""

import json
import os
import pathlib
import re
import subprocess
import sys
import tempfile

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "tools" / "dev"))

from mib_text import AGENT_MIB_TEXT, LIMIT, MIB_DESCRIPTION, MIB_TEXT, STUBS, read_mib  # noqa: E402

DATE_AND_TIME = "DateAndTime"


def run_tool(*command, path=MIB_TEXT):
    """Runs a tool on the MIB at `path`, without anything of this machine's set-up."""
    folders = f"{path.parent}:{STUBS}"
    with tempfile.TemporaryDirectory(prefix="talvik-mib-") as home:
        (pathlib.Path(home) / "cert_indexes").mkdir()  # the tools tell when they make it
        environment = dict(os.environ, SMIPATH=folders, MIBDIRS=folders, MIBS="", LC_ALL="C", SNMPCONFPATH=home,
                           SNMP_PERSISTENT_DIR=home)
        return subprocess.run([str(part) for part in command], stdin=subprocess.DEVNULL, capture_output=True, text=True,
                              timeout=LIMIT, env=environment)


def object_facts(name, oid, syntax, access, labels, is_date_and_time):
    return {(name, "oid"): oid, (name, "syntax"): syntax, (name, "access"): access, (name, "enumeration"): labels,
            (name, "is a DateAndTime"): is_date_and_time}


def facts_of_text(path=MIB_TEXT):
    """As libsmi reads it."""
    module = read_mib(path)
    facts = {(module.name, "root"): module.root}
    for table in module.tables:
        statuses = [column.name for column in table.columns if column.syntax.written == "RowStatus"]
        facts |= {(table.name, "oid"): table.oid, (table.name, "index"): table.index,
                  (table.name, "columns"): [column.name for column in table.columns],
                  (table.name, "row status"): statuses[0] if statuses else None,
                  (table.name, "is described"): bool(table.description and table.row_description)}
    for one in module.objects():
        syntax = one.syntax
        facts |= object_facts(one.name, one.oid, syntax.base, one.access, syntax.labels, syntax.written == DATE_AND_TIME)
        facts |= {(one.name, "bounds"): list(syntax.own_bounds), (one.name, "is described"): bool(one.description)}
    for one in module.notifications:
        facts |= {(one.name, "oid"): one.oid, (one.name, "objects"): one.members,
                  (one.name, "is described"): bool(one.description)}
    return facts


def facts_of_description(description=None):
    """As the agent is told."""
    mib = description or json.loads(MIB_DESCRIPTION.read_text())
    facts = {(mib["module"], "root"): mib["root"]}

    def add(one, oid, access):
        facts.update(object_facts(one["name"], oid, one["syntax"], access, one.get("enumeration", {}),
                                  one.get("format") == "dateAndTime"))
        bounds = one.get("range", one.get("size"))
        facts.update({(one["name"], "bounds"): [tuple(bounds)] if bounds else [],
                      (one["name"], "is described"): bool(one.get("description"))})

    for table in mib["tables"]:
        name = table["name"]
        facts |= {(name, "oid"): table["oid"], (name, "index"): table["index"],
                  (name, "columns"): [column["name"] for column in table["columns"]],
                  (name, "row status"): table.get("rowStatus"), (name, "is described"): True}
        for column in table["columns"]:
            add(column, f"{table['oid']}.1.{column['tag']}", column["access"])
    for one in mib["scalars"]:
        add(one, one["oid"], one["access"])
    for one in mib["notificationObjects"]:
        add(one, one["oid"], "accessible-for-notify")
    for one in mib["notifications"]:
        facts |= {(one["name"], "oid"): one["oid"], (one["name"], "objects"): one["objects"],
                  (one["name"], "is described"): bool(one.get("description"))}
    return facts


BLOCK = re.compile(r"^(?P<name>\w+) (?:OBJECT|NOTIFICATION)-TYPE\n(?P<clauses>.*?)^::= \{ (?P<place>[^}]*) \}",
                   re.MULTILINE | re.DOTALL)


def facts_of_net_snmp(names, path=MIB_TEXT):
    """As net-snmp's parser reads the objects and notifications of these names; it does not keep all that libsmi does."""
    result = run_tool("snmptranslate", "-m", path, "-Td", *(f"{path.stem}::{name}" for name in names), path=path)
    if result.returncode != 0:
        raise AssertionError(result.stderr)
    facts = {}
    for block in BLOCK.finditer(re.sub(r' *DESCRIPTION\t"[^"]*"\n', "", result.stdout)):
        clauses = dict(line.split("\t", 1) for line in block["clauses"].replace("\t\t", "\t").splitlines() if "\t" in line)
        clauses = {key.strip(): value.strip() for key, value in clauses.items()}
        oid = ".".join(re.findall(r"\d+(?=\)|$)", re.sub(r"\w+\((\d+)\)", r"(\1)", block["place"])))
        name = block["name"]
        if "OBJECTS" in clauses:
            facts |= {(name, "oid"): oid, (name, "objects"): re.findall(r"\w+", clauses["OBJECTS"])}
        elif "SYNTAX" in clauses:
            base = re.match(r"[\w ]*\w", clauses["SYNTAX"])[0]
            labels = {label: int(number) for label, number in re.findall(r"(\w+)\((\d+)\)", clauses["SYNTAX"])}
            facts |= object_facts(name, oid, "INTEGER" if base == "Integer32" else base, clauses["MAX-ACCESS"], labels,
                                  f"CONVENTION {DATE_AND_TIME}" in block["clauses"])
    return facts


def differences(one, other, keys=None):
    """What the two say differently, a line each; `keys` narrows it down to some facts."""
    missing = "nothing"
    return [f"{name}, {aspect}: {one.get((name, aspect), missing)} and {other.get((name, aspect), missing)}"
            for name, aspect in sorted(keys if keys is not None else one.keys() | other.keys())
            if one.get((name, aspect), missing) != other.get((name, aspect), missing)]
