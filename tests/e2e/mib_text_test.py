"""The MIB's text: what it says is what the agent serves."""

import json
import os
import re
import shutil
import subprocess
import unittest

from talvik_e2e import LIMIT, READER, SOURCE, TABLE, TalvikTest

MIBS = SOURCE / "mibs"
TEXT_SYNTAX = {"SnmpAdminString": "OCTET STRING", "Unsigned32": "Unsigned32", "Integer32": "INTEGER",
               "INTEGER": "INTEGER"}


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
        # The index can be read: managers rely on it.
        self.assertEqual([line for line in findings if "talvikTopologyNodeIndex" not in line], [])
        self.assertEqual(len(findings), 1, findings)

    def test_agrees_with_the_description_that_the_agent_reads(self):
        text = (MIBS / "KEL-TALVIK-MIB.txt").read_text()
        table = json.loads((MIBS / "KEL-TALVIK-MIB.json").read_text())["tables"][0]
        objects = re.findall(r"^(\w+) OBJECT-TYPE\s+SYNTAX\s+(\w+)([^\n]*)\s+MAX-ACCESS\s+([\w-]+)(?:(?!OBJECT-TYPE).)*?"
                             r"::= \{ talvikTopologyEntry (\d+) \}", text, re.MULTILINE | re.DOTALL)
        described = [(column["name"], column["syntax"], column["access"], column["tag"]) for column in table["columns"]]
        written = [(name, TEXT_SYNTAX[syntax], access, int(tag)) for name, syntax, _, access, tag in objects]
        self.assertEqual(written, described)

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
