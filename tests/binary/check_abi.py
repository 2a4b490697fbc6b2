#!/usr/bin/env python3
"""Compares the binary interface of the module's border with what is stored, from debug information.

  compare  with the stored description, by abidiff, which explains a difference
  layout   with the reviewed list of sizes, offsets, slots and literals, which is the same on every machine
  update   writes both anew, after a change that was meant
  named    no library: whether all that the module leaves open (platform_symbols.txt) is named in the library's source, which is
           kept by hand, and is in the stored description

The stored forms are the same for every machine that the project is built for. docs/host-contract.md says what to do about a
difference.
"""

import argparse
import os
import re
import subprocess
import sys
import tempfile
import xml.etree.ElementTree as xml

import abi_description
import check_binary
import platform_table

SKIPPED = 77
RENEW = "If the change is meant, every host must be compiled anew: say so in CHANGELOG.md, then run ./dev abi --update."


def write_description(root, path):
    xml.indent(root)
    with open(path, "w", encoding="utf-8") as out:
        out.write(xml.tostring(root, encoding="unicode") + "\n")


def compare(options):
    with tempfile.TemporaryDirectory() as folder:
        current = os.path.join(folder, "current.xml")
        write_description(abi_description.reduced(abi_description.described(options.library)), current)
        done = subprocess.run(["abidiff", "--no-architecture", options.description, current],
                              capture_output=True, text=True, check=False)
    print(done.stdout + done.stderr, end="")
    if done.returncode == 0:
        print(f"the binary interface is that of {options.description}")
        return 0
    print(f"The binary interface differs from {options.description}. {RENEW}")
    return 1


def report(wanted, found, source, path):
    extra, missing = check_binary.differences(found, wanted)
    for entry in extra:
        print(f"{source} has, and {path} lacks: {entry}")
    for entry in missing:
        print(f"{path} has, and {source} lacks: {entry}")
    return len(extra) + len(missing)


def has_debug_information(file):
    sections = subprocess.run(["readelf", "-SW", file], check=True, capture_output=True, text=True).stdout
    return ".debug_info" in sections


def compiled_in(options, classes):
    """How often the module was compiled with another layout than `classes` says."""
    own = abi_description.layout(abi_description.described(options.module, "--load-all-types"))
    differences = 0
    for name in sorted(classes.keys() - {options.engine}):
        differences += report(classes[name], own.get(name, []), options.module, options.library)
    return differences


def layout(options):
    wanted = check_binary.reviewed(options.layout)
    classes = abi_description.layout(abi_description.reduced(abi_description.described(options.library)))
    found = [entry for entries in classes.values() for entry in entries]
    differences = report(wanted, found, options.library, options.layout)
    if options.module:
        if not has_debug_information(options.module):
            print(f"{options.module} has no debug information: build it with -g")
            return SKIPPED
        differences += compiled_in(options, classes)
    if differences:
        print(RENEW)
        return 1
    print(f"layout: {len(found)} entries of {len(classes)} classes, all as reviewed")
    return 0


def update(options):
    root = abi_description.reduced(abi_description.described(options.library))
    write_description(root, options.description)
    with open(options.layout, encoding="utf-8") as lines:
        head = [line for line in lines if line.startswith("#")]
    with open(options.layout, "w", encoding="utf-8") as out:
        out.writelines(head)
        for entries in abi_description.layout(root).values():
            out.write("\n" + "\n".join(entries) + "\n")
    print(f"written: {options.description}, {options.layout}; look at their difference before you commit it")
    return 0


def described_names(path):
    """What the stored description has: the variables that name something, the classes, and the virtual operations of these."""
    found = set()
    for name, element, _ in abi_description.declarations(xml.parse(path).getroot()):
        if element.get("is-declaration-only"):
            continue
        found.add(name)
        if element.tag == "class-decl":
            found |= {f"{name}::{operation.get('name')}" for operation in element.findall("member-function/function-decl")}
    return found


def problem_of(name, kind, variables, described):
    """Why the description does not tell when `name` changes; None if it does."""
    owner, _, member = name.rpartition("::")
    if kind in platform_table.SPECIAL.values() or member.lstrip("~") == owner:  # those cannot be named, but come with the class
        whole = owner or name
        return None if whole in described else f"the class must be named: {whole}* ...;"
    if name in described:
        return None
    if name not in variables:
        return f"it must be named: decltype(&{name}) ...; in free(...) if it takes an object"
    return None if abi_description.ROOTS + variables[name] in described else f"it is named ({variables[name]}), but not stored"


def named(options):
    with open(options.types, encoding="utf-8") as text:
        variables = dict(re.findall(r"^decltype\((?:free\()?&([^)]+)\)+ (\w+);$", text.read(), re.M))
    described = described_names(options.description)
    problems, symbols = [], check_binary.reviewed(options.symbols)
    for symbol in symbols:
        kind, name = platform_table.kind_and_name(symbol)
        problem = problem_of(name, kind, variables, described)
        if problem:
            problems.append(f"{options.symbols} has {platform_table.readable(symbol)}, which {options.description} does not "
                            f"describe: {problem}")
    if problems:
        print("\n".join(problems))
        print(f"Add what is missing to {options.types}, then run ./dev abi --update; until then nothing tells when it changes.")
        return 1
    print(f"{len(symbols)} symbols of {options.symbols}, all described by {options.description}")
    return 0


def main():
    here = os.path.dirname(os.path.abspath(__file__))
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("what", choices=["compare", "layout", "update", "named"])
    parser.add_argument("--library", help="the library that names all types of the border; all but named need it")
    parser.add_argument("--description", default=os.path.join(here, "boundary.xml"))
    parser.add_argument("--layout", default=os.path.join(here, "layout.txt"))
    parser.add_argument("--module", help="layout: the module, whose own debug information must say the same")
    parser.add_argument("--engine", default="CSnmpTableBase",
                        help="layout: the class whose debug information comes with the host's half of it")
    parser.add_argument("--symbols", default=os.path.join(here, "platform_symbols.txt"), help="named: what must be described")
    parser.add_argument("--types", default=os.path.join(here, "boundary_types.cpp"), help="named: the library's source")
    options = parser.parse_args()
    if options.what != "named" and not options.library:
        parser.error(f"{options.what} needs --library")
    return globals()[options.what](options)


if __name__ == "__main__":
    sys.exit(main())
