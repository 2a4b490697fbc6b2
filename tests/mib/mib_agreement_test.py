"""The MIB's text and the description that the agent loads say the same; two parsers read the text."""

import copy
import json
import pathlib
import re
import tempfile
import unittest

from mib_facts import (MIB_DESCRIPTION, MIB_TEXT, differences, facts_of_description, facts_of_net_snmp, facts_of_text,
                       read_mib)


def exchange(old, new):
    """An alteration of the MIB's text: `old`, a regular expression, becomes `new` wherever it stands."""
    def alter(text):
        altered, count = re.subn(old, new, text, flags=re.DOTALL)
        if count == 0:
            raise AssertionError(f"{old} is not in the text")
        return altered

    return alter


def within(name, old, new):
    """The same within the definition of one object or notification."""
    return exchange(rf"(\n{name} (?:OBJECT|NOTIFICATION)-TYPE\b(?:(?!::=).)*?){old}", rf"\g<1>{new}")


def without(name):
    """An alteration that takes an object away."""
    def alter(text):
        text = exchange(rf"\n{name} OBJECT-TYPE.*?::= \{{[^}}]*\}}\n", "")(text)
        text = exchange(rf",\s*{name}(?: +[A-Z]\w*)?(?=\s)|\b{name}(?: +[A-Z]\w*)?,\s*", "")(text)
        return text

    return alter


def places(name):
    """What stands behind the definition of `name`, up to its number."""
    return rf"(\n{name} (?:OBJECT|NOTIFICATION)-TYPE(?:(?!::=).)*::= \{{ \w+ )\d+"


# What is wrong, the alteration, and what has to be told of it.
ALTERATIONS = [
    ("a column's number", exchange(places("talvikTrapPort"), r"\g<1>12"), "talvikTrapPort, oid"),
    ("a table's number", exchange(places("talvikAlarmTable"), r"\g<1>3"), "talvikAlarmTable, oid"),
    ("a scalar's number", exchange(places("talvikClearAlarm"), r"\g<1>3"), "talvikClearAlarm, oid"),
    ("the number of what notifications carry", exchange(places("kelReportingAlarmProductSN"), r"\g<1>15"),
     "kelReportingAlarmProductSN, oid"),
    ("a notification's number", exchange(places("talvikTest"), r"\g<1>3"), "talvikTest, oid"),
    ("a number within the tree", exchange(r"(talvikOwn +OBJECT IDENTIFIER ::= \{ kelTalvikMIB )251", r"\g<1>252"),
     "ownReportingAlarmNodeCode, oid"),
    ("a column's syntax", exchange(r"(talvikAlarmId +(?:OBJECT-TYPE\s+SYNTAX +)?)Unsigned32", r"\g<1>Integer32"),
     "talvikAlarmId, syntax"),
    ("a text that becomes a number", exchange(r"(talvikAlarmTitle +(?:OBJECT-TYPE\s+SYNTAX +)?)TalvikText",
                                              r"\g<1>Integer32"), "talvikAlarmTitle, syntax"),
    ("a 64-bit number of 32 bits", within("kelReportingAlarmLocationAlmID", "Counter64", "Gauge32"),
     "kelReportingAlarmLocationAlmID, syntax"),
    ("a scalar's syntax", within("talvikClearAlarm", "Unsigned32", "Integer32"), "talvikClearAlarm, syntax"),
    ("a time that becomes a text", within("kelReportingAlarmFaultTime", "DateAndTime", "SnmpAdminString"),
     "kelReportingAlarmFaultTime, is a DateAndTime"),
    ("a number's range", within("talvikTrapPort", "65535", "65534"), "talvikTrapPort, bounds"),
    ("a text's size", within("talvikTrapUser", "32", "64"), "talvikTrapUser, bounds"),
    ("a range too many", within("talvikAlarmSerialNo", "Unsigned32", "Unsigned32 (1..9)"), "talvikAlarmSerialNo, bounds"),
    ("a column's access", within("talvikTrapType", "read-create", "read-only"), "talvikTrapType, access"),
    ("a column that can only be changed", within("talvikTrapType", "read-create", "read-write"), "talvikTrapType, access"),
    ("a scalar's access", within("talvikClearAlarm", "read-write", "read-only"), "talvikClearAlarm, access"),
    ("an index that cannot be read", within("talvikTopologyNodeIndex", "read-only", "not-accessible"),
     "talvikTopologyNodeIndex, access"),
    ("an object of notifications that can be read", within("ownReportingAlarmFaultTitle", "accessible-for-notify",
                                                           "read-only"), "ownReportingAlarmFaultTitle, access"),
    ("a column's name", exchange(r"\btalvikAlarmDetail\b", "talvikAlarmDetails"), "talvikAlarmDetail, oid"),
    ("a notification's name", exchange(r"\btalvikTest\b", "talvikTrial"), "talvikTest, oid"),
    ("a label's number", exchange(r"alarmOwnOid\(7\)", "alarmOwnOid(4)"), "talvikTrapType, enumeration"),
    ("a label's name", exchange(r"warning\(4\)", "caution(4)"), "talvikAlarmLevel, enumeration"),
    ("a label too few", exchange(r"noAlarm\(2\),", ""), "talvikTrapType, enumeration"),
    ("a label too many", exchange(r"offline\(2\)", "offline(2), unknown(3)"), "talvikTopologyStatus, enumeration"),
    ("another set of labels", within("kelReportingAlarmFaultCategory", "TalvikCategory", "TalvikReportKind"),
     "kelReportingAlarmFaultCategory, enumeration"),
    ("no column", without("talvikAlarmFullId"), "talvikAlarmFullId, oid"),
    ("no scalar", without("talvikClearAlarm"), "talvikClearAlarm, oid"),
    ("no object of notifications", without("ownReportingAlarmProductSN"), "talvikOwnAlarmOther, objects"),
    ("the order of a notification's objects",
     within("talvikAlarm", r"kelReportingAlarmNodeCode,(\s+)kelReportingAlarmLocationInfo",
            r"kelReportingAlarmLocationInfo,\g<2>kelReportingAlarmNodeCode"), "talvikAlarm, objects"),
    ("another index", exchange(r"INDEX( +)\{ talvikAlarmSerialNo \}", r"INDEX\g<1>{ talvikAlarmId }"),
     "talvikAlarmTable, index"),
    ("another root", exchange(r"(::= \{ kel )2", r"\g<1>3"), "KEL-TALVIK-MIB, root"),
    ("no description", within("talvikTrapPort", 'DESCRIPTION\\s+"[^"]*"', 'DESCRIPTION ""'), "talvikTrapPort, is described"),
]


def names_in(facts):
    """The names of objects and notifications among those that facts are about."""
    return sorted({name for name, aspect in facts if aspect in ("access", "objects")})


def all_differences(path, description):
    """What the description says otherwise than either parser finds in the text at `path`."""
    by_libsmi = facts_of_text(path)
    by_net_snmp = facts_of_net_snmp(names_in(by_libsmi), path)
    return differences(by_libsmi, description) + differences(by_net_snmp, description, by_net_snmp.keys())


class MibAgreement(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="talvik-mib-")
        self.addCleanup(folder.cleanup)
        self.copy = pathlib.Path(folder.name) / MIB_TEXT.name

    def test_libsmi_finds_in_the_text_what_the_agent_is_told(self):
        description = facts_of_description()
        self.assertGreater(len(description), 300)
        self.assertEqual(differences(facts_of_text(), description), [])

    def test_net_snmp_finds_in_the_text_what_the_agent_is_told(self):
        description = facts_of_description()
        names = names_in(description)
        facts = facts_of_net_snmp(names)
        self.assertEqual(names_in(facts), names)
        self.assertEqual(differences(facts, description, facts.keys()), [])

    def test_what_a_row_needs_has_no_default(self):
        required = {column["name"]: column.get("required", False) for table in
                    json.loads(MIB_DESCRIPTION.read_text())["tables"] for column in table["columns"]}
        self.assertTrue(any(required.values()))
        for one in read_mib().objects():
            self.assertFalse(one.default and required.get(one.name), one.name)

    def test_every_object_and_notification_is_in_a_group_that_agents_must_have(self):
        module = read_mib()
        current, = [one for one in module.compliances if one.status == "current"]
        self.assertEqual(sorted(current.members), sorted(group.name for group in module.groups))
        members = sorted(name for group in module.groups for name in group.members)
        self.assertEqual(members, sorted(one.name for one in module.objects() + module.notifications))

    def test_whatever_the_text_says_wrong_is_found(self):
        description = facts_of_description()
        for what, alter, expected in ALTERATIONS:
            with self.subTest(what):
                self.copy.write_text(alter(MIB_TEXT.read_text()))
                found = all_differences(self.copy, description)
                self.assertTrue(any(line.startswith(expected + ":") for line in found), found)

    def test_whatever_the_description_says_wrong_is_found(self):
        for path, value, expected in (
                (("tables", 0, "columns", 7, "enumeration", "offline"), 3, "talvikTopologyStatus, enumeration"),
                (("tables", 1, "columns", 3, "name"), "talvikAlarmName", "talvikAlarmTitle, oid"),
                (("tables", 2, "columns", 1, "range"), [1, 1024], "talvikTrapPort, bounds"),
                (("tables", 2, "columns", 6, "tag"), 9, "talvikTrapType, oid"),
                (("tables", 2, "rowStatus"), "talvikTrapVersion", "talvikTrapTable, row status"),
                (("tables", 1, "columns", 7, "format"), None, "talvikAlarmTime, is a DateAndTime"),
                (("scalars", 0, "access"), "read-only", "talvikClearAlarm, access"),
                (("notificationObjects", 12, "syntax"), "Unsigned32", "kelReportingAlarmProductModel, syntax"),
                (("notifications", 1, "oid"), "1.3.6.1.4.1.99999.2.91.10.2.1.0.3", "talvikTest, oid")):
            with self.subTest(expected):
                altered = copy.deepcopy(json.loads(MIB_DESCRIPTION.read_text()))
                place = altered
                for step in path[:-1]:
                    place = place[step]
                place[path[-1]] = value
                found = differences(facts_of_text(), facts_of_description(altered))
                self.assertTrue(any(line.startswith(expected + ":") for line in found), found)


if __name__ == "__main__":
    unittest.main()
