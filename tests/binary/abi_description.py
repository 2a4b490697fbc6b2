"""Descriptions that abidw writes of a library's binary interface: made, reduced to what the project promises, and read."""

import os
import subprocess
import tempfile
import xml.etree.ElementTree as xml

# Of these only name and size are kept: another patch version of the standard library or of ACE is no difference.
FOREIGN = ("std::", "__gnu_cxx::", "__cxxabiv1::", "ACE_", "_")
# The namespace of boundary_types.cpp, whose variables name what is promised.
ROOTS = "talvik::boundary::"
OPTIONS = ["--no-architecture", "--no-show-locs", "--no-corpus-path", "--no-comp-dir-path", "--no-elf-needed",
           "--no-parameter-names", "--type-id-style", "hash"]


def described(library, *options):
    """The root element of what abidw says of `library`."""
    with tempfile.TemporaryDirectory() as folder:
        out = os.path.join(folder, "abi.xml")
        try:
            done = subprocess.run(["abidw", *OPTIONS, *options, "--out-file", out, library],
                                  capture_output=True, text=True, check=False)
        except FileNotFoundError:
            raise SystemExit("check_abi: abidw is missing; ./dev setup installs it (abigail-tools)") from None
        if done.returncode != 0 or not os.path.exists(out):
            raise SystemExit(f"check_abi: abidw cannot describe {library}: {done.stdout}{done.stderr}")
        return xml.parse(out).getroot()


def declarations(element, prefix=""):
    """Pairs (qualified name, element, its parent) of all declarations outside classes."""
    for child in element:
        if child.tag == "abi-instr":
            yield from declarations(child, prefix)
        elif child.tag == "namespace-decl":
            yield from declarations(child, prefix + child.get("name") + "::")
        elif child.tag != "elf-variable-symbols":
            yield prefix + child.get("name", ""), child, element


def references(element):
    """The ids of the types that `element` and what is in it refer to."""
    for inner in element.iter():
        for key in ("type-id", "naming-typedef-id"):
            if inner.get(key):
                yield inner.get(key)


def reduced(root):
    """`root` without the insides of foreign classes, and without what nothing promised refers to."""
    found = list(declarations(root))
    home = {}
    for name, element, _ in found:
        if element.tag in ("class-decl", "union-decl") and name.startswith(FOREIGN):
            for child in list(element):
                element.remove(child)
        for inner in element.iter():
            home.setdefault(inner.get("id"), []).append(element)
    kept = set()
    waiting = [element for name, element, _ in found if name.startswith(ROOTS)]
    while waiting:
        element = waiting.pop()
        if id(element) not in kept:
            kept.add(id(element))
            for reference in references(element):
                waiting.extend(home.get(reference, []))
    for _, element, parent in found:
        if id(element) not in kept:
            parent.remove(element)
    for unit in root.findall("abi-instr"):
        unit.set("path", os.path.basename(unit.get("path", "")))
        drop_empty_namespaces(unit)
    return root


def drop_empty_namespaces(element):
    for inner in element.findall("namespace-decl"):
        drop_empty_namespaces(inner)
        if len(inner) == 0:
            element.remove(inner)


class TypeNames:
    """Types by their ids, as one writes them."""

    def __init__(self, root):
        self.known = {}
        for name, element, _ in declarations(root):
            self.collect(element, name)

    def collect(self, element, name):
        if element.get("id"):
            self.known[element.get("id")] = (element, name)
        for member in element.findall("member-type"):
            self.collect(member[0], name + "::" + member[0].get("name", ""))

    def of(self, reference):
        element, name = self.known[reference]
        if element.tag == "pointer-type-def":
            return self.of(element.get("type-id")) + "*"
        if element.tag == "reference-type-def":
            return self.of(element.get("type-id")) + "&"
        if element.tag == "qualified-type-def":
            marks = [mark for mark in ("const", "volatile") if element.get(mark)]
            return self.of(element.get("type-id")) + " " + " ".join(marks)
        if element.tag == "array-type-def":
            return self.of(element.get("type-id")) + "".join(f"[{range.get('length')}]" for range in element)
        return name or element.tag


def in_bytes(bits):
    return int(bits) // 8


def class_entries(name, element, names):
    yield f"{name}: {in_bytes(element.get('size-in-bits'))} bytes"
    for base in element.findall("base-class"):
        yield f"{name}: at {in_bytes(base.get('layout-offset-in-bits'))} base {names.of(base.get('type-id'))}"
    for data in element.findall("data-member"):
        if data.get("static") != "yes":
            member = data.find("var-decl")
            place = in_bytes(data.get("layout-offset-in-bits"))
            yield f"{name}: at {place} {names.of(member.get('type-id'))} {member.get('name')}"
    for member in element.findall("member-function"):
        # A destructor has two slots and no number of its own.
        if int(member.get("vtable-offset", "-1")) >= 0:
            yield f"{name}: slot {member.get('vtable-offset')} {member[0].get('name')}"
    for member in element.findall("member-type"):
        if member[0].tag == "enum-decl":
            for literal in member[0].findall("enumerator"):
                yield f"{name}::{member[0].get('name')}: {literal.get('name')} = {literal.get('value')}"


def layout(root):
    """For each class of the project that is described: its size, bases, members, virtual operations and literals."""
    names = TypeNames(root)
    classes = {}
    for name, element, _ in declarations(root):
        if element.tag == "class-decl" and element.get("size-in-bits") and not name.startswith(FOREIGN):
            classes[name] = list(class_entries(name, element, names))
    return classes
