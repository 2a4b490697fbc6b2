#!/usr/bin/env python3
"""Changelog rule: a change that a host or a user can notice has an entry under "Unreleased" in CHANGELOG.md.

Compares the work tree with the merge base of HEAD and the main branch; TALVIK_BASE names another revision to compare with.
Without a base (work on main itself in a clone of nothing, a shallow clone) there is nothing to compare, and that is said.
Usage: check_changelog.py [ROOT]
"""

import os
import pathlib
import re
import subprocess
import sys

WATCHED = ("platform/", "etc/", "mibs/", "docs/tlv-format.md")
CHANGELOG = "CHANGELOG.md"
UNRELEASED = re.compile(r"^## \[?Unreleased\]?.*?$(.*?)(?=^## |\Z)", re.MULTILINE | re.DOTALL | re.IGNORECASE)


def git(root, *arguments):
    """The output, or None when git refuses."""
    done = subprocess.run(["git", "-C", str(root), *arguments], capture_output=True, text=True, check=False)
    return done.stdout if done.returncode == 0 else None


def base_of(root):
    on_main = (git(root, "symbolic-ref", "--short", "HEAD") or "").strip() == "main"
    candidates = [os.environ.get("TALVIK_BASE"), "origin/HEAD", "origin/main", None if on_main else "main"]
    for candidate in filter(None, candidates):
        found = git(root, "merge-base", "HEAD", candidate)
        if found:
            return found.strip()
    return None


def unreleased(text):
    match = UNRELEASED.search(text or "")
    return match.group(1).strip() if match else ""


def main(arguments):
    root = pathlib.Path(arguments[0] if arguments else pathlib.Path(__file__).resolve().parents[2])
    base = base_of(root)
    if base is None:
        print("changelog: no main branch to compare with; skipped")
        return 0
    changed = (git(root, "diff", "--name-only", base) or "").splitlines()
    changed += (git(root, "ls-files", "--others", "--exclude-standard") or "").splitlines()
    noticed = sorted({name for name in changed if name.startswith(WATCHED)})
    if not noticed:
        print(f"changelog: nothing that needs an entry changed since {base[:10]}")
        return 0
    path = root / CHANGELOG
    now = unreleased(path.read_text(encoding="utf-8") if path.is_file() else "")
    if now and now != unreleased(git(root, "show", f"{base}:{CHANGELOG}")):
        print(f"changelog: has an entry for the changes since {base[:10]}")
        return 0
    print(f"{CHANGELOG}: a host or a user can notice these changes since {base[:10]}; say so under \"Unreleased\":")
    for name in noticed:
        print(f"  {name}")
    return 1


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
