"""The MIBs in mibs/ as libsmi's smidump reads them; for the MIB references and for tests."""

import os
import pathlib
import re
import subprocess
import textwrap
import xml.etree.ElementTree as ElementTree
from dataclasses import dataclass

SOURCE = pathlib.Path(__file__).resolve().parents[2]
MIB_TEXT = SOURCE / "mibs" / "KEL-TALVIK-MIB.txt"
AGENT_MIB_TEXT = SOURCE / "mibs" / "TALVIK-AGENT-MIB.txt"
MIB_DESCRIPTION = SOURCE / "mibs" / "KEL-TALVIK-MIB.json"
STUBS = SOURCE / "tests" / "mib" / "stubs"

LIMIT = 30  # seconds; only a hanging program ever needs them
BASES = {"Enumeration": "INTEGER", "Integer32": "INTEGER", "OctetString": "OCTET STRING"}
ACCESSES = {"noaccess": "not-accessible", "notifyonly": "accessible-for-notify", "readonly": "read-only",
            "readwrite": "read-write"}


class MibTextError(Exception):
    """smidump is not there, or cannot read the text."""


@dataclass(frozen=True)
class Syntax:
    """`written` is the textual convention or type that the object names, `base` what it comes down to in the SMI."""

    written: str
    base: str
    labels: dict  # of an enumeration: number by label
    bounds: tuple  # pairs of least and greatest value or size, the convention's if the object has none
    own_bounds: tuple  # those that the object itself has


@dataclass(frozen=True)
class Convention:
    name: str
    syntax: Syntax
    hint: str
    description: str


@dataclass(frozen=True)
class Object:
    """A column, a scalar or what is in notifications only."""

    name: str
    oid: str
    syntax: Syntax
    access: str
    units: str
    default: str
    description: str


@dataclass(frozen=True)
class Table:
    name: str
    oid: str
    description: str
    entry: str
    row_description: str
    index: list
    columns: list


@dataclass(frozen=True)
class Definition:
    """A notification, a group or a compliance statement, with the names that belong to it."""

    name: str
    oid: str
    status: str
    members: list
    description: str


@dataclass(frozen=True)
class Module:
    name: str
    root: str  # the OID of its identity
    description: str
    revisions: list  # date and description, the latest first
    conventions: list
    tables: list
    scalars: list
    notification_objects: list
    notifications: list
    groups: list
    compliances: list
    write_syntaxes: dict  # labels that the current compliance statement has agents accept, by the object's name

    def objects(self):
        return [column for table in self.tables for column in table.columns] + self.scalars + self.notification_objects


def smidump(path):
    """The module at `path` as XML."""
    environment = dict(os.environ, SMIPATH=f"{path.parent}:{STUBS}", LC_ALL="C")
    try:
        result = subprocess.run(["smidump", "-c", "/dev/null", "-f", "xml", str(path)], env=environment,
                                stdin=subprocess.DEVNULL, capture_output=True, text=True, timeout=LIMIT)
    except FileNotFoundError:
        raise MibTextError("smidump is not installed; Debian's package smitools has it") from None
    if result.returncode != 0 or not result.stdout.startswith("<?xml"):
        raise MibTextError(f"smidump cannot read {path}: {result.stderr or result.stdout}")
    return ElementTree.fromstring(result.stdout)


def description_of(element):
    return textwrap.dedent(re.sub(r"^ +$", "", element.findtext("description", ""), flags=re.MULTILINE)).strip()


class Reader:
    """One reading: knows the textual conventions, which all else refers to."""

    def __init__(self, path):
        self.types = {}
        for module in ("SNMPv2-TC", "SNMP-FRAMEWORK-MIB"):
            self.read_conventions(smidump(STUBS / f"{module}.txt"))
        self.document = smidump(path)
        self.conventions = self.read_conventions(self.document)

    def read_conventions(self, document):
        conventions = []
        for typedef in document.findall("typedefs/typedef"):
            name = typedef.get("name")
            self.types[name] = self.refined(name, typedef)
            conventions.append(Convention(name, self.types[name], typedef.findtext("format", ""),
                                          description_of(typedef)))
        return conventions

    def refined(self, written, typedef):
        parent = self.types.get(written)
        base = typedef.get("basetype")
        labels = {label.get("name"): int(label.get("number")) for label in typedef.findall("namednumber")}
        own = tuple((int(bounds.get("min")), int(bounds.get("max"))) for bounds in typedef.findall("range"))
        return Syntax(written, BASES.get(base, base), labels or (parent.labels if parent else {}),
                      own or (parent.bounds if parent else ()), own)

    def syntax(self, element):
        named = element.find("syntax/type")
        if named is None:
            typedef = element.find("syntax/typedef")
            parent = typedef.find("parent")
            base = typedef.get("basetype")
            plain = {"Enumeration": "INTEGER", "OctetString": "OCTET STRING"}.get(base, base)
            return self.refined(plain if parent is None else parent.get("name"), typedef)
        name = named.get("name")
        known = self.types.get(name)
        if known is None:
            return Syntax(name, BASES.get(name, name), {}, (), ())
        return Syntax(name, known.base, known.labels, known.bounds, ())

    def object(self, element, creates=False):
        access = ACCESSES[element.findtext("access")]
        return Object(element.get("name"), element.get("oid"), self.syntax(element),
                      "read-create" if creates and access == "read-write" else access, element.findtext("units", ""),
                      element.findtext("default", ""), description_of(element))

    def table(self, element):
        row = element.find("row")
        return Table(element.get("name"), element.get("oid"), description_of(element), row.get("name"),
                     description_of(row), [index.get("name") for index in row.findall("linkage/index")],
                     [self.object(column, row.get("create") == "true") for column in row.findall("column")])

    def module(self):
        head = self.document.find("module")
        scalars = [self.object(scalar) for scalar in self.document.findall("nodes/scalar")]
        identity = self.document.find(f"nodes/node[@name='{head.find('identity').get('node')}']")
        return Module(
            head.get("name"), identity.get("oid"), description_of(head),
            [(revision.get("date"), description_of(revision)) for revision in head.findall("revision")],
            self.conventions, [self.table(table) for table in self.document.findall("nodes/table")],
            [one for one in scalars if one.access != "accessible-for-notify"],
            [one for one in scalars if one.access == "accessible-for-notify"],
            self.definitions("notifications/notification", "objects/object"),
            self.definitions("groups/group", "members/member"),
            self.definitions("compliances/compliance", "requires/mandatory"),
            {one.get("name"): [label.get("name") for label in one.findall("writesyntax/typedef/namednumber")]
             for one in self.document.findall("compliances/compliance[@status='current']/refinements/refinement")})

    def definitions(self, kind, member):
        return [Definition(one.get("name"), one.get("oid"), one.get("status"),
                           [part.get("name") for part in one.findall(member)], description_of(one))
                for one in self.document.findall(kind)]


def read_mib(path=MIB_TEXT):
    """The module in that file. Raises MibTextError."""
    return Reader(pathlib.Path(path)).module()
