"""docs/mib-reference.md and docs/agent-mib-reference.md are what the MIBs say now."""

import json
import pathlib
import re
import tempfile
import unittest

from mib_facts import AGENT_MIB_TEXT, MIB_DESCRIPTION, MIB_TEXT, read_mib

from mib_reference import AGENT_REFERENCE, COMMAND, REFERENCE, agent_reference, reference


class MibReference(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="talvik-mib-")
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def test_is_up_to_date(self):
        current = REFERENCE.read_text() == reference()  # not assertEqual: two pages of differences help nobody
        self.assertTrue(current, f"{REFERENCE.name} is not what the MIB says now: run {COMMAND} and commit the result")

    def test_of_the_agent_is_up_to_date(self):
        page = AGENT_REFERENCE.read_text()
        self.assertTrue(page == agent_reference(), f"{AGENT_REFERENCE.name} is not what the MIB says now: run {COMMAND}")

    def test_of_the_agent_changes_with_its_text(self):
        (self.folder / MIB_TEXT.name).write_text(MIB_TEXT.read_text())  # which it imports from
        text = self.folder / AGENT_MIB_TEXT.name
        text.write_text(AGENT_MIB_TEXT.read_text().replace("The version of the agent.", "The release of the agent."))
        self.assertIn("The release of the agent.", agent_reference(text))

    def test_changes_with_the_text_and_with_the_description(self):
        text = self.folder / MIB_TEXT.name
        text.write_text(MIB_TEXT.read_text().replace("usually 162", "usually 163"))
        self.assertIn("usually 163", reference(path=text))
        description = json.loads(MIB_DESCRIPTION.read_text())
        description["tables"][1]["answerLifetimeMs"] = 1500
        altered = self.folder / MIB_DESCRIPTION.name
        altered.write_text(json.dumps(description))
        self.assertIn("an answer is kept for 1.5 s at most", reference(description=altered))

    def test_has_all_that_the_text_has(self):
        for path, text in ((REFERENCE, MIB_TEXT), (AGENT_REFERENCE, AGENT_MIB_TEXT)):
            page, module = path.read_text(), read_mib(text)
            self.assertGreater(len(module.objects()), 20)
            words = set(re.findall(r"\w+", page))
            for one in module.objects() + module.tables + module.notifications:
                self.assertRegex(page, rf"(?m)^###+ {one.name}\n\n`{re.escape(one.oid)}`")
                self.assertLessEqual(set(re.findall(r"\w+", one.description)), words, one.name)
            for convention in module.conventions:
                self.assertIn(f"\n### {convention.name}\n", page)
            for one in module.objects() + module.conventions:
                for label, number in one.syntax.labels.items():
                    self.assertIn(f"{label}({number})", page)

    def test_every_link_within_it_leads_somewhere(self):
        for path, least in ((REFERENCE, 60), (AGENT_REFERENCE, 25)):
            page = path.read_text()
            headings = [heading.lower() for heading in re.findall(r"^#+ (\S+)$", page, re.MULTILINE)]
            self.assertEqual(len(headings), len(set(headings)))
            links = set(re.findall(r"\]\(#([^)]*)\)", page))
            self.assertGreater(len(links), least)
            self.assertLessEqual(links, set(headings))


if __name__ == "__main__":
    unittest.main()
