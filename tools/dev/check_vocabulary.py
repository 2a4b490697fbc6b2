#!/usr/bin/env python3
"""Vocabulary: the tree explains itself in its own words. Files and commit messages refer to nothing that a reader of
the tree does not have: no numbered section of an absent text, no ticket number, no path of one machine.

Usage: check_vocabulary.py [ROOT]. Prints each finding and exits 1 if there is any.
"""

import pathlib
import re
import subprocess
import sys

# The words are put together from pieces, so that this file does not trip over itself.
TEXT = "sp" + "ec"
SECTION = "Par" + "t"
UPPER = "DEVELOPERS" + r"\.md"

PATTERNS = [
    rf"{TEXT}\.md",
    rf"\bthe {TEXT}\b",
    rf"\b{TEXT}s? says",
    "speci" + "fication document",
    "per (the )?" + TEXT,
    rf"\b{SECTION}s? [0-9]\.[0-9]",
    "se" + "ed document",
    r"\biss" + r"ue #?[0-9]+",
    r"\.\./sha" + "red",
    "/(wo" + "rk|fa" + "rm)/",
    UPPER,
    "CE" + r"O\b",
]
WORDS = re.compile("|".join(PATTERNS))
FILE_NAMES = re.compile(rf"(^|/)({TEXT}|part[-_]?[0-9]+[-_.][0-9]+)(\.|/|$)|{TEXT}\.md", re.IGNORECASE)
# Pictures are not text.
SKIPPED = (".svg",)


def git(root, *arguments):
    return subprocess.run(["git", "-C", str(root), *arguments], check=True, capture_output=True).stdout


def findings(root):
    listed = git(root, "ls-files", "-z", "--cached", "--others", "--exclude-standard").decode().split("\0")
    for name in sorted({name for name in listed if name}):
        path = root / name
        if FILE_NAMES.search(name):
            yield f"file name: {name}"
        if not path.is_file() or name.endswith(SKIPPED):
            continue
        content = path.read_bytes()
        if b"\0" in content:
            continue
        for number, line in enumerate(content.decode("utf-8", "replace").splitlines(), 1):
            if WORDS.search(line):
                yield f"text: {name}:{number}: {line.strip()[:160]}"
    if git(root, "rev-list", "-n", "1", "--all").strip():
        log = git(root, "log", "--format=%x00%h %s%n%b").decode("utf-8", "replace")
        for message in log.split("\0"):
            for line in message.splitlines():
                if WORDS.search(line):
                    yield f"commit message {message[:8].strip()}: {line.strip()[:160]}"


def main(arguments):
    root = pathlib.Path(arguments[0] if arguments else pathlib.Path(__file__).resolve().parents[2])
    found = list(findings(root))
    for text in found:
        print(text)
    if not found:
        print("vocabulary: nothing found")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
