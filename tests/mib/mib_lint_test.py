"""The texts of the MIBs obey the rules for MIB modules, as far as what the agent serves does."""

import pathlib
import re
import shutil
import tempfile
import unittest

from mib_facts import AGENT_MIB_TEXT, MIB_TEXT, run_tool

# What smilint finds at its strictest: kind and subject. mibs/README.md says why each stays.
EXPLAINED = {MIB_TEXT: [("index-element-accessible", "talvikTopologyNodeIndex"),
                        ("index-element-accessible", "talvikAlarmSerialNo"),
                        ("index-element-accessible", "talvikTrapIndex"),
                        ("notification-not-reversible", "talvikOwnAlarmOther")],
             AGENT_MIB_TEXT: []}


class MibLint(unittest.TestCase):
    maxDiff = None

    def findings(self, path):
        result = run_tool("smilint", "-c", "/dev/null", "-s", "-m", "-l", "6", path, path=path)
        lines = (result.stdout + result.stderr).splitlines()
        found = [re.search(r"\{([\w-]+)\}.*?`(\w+)'", line) for line in lines]
        return [finding.groups() if finding else line for finding, line in zip(found, lines)]

    def test_smilint_finds_nothing_that_is_not_explained(self):
        for path, explained in EXPLAINED.items():
            self.assertEqual(self.findings(path), explained, path.name)

    def test_smilint_finds_what_breaks_a_rule(self):
        with tempfile.TemporaryDirectory(prefix="talvik-mib-") as folder:
            for path in EXPLAINED:
                shutil.copy(path, folder)
            text = pathlib.Path(folder) / AGENT_MIB_TEXT.name
            text.write_text(text.read_text().replace("talvikAgentVersion,\n", ""))
            self.assertEqual([kind for kind, *_ in self.findings(text)], ["group-membership"])

    def test_what_smilint_finds_is_explained(self):
        readme = (MIB_TEXT.parent / "README.md").read_text()
        for path, explained in EXPLAINED.items():
            self.assertIn(f"`{path.name}`", readme)
            for finding in explained:
                for word in finding:
                    self.assertIn(f"`{word}`", readme)

    def test_net_snmp_reads_it_without_a_warning(self):
        for path, name, oid in ((MIB_TEXT, "talvikTopologyStatus", ".1.3.6.1.4.1.99999.2.91.9.1.1.8"),
                                (AGENT_MIB_TEXT, "talvikAgentObjectErrors", ".1.3.6.1.4.1.99999.2.91.20.2.1.1.7")):
            result = run_tool("snmptranslate", "-m", path, "-Pw", "-On", f"{path.stem}::{name}", path=path)
            self.assertEqual(result.stdout.strip(), oid)
            # Said of every module that spells out a macro, the standard ones included.
            warnings = [line for line in result.stderr.splitlines() if "parsed and ignored" not in line]
            self.assertEqual(warnings, [])


if __name__ == "__main__":
    unittest.main()
