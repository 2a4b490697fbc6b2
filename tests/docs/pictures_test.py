#!/usr/bin/env python3
"""The pictures of the documents are what their sources give, and pages show them."""

import os
import re
import shutil
import subprocess
import sys
import tempfile
import unittest
import xml.etree.ElementTree

from pages import SOURCE, all_pages

PICTURES = SOURCE / "docs" / "pictures"
SCRIPT = SOURCE / "tools" / "dev" / "pictures.sh"
RECORDING = PICTURES / "first-run.cast"
sys.path.insert(0, str(SOURCE / "tools" / "dev"))

from recording import lines_of, paced, svg_of  # noqa: E402 (the path comes first)

# Where things lie depends on the fonts of the machine, so numbers with a fraction and the size are left out.
PLACES = re.compile(r'( (?:d|points|transform|viewBox|width|height|x|y|cx|cy|rx|ry)="[^"]*")|^ viewBox.*$', re.MULTILINE)


def without_places(svg):
    """What a picture shows, without where."""
    return [line for line in PLACES.sub("", svg).splitlines() if line.strip()]


class Pictures(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        if shutil.which("dot") is None and not os.environ.get("CI"):
            self.skipTest("there is no dot (./dev setup installs graphviz)")
        folder = tempfile.TemporaryDirectory(prefix="talvik-pictures-")
        self.addCleanup(folder.cleanup)
        self.folder = folder.name
        subprocess.run(["bash", SCRIPT, self.folder], check=True, timeout=60, stdin=subprocess.DEVNULL)

    def test_are_what_their_sources_give(self):
        sources = sorted(PICTURES.glob("*.dot"))
        self.assertGreater(len(sources), 1)
        for source in sources:
            with self.subTest(source.name):
                committed = source.with_suffix(".svg").read_text(encoding="utf-8")
                with open(os.path.join(self.folder, source.stem + ".svg"), encoding="utf-8") as rendered:
                    self.assertEqual(without_places(committed), without_places(rendered.read()),
                                     "run tools/dev/pictures.sh and commit the result")


class TheRecording(unittest.TestCase):
    def setUp(self):
        self.cast = RECORDING.read_text(encoding="utf-8")

    def test_is_drawn_as_it_is(self):
        self.assertEqual(RECORDING.with_suffix(".svg").read_text(encoding="utf-8"), svg_of(self.cast),
                         "run tools/dev/record.sh svg and commit the result")

    def test_shows_the_first_run_from_its_command_to_its_end(self):
        lines = [line for _, line in lines_of(self.cast)]
        self.assertEqual(lines[0], "$ ./dev run --once")
        self.assertIn('.1.3.6.1.4.1.99999.2.91.9.1.1.1.1 = STRING: "TALVIK-0001"', lines)
        self.assertTrue(any(line.startswith("== run: ") for line in lines[-3:]), lines[-3:])

    def test_has_nothing_of_the_machine_that_it_was_made_on(self):
        self.assertNotRegex(self.cast, r"/(home|root|tmp|usr)/")

    def test_leaves_time_to_read_each_stage(self):
        cast = '{"width": 4}\n[0.0, "o", "$ a\\r\\n"]\n[1.0, "o", "== b\\r\\n12345"]\n[1.5, "o", "6\\r\\n== c\\r\\n"]\n'
        self.assertEqual(lines_of(cast), [(0.0, "$ a"), (1.0, "== b"), (1.0, "1234"), (1.0, "56"), (1.5, "== c")])
        self.assertEqual(paced(lines_of(cast))[-1], (3.4, "== c"))


class EveryPicture(unittest.TestCase):
    def test_is_well_formed_and_has_no_place_of_this_machine(self):
        for picture in sorted(PICTURES.glob("*.svg")):
            with self.subTest(picture.name):
                text = picture.read_text(encoding="utf-8")
                xml.etree.ElementTree.fromstring(text)
                self.assertNotRegex(text, r"/(home|root|tmp|usr)/")

    def test_is_shown_by_a_page(self):
        shown = {os.path.basename(link.target) for page in all_pages().values() for link in page.links}
        self.assertEqual(sorted({picture.name for picture in PICTURES.glob("*.svg")} - shown), [])


class LeavingPlacesOut(unittest.TestCase):
    def test_keeps_texts_and_colours(self):
        svg = '<text x="1.5" y="2" fill="#fff">a 12</text>\n<polygon fill="red" points="1,2 3,4"/>'
        self.assertEqual(without_places(svg), ['<text fill="#fff">a 12</text>', '<polygon fill="red"/>'])


if __name__ == "__main__":
    unittest.main()
