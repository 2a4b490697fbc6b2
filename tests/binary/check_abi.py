#!/usr/bin/env python3
"""Compares the binary interface of the module's border with what is stored, from debug information.

  compare  with the stored description, by abidiff, which explains a difference
  layout   with the reviewed list of sizes, offsets, slots and literals, which is the same on every machine
  update   writes both anew, after a change that was meant

Both are the same for every machine that the project is built for. docs/host-contract.md says what to do about a difference.
"""

import argparse
import os
import subprocess
import sys
import tempfile
import xml.etree.ElementTree as xml

import abi_description

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


def reviewed(path):
    with open(path, encoding="utf-8") as lines:
        entries = [line.split("#", 1)[0].strip() for line in lines]
    return [entry for entry in entries if entry]


def report(wanted, found, source, path):
    extra = [entry for entry in found if entry not in wanted]
    missing = [entry for entry in wanted if entry not in found]
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
    wanted = reviewed(options.layout)
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


def main():
    here = os.path.dirname(os.path.abspath(__file__))
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("what", choices=["compare", "layout", "update"])
    parser.add_argument("--library", required=True, help="the library that names all types of the border")
    parser.add_argument("--description", default=os.path.join(here, "boundary.xml"))
    parser.add_argument("--layout", default=os.path.join(here, "layout.txt"))
    parser.add_argument("--module", help="layout: the module, whose own debug information must say the same")
    parser.add_argument("--engine", default="CSnmpTableBase",
                        help="layout: the class whose debug information comes with the host's half of it")
    options = parser.parse_args()
    return globals()[options.what](options)


if __name__ == "__main__":
    sys.exit(main())
