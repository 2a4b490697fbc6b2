#!/usr/bin/env python3
"""Links between pages lead somewhere, and the guide leads from its first page to its last."""

import os.path
import pathlib
import unittest

from pages import NOT_OURS, SOURCE, all_pages, anchors, read_page

ELSEWHERE = ("http://", "https://", "mailto:")
GUIDE = "docs/README.md"


def broken_links(pages, exists):
    """A line for each link that leads nowhere; `exists` tells whether a path from the root is in the tree."""
    for page in pages.values():
        for link in page.links:
            if link.target.startswith(ELSEWHERE):
                continue
            path, _, anchor = link.target.partition("#")
            where = f"{page.name}:{link.line}: {link.target}"
            target = os.path.normpath(os.path.join(os.path.dirname(page.name), path)) if path else page.name
            if target.startswith("..") or target.split("/")[0] in NOT_OURS or not exists(target):
                yield f"{where}: there is no {target}"
            elif anchor and target.endswith(".md") and anchor not in anchors(pages[target]):
                yield f"{where}: {target} has no heading for #{anchor}"


class Links(unittest.TestCase):
    def setUp(self):
        self.pages = all_pages()

    def test_lead_to_files_and_headings_of_the_tree(self):
        self.assertEqual(list(broken_links(self.pages, lambda name: (SOURCE / name).exists())), [])

    def test_the_guide_names_every_page_of_its_folder(self):
        named = {os.path.normpath(os.path.join("docs", link.target.partition("#")[0]))
                 for link in self.pages[GUIDE].links}

        pages = {name for name in self.pages if pathlib.PurePath(name).parent == pathlib.PurePath("docs")}

        self.assertEqual(sorted(pages - named - {GUIDE}), [])

    def test_each_page_of_the_guide_leads_to_the_next(self):
        order, lines = [], set()
        for link in self.pages[GUIDE].links:
            name = os.path.normpath(os.path.join("docs", link.target.partition("#")[0]))
            # Of a row with several links the first one is the page in order.
            if name.startswith("docs/") and name.endswith(".md") and link.line not in lines:
                order.append(name)
            lines.add(link.line)

        missing = [f"{page} does not lead on to {following}" for page, following in zip(order, order[1:])
                   if os.path.basename(following) not in {link.target for link in self.pages[page].links}]

        self.assertGreater(len(order), 10)
        self.assertEqual(missing, [])


class BrokenLinks(unittest.TestCase):
    """The search itself, on pages made for it."""

    def found(self, text, other="# Other\n\n## A `b` (c), d\n\n## A `b` (c), d\n"):
        pages = {"docs/one.md": read_page("docs/one.md", text), "docs/two.md": read_page("docs/two.md", other)}
        return list(broken_links(pages, pages.__contains__))

    def test_are_found_with_page_and_line(self):
        self.assertEqual(self.found("# One\n\n[a](three.md)\n"), ["docs/one.md:3: three.md: there is no docs/three.md"])
        self.assertEqual(self.found("[`a`](two.md#none)"),
                         ["docs/one.md:1: two.md#none: docs/two.md has no heading for #none"])
        self.assertEqual(self.found("[a](#b)"), ["docs/one.md:1: #b: docs/one.md has no heading for #b"])
        self.assertEqual(self.found("[![a](no.svg)](two.md)"), ["docs/one.md:1: no.svg: there is no docs/no.svg"])
        self.assertEqual(self.found("[a](../../b.md)"), ["docs/one.md:1: ../../b.md: there is no ../b.md"])

    def test_are_not_what_is_code_or_elsewhere(self):
        self.assertEqual(self.found("`[a](b.md)`\n\n    [a](b.md)\n\n```\n[a](b.md)\n```\n\n[a](https://b.example/c)\n"), [])

    def test_are_not_headings_with_code_punctuation_and_numbers(self):
        self.assertEqual(self.found("# Über uns\n\n[a](two.md#a-b-c-d) [b](two.md#a-b-c-d-1) [c](#über-uns)\n"), [])


if __name__ == "__main__":
    unittest.main()
