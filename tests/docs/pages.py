"""The Markdown pages of the tree: their headings, links and blocks of code."""

import os
import pathlib
import re
from typing import NamedTuple

SOURCE = pathlib.Path(__file__).resolve().parents[2]
NOT_OURS = {"build", "run", ".git", ".cache", "__pycache__"}  # folders of results, directly below the root

FENCE = re.compile(r"^(?P<indent> *)(?P<marks>```+|~~~+)(?P<language>[\w-]*)\s*$")
HEADING = re.compile(r"^#{1,6} +(.*?) *#*$")
LINK = re.compile(r"!?\[(?P<text>(?:[^][]|!\[[^]]*\]\([^)]*\))*)\]\((?P<target>[^()\s]+)\)")
IMAGE_INSIDE = re.compile(r"!\[[^]]*\]\((?P<target>[^()\s]+)\)")
INLINE_CODE = re.compile(r"(?<!`)(`+)(?!`)((?:(?!\n\n).)+?)\1(?!`)", re.DOTALL)


class Block(NamedTuple):
    """Lines of code. `language` is what a fence says, empty without; indented blocks have none."""

    page: str
    line: int  # of the first line of code, from 1
    language: str
    lines: list
    above: str  # the last line of prose in front of it


class Link(NamedTuple):
    line: int
    target: str


class Page(NamedTuple):
    name: str  # from the root of the tree
    headings: list
    links: list
    blocks: list
    code_words: list  # what stands between backquotes in the prose, with its line


def slug(heading):
    """The anchor that a heading gets."""
    text = INLINE_CODE.sub(r"\2", LINK.sub(r"\g<text>", heading)).strip().lower()
    return re.sub(r"[^\w\- ]", "", text).replace(" ", "-")


def read_page(name, text):
    """Takes a page apart; `name` is for messages."""
    headings, blocks, prose = [], [], [""] * len(text.splitlines())
    fence, block, above, blank_before = None, None, "", True

    def close():
        nonlocal block
        if block:
            while block.lines and not block.lines[-1].strip():
                block.lines.pop()
            blocks.append(block)
        block = None

    for number, line in enumerate(text.splitlines(), 1):
        mark = FENCE.match(line)
        if fence:
            if mark and mark["marks"].startswith(fence["marks"]) and not mark["language"]:
                close()
                fence = None
            else:
                block.lines.append(line[len(fence["indent"]):])
            continue
        if mark:
            close()
            fence, block = mark, Block(name, number + 1, mark["language"], [], above)
            continue
        if line.startswith("    ") and (block or blank_before):
            block = block or Block(name, number, "", [], above)
            block.lines.append(line[4:])
            continue
        if not line.strip():
            if block:
                block.lines.append("")
            blank_before = True
            continue
        close()
        blank_before, above = False, line
        if HEADING.match(line):
            headings.append(HEADING.match(line)[1])
        prose[number - 1] = line
    if fence:
        raise AssertionError(f"{name}:{block.line - 1}: this fence is not closed")
    close()
    text = "\n".join(prose)
    code_words = [(line_of(text, match), match[2].strip()) for match in INLINE_CODE.finditer(text)]
    return Page(name, headings, links_in(INLINE_CODE.sub(same_lines, text)), blocks, code_words)


def line_of(text, match):
    return text.count("\n", 0, match.start()) + 1


def same_lines(code):
    """What stands for inline code while links are looked for."""
    return "code" + "\n" * code[0].count("\n")


def links_in(prose):
    links = []
    for match in LINK.finditer(prose):
        links.append(Link(line_of(prose, match), match["target"]))
        links += [Link(line_of(prose, match), inside["target"]) for inside in IMAGE_INSIDE.finditer(match["text"])]
    return links


def anchors(page):
    """All anchors of a page; a heading that occurs again gets a number."""
    seen, found = {}, set()
    for heading in page.headings:
        base = slug(heading)
        count = seen.get(base, 0)
        seen[base] = count + 1
        found.add(f"{base}-{count}" if count else base)
    return found


def page_names():
    """Every Markdown page of the tree, from its root."""
    for folder, folders, files in os.walk(SOURCE):
        here = pathlib.Path(folder)
        if here == SOURCE:
            folders[:] = [name for name in folders if name not in NOT_OURS]
        yield from sorted(str((here / file).relative_to(SOURCE)) for file in files if file.endswith(".md"))


def all_pages():
    return {name: read_page(name, (SOURCE / name).read_text(encoding="utf-8")) for name in sorted(page_names())}
