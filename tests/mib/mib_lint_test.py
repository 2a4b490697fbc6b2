"""The MIB's text obeys the rules for MIB modules, as far as what the agent serves does."""

import re
import unittest

from mib_facts import MIB_TEXT, run_tool

# What smilint finds at its strictest: kind and subject. mibs/README.md says why each stays.
EXPLAINED = [("index-element-accessible", "talvikTopologyNodeIndex"), ("index-element-accessible", "talvikAlarmSerialNo"),
             ("index-element-accessible", "talvikTrapIndex"), ("notification-not-reversible", "talvikOwnAlarmOther")]


class MibLint(unittest.TestCase):
    maxDiff = None

    def test_smilint_finds_nothing_that_is_not_explained(self):
        result = run_tool("smilint", "-c", "/dev/null", "-s", "-m", "-l", "6", MIB_TEXT)
        lines = (result.stdout + result.stderr).splitlines()
        findings = [re.search(r"\{([\w-]+)\}.*?`(\w+)'", line) for line in lines]
        self.assertEqual([finding and finding.groups() for finding in findings], EXPLAINED, lines)

    def test_what_smilint_finds_is_explained(self):
        readme = (MIB_TEXT.parent / "README.md").read_text()
        for finding in EXPLAINED:
            for word in finding:
                self.assertIn(f"`{word}`", readme)

    def test_net_snmp_reads_it_without_a_warning(self):
        result = run_tool("snmptranslate", "-m", MIB_TEXT, "-Pw", "-On", "KEL-TALVIK-MIB::talvikTopologyStatus")
        self.assertEqual(result.stdout.strip(), ".1.3.6.1.4.1.99999.2.91.9.1.1.8")
        # Said of every module that spells out a macro, the standard ones included.
        warnings = [line for line in result.stderr.splitlines() if "parsed and ignored" not in line]
        self.assertEqual(warnings, [])


if __name__ == "__main__":
    unittest.main()
