"""The MIB's text: what it says is what the agent serves."""

import json
import os
import re
import shutil
import subprocess
import unittest

from talvik_e2e import LIMIT, READER, ROOT, SOURCE, TABLE, TalvikTest

MIBS = SOURCE / "mibs"
TEXT_SYNTAX = {"SnmpAdminString": "OCTET STRING", "Unsigned32": "Unsigned32", "Integer32": "INTEGER",
               "INTEGER": "INTEGER", "RowStatus": "INTEGER", "Gauge32": "Gauge32", "Counter64": "Counter64",
               "TalvikText": "OCTET STRING", "DateAndTime": "OCTET STRING"}
ROW_STATUS = {"active": 1, "notInService": 2, "notReady": 3, "createAndGo": 4, "createAndWait": 5, "destroy": 6}
# The tables, with the only constraint that the text has beyond the description: it says of the number what numbers rows.
TABLES = {"talvikTopology": {"talvikTopologyNodeIndex": {"range": [1, 2147483647]}}, "talvikAlarm": {}, "talvikTrap": {}}


def constraint(syntax, text):
    """What the text behind an object's syntax allows, as the description says it."""
    if syntax == "RowStatus":
        return {"enumeration": ROW_STATUS}
    bounds = [int(number) for number in re.findall(r"\d+(?=\.\.)|(?<=\.\.)\d+", text)]
    if bounds:
        return {"size" if "SIZE" in text else "range": bounds}
    labels = re.findall(r"(\w+)\((\d+)\)", text)
    return {"enumeration": {label: int(number) for label, number in labels}} if labels else {}


class MibText(TalvikTest):
    def run_tool(self, *command, **environment):
        return subprocess.run([str(part) for part in command], capture_output=True, text=True, timeout=LIMIT,
                              env=dict(os.environ, SNMPCONFPATH=str(self.folder), MIBS="", **environment))

    def test_parses_without_a_warning(self):
        result = self.run_tool("snmptranslate", "-M", f"{MIBS}:{MIBS / 'base'}", "-m", "KEL-TALVIK-MIB", "-Pw", "-On",
                               "KEL-TALVIK-MIB::talvikTopologyStatus")
        self.assertEqual(result.stdout.strip(), f"{TABLE}.1.8")
        # Said of every module that spells out a macro, the standard ones included.
        warnings = [line for line in result.stderr.splitlines() if "parsed and ignored" not in line]
        self.assertEqual(warnings, [])

    @unittest.skipUnless(shutil.which("smilint"), "smilint is not installed")
    def test_obeys_the_rules_for_mib_modules(self):
        result = self.run_tool("smilint", "-s", "-l", "6", MIBS / "KEL-TALVIK-MIB.txt",
                               SMIPATH=f"{MIBS}:{MIBS / 'base'}")
        findings = (result.stdout + result.stderr).splitlines()
        # The indexes can be read, and one notification's parent ends in 2: managers rely on it.
        known = ("index element `talvikTopologyNodeIndex'", "index element `talvikTrapIndex'",
                 "index element `talvikAlarmSerialNo'", "`talvikOwnAlarmOther' is not reverse mappable")
        self.assertEqual([line for line in findings if not any(each in line for each in known)], [])
        self.assertEqual(len(findings), len(known), findings)

    def test_agrees_with_the_description_that_the_agent_reads(self):
        text = (MIBS / "KEL-TALVIK-MIB.txt").read_text()
        described = {table["name"]: table for table in json.loads((MIBS / "KEL-TALVIK-MIB.json").read_text())["tables"]}
        self.assertEqual(set(described), {name + "Table" for name in TABLES})
        for name, extra in TABLES.items():
            with self.subTest(table=name):
                objects = re.findall(
                    r"^(\w+) OBJECT-TYPE\s+SYNTAX\s+(\w+)((?:(?!MAX-ACCESS).)*)MAX-ACCESS\s+([\w-]+)"
                    r"(?:(?!OBJECT-TYPE).)*?::= \{ " + name + r"Entry (\d+) \}", text, re.MULTILINE | re.DOTALL)
                written = [(column, TEXT_SYNTAX[syntax], syntax == "DateAndTime", access, int(tag),
                            constraint(syntax, rest))
                           for column, syntax, rest, access, tag in objects]
                self.assertEqual(written, [
                    (column["name"], column["syntax"], column.get("format") == "dateAndTime", column["access"],
                     column["tag"],
                     {key: column[key] for key in ("range", "size", "enumeration") if key in column}
                     or extra.get(column["name"], {}))
                    for column in described[name + "Table"]["columns"]])
                self.assertEqual(self.translate(name + "Table"), described[name + "Table"]["oid"])

    def test_agrees_with_the_description_about_the_scalars(self):
        text = (MIBS / "KEL-TALVIK-MIB.txt").read_text()
        described = json.loads((MIBS / "KEL-TALVIK-MIB.json").read_text())["scalars"]
        objects = re.findall(r"^(\w+) OBJECT-TYPE\s+SYNTAX\s+(?!SEQUENCE)(\w+)((?:(?!MAX-ACCESS).)*)MAX-ACCESS\s+([\w-]+)"
                             r"(?:(?!OBJECT-TYPE).)*?::= \{ (\w+) \d+ \}", text, re.MULTILINE | re.DOTALL)
        self.assertEqual(
            [(name, TEXT_SYNTAX[syntax], access, constraint(syntax, rest), self.translate(name))
             for name, syntax, rest, access, parent in objects
             if not parent.endswith("Entry") and access not in ("accessible-for-notify", "not-accessible")],
            [(each["name"], each["syntax"], each["access"],
              {key: each[key] for key in ("range", "size", "enumeration") if key in each}, each["oid"])
             for each in described])
        self.assertEqual(len(described), 1)

    def translate(self, name):
        """The OID that the stock tools take the name for."""
        result = self.run_tool("snmptranslate", "-M", f"{MIBS}:{MIBS / 'base'}", "-m", "KEL-TALVIK-MIB", "-On",
                               f"KEL-TALVIK-MIB::{name}")
        return result.stdout.strip().lstrip(".")

    def test_agrees_with_the_description_about_the_objects_of_notifications(self):
        text = (MIBS / "KEL-TALVIK-MIB.txt").read_text()
        described = json.loads((MIBS / "KEL-TALVIK-MIB.json").read_text())["notificationObjects"]
        objects = re.findall(r"^(\w+) OBJECT-TYPE\s+SYNTAX\s+(\w+)((?:(?!MAX-ACCESS).)*)MAX-ACCESS\s+accessible-for-notify",
                             text, re.MULTILINE | re.DOTALL)
        self.assertEqual(
            [(name, TEXT_SYNTAX[syntax], syntax == "DateAndTime", constraint(syntax, rest).get("enumeration", {}))
             for name, syntax, rest in objects],
            [(each["name"], each["syntax"], each.get("format") == "dateAndTime", each.get("enumeration", {}))
             for each in described])
        self.assertEqual(len(described), 2 * 14)
        self.assertEqual({each["name"]: self.translate(each["name"]) for each in described},
                         {each["name"]: each["oid"] for each in described})

    def test_agrees_with_the_description_about_the_notifications(self):
        text = (MIBS / "KEL-TALVIK-MIB.txt").read_text()
        described = json.loads((MIBS / "KEL-TALVIK-MIB.json").read_text())["notifications"]
        written = re.findall(r"^(\w+) NOTIFICATION-TYPE\s+OBJECTS \{([^}]*)\}", text, re.MULTILINE)
        self.assertEqual([(name, self.translate(name), re.findall(r"\w+", objects)) for name, objects in written],
                         [(each["name"], each["oid"], each["objects"]) for each in described])
        self.assertEqual(len(described), 3)

    def test_knows_every_object_of_the_trap_table(self):
        entry = f"{ROOT}.2.91.10.4.1.1"
        for tag, name in enumerate(("UsableAddress", "Port", "RowStatus", "Index", "Version", "Address", "Type", "User"), 1):
            result = self.run_tool("snmptranslate", "-M", f"{MIBS}:{MIBS / 'base'}", "-m", "KEL-TALVIK-MIB", "-On",
                                   f"KEL-TALVIK-MIB::talvikTrap{name}")
            self.assertEqual(result.stdout.strip(), f"{entry}.{tag}")

    def test_makes_a_table_of_the_walk(self):
        agent = self.start_agent()
        result = self.tool("snmptable", agent, READER + ["-Cf", "|"], "talvikTopologyTable", mib_text=True, numeric=False)
        self.assertEqual(result.stderr, "")
        heading, row = result.stdout.strip().splitlines()[-2:]
        self.assertEqual(heading.split("|"), [
            "talvikTopologyNodeCode", "talvikTopologyNodeType", "talvikTopologyNodeIndex", "talvikTopologyAddress",
            "talvikTopologyNodeName", "talvikTopologyReserved1", "talvikTopologyReserved2", "talvikTopologyStatus"])
        self.assertEqual(row.split("|"), ["TALVIK-0001", "1", "1", "192.168.2.10", "Array", " ", " ", "online"])


if __name__ == "__main__":
    unittest.main()
