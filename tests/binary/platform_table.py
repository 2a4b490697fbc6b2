#!/usr/bin/env python3
"""The symbols that a host must supply, from the built module, and the two documents that say so.

  check  the generated page says what the module leaves open, and so does the table for readers in the host contract
  write  the generated page anew; ./dev abi --update does it
"""

import argparse
import os
import re
import sys

import check_binary

HERE = os.path.dirname(os.path.abspath(__file__))
SOURCE = os.path.dirname(os.path.dirname(HERE))
PAGE = "docs/platform-symbols.md"
CONTRACT = "docs/host-contract.md"
SECTION = "## What the host supplies"
HEADERS = ("platform", "framework")
STRING = "std::__cxx11::basic_string<char, std::char_traits<char>, std::allocator<char> >"
SPECIAL = {"vtable for ": "virtual table", "typeinfo for ": "type information"}
HEAD = f"""# The symbols that a host supplies

Every symbol that the built module leaves open for the process that loads it, the same on x86_64 and AArch64. This page is
written from the binary (`./dev abi --update`) and a test compares the two; [host-contract.md](host-contract.md) says what each is
for, and the header what it has to do.

| Symbol | Kind | Declared in |
|---|---|---|
"""
FOOT = "\n[The guide](README.md) · Next: [The alarm catalogue](alarm-catalogue.md)\n"


def readable(symbol):
    """The symbol as one would write it: without the standard library's inner names and default arguments."""
    text = symbol.replace(STRING, "std::string").replace("[abi:cxx11]", "").replace("std::__cxx11::", "std::")
    shorter = None
    while shorter != text:
        shorter, text = text, re.sub(r", std::allocator<[^<>]+> ?>", ">", text)
    return text.replace("std::basic_ostringstream<char, std::char_traits<char>>", "std::ostringstream")


def kind_and_name(symbol):
    """What the symbol is, and its qualified name without arguments."""
    for prefix, kind in SPECIAL.items():
        if symbol.startswith(prefix):
            return kind, symbol.removeprefix(prefix)
    name = readable(symbol)
    # A function of C++ shows its arguments; of C there are only functions.
    is_function = "(" in name or "::" not in name
    return ("function" if is_function else "data"), name.split("(")[0]


def header_texts():
    for folder in HEADERS:
        for name in sorted(os.listdir(os.path.join(SOURCE, folder))):
            if name.endswith(".h"):
                with open(os.path.join(SOURCE, folder, name), encoding="utf-8") as text:
                    yield f"{folder}/{name}", text.read()


def header_of(name, texts):
    """The header that declares `name`: that of its class, or of the function."""
    owner = name.split("::")[0]
    declared = re.compile(rf"^(?:class|struct)\b[^;{{]*\b{owner}\b[^;{{]*\{{|\"C\"[^;{{]*\b{owner}\(", re.M)
    found = [path for path, text in texts if declared.search(text)]
    if len(found) != 1:
        raise SystemExit(f"platform_table: {name} is declared in {found or 'no header'} of {' and '.join(HEADERS)}")
    return found[0]


def entries(options):
    """Tuples (symbol, kind, name, header), by header."""
    texts = list(header_texts())
    found = []
    for symbol in check_binary.platform(options):
        kind, name = kind_and_name(symbol)
        found.append((symbol, kind, name, header_of(name, texts)))
    return sorted(found, key=lambda entry: (entry[3], entry[2], entry[0]))


def page(found):
    return HEAD + "".join(f"| `{readable(symbol)}` | {kind} | `{header}` |\n" for symbol, kind, _, header in found) + FOOT


def contract_rows():
    """Pairs (names, headers) of the contract's table; a member without its class has that of the name before it."""
    with open(os.path.join(SOURCE, CONTRACT), encoding="utf-8") as text:
        section = text.read().split(SECTION + "\n", 1)[1].split("\n#", 1)[0]
    for line in section.splitlines():
        cells = line.split("|")
        if len(cells) == 5 and "`" in cells[1]:
            names = []
            for name in re.findall(r"`([^`]+)`", cells[1]):
                alone = not names or "::" in name or re.match(r"C[A-Z]", name)
                names.append(name if alone else names[-1].split("::")[0] + "::" + name)
            yield names, re.findall(r"`([^`]+)`", cells[2])


def contract_problems(found):
    """What the contract's table leaves out, and what it has that the module does not need."""
    rows = list(contract_rows())
    for symbol, _, name, header in found:
        owner = name.split("::")[0]
        if not any((name in names or owner in names) and header in headers for names, headers in rows):
            yield f"{CONTRACT}, \"{SECTION[3:]}\", lacks {readable(symbol)} of {header}"
    needed = {name for _, _, name, _ in found} | {name.split("::")[0] for _, _, name, _ in found}
    for names, _ in rows:
        for name in names:
            if name not in needed:
                yield f"{CONTRACT}, \"{SECTION[3:]}\", has {name}, which the module does not leave open"


def check(options, found):
    with open(os.path.join(SOURCE, PAGE), encoding="utf-8") as text:
        stored = text.read().splitlines()
    extra, missing = check_binary.differences(page(found).splitlines(), stored)
    problems = [f"{options.file} leaves open what {PAGE} lacks: {line}" for line in extra]
    problems += [f"{PAGE} has what {options.file} does not leave open: {line}" for line in missing]
    if problems:
        problems.append(f"If the change is meant, run ./dev abi --update and add to the table of {CONTRACT} what it is for.")
    problems += contract_problems(found)
    print("\n".join(problems) if problems else f"{len(found)} symbols, as {PAGE} and {CONTRACT} have them")
    return 1 if problems else 0


def write(options, found):
    with open(os.path.join(SOURCE, PAGE), "w", encoding="utf-8") as out:
        out.write(page(found))
    print(f"written: {PAGE}, with {len(found)} symbols of {options.file}")
    return 0


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("what", choices=["check", "write"])
    parser.add_argument("--file", required=True, help="the module")
    parser.add_argument("--compiler", default="c++")
    parser.add_argument("--sysroot", default="", help="root of the libraries of a cross build")
    options = parser.parse_args()
    return globals()[options.what](options, entries(options))


if __name__ == "__main__":
    sys.exit(main())
