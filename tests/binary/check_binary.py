#!/usr/bin/env python3
"""Compares the built module, or a program, as a binary, with a reviewed list.

A list has one entry a line; '#' starts a comment. What the binary has and the list lacks is reported, and the other way
round, so a list is always the whole truth.
"""

import argparse
import collections
import os
import re
import subprocess
import sys

# Hooks of the toolchain: weak, and absent in an ordinary process.
TOOLCHAIN_HOOKS = {"_ITM_deregisterTMCloneTable", "_ITM_registerTMCloneTable", "__gmon_start__"}
LIBRARY_CALLS = ("C library's calls checked", "C library's calls unchecked")
# Tables of classes that libraries bring; layout.txt has the slots of the SNMP value types.
FOREIGN_TABLES = ("ACE_", "Agentpp::", "Snmp_pp::")
# The name of va_list's own type differs with the machine.
VA_LIST = re.compile(r"__va_list_tag\*|std::__va_list|__va_list")


def run(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def demangled(names, *options):
    done = subprocess.run(["c++filt", *options], input="\n".join(names), check=True, capture_output=True, text=True)
    return [VA_LIST.sub("va_list", name) for name in done.stdout.splitlines()]


def reviewed(path):
    with open(path, encoding="utf-8") as lines:
        entries = [line.split("#", 1)[0].strip() for line in lines]
    return [entry for entry in entries if entry]


def differences(found, wanted):
    """What each of two lists has that the other lacks, or has less often."""
    found, wanted = collections.Counter(found), collections.Counter(wanted)
    return list((found - wanted).elements()), list((wanted - found).elements())


def dynamic_symbols(file, which):
    """Pairs (type letter, name) of the dynamic symbol table; a versioned name keeps its version."""
    pairs = []
    for line in run("nm", "-D", which, file).splitlines():
        fields = line.split()
        pairs.append((fields[-2], fields[-1]))
    return pairs


def needed_libraries(module):
    return re.findall(r"\(NEEDED\)\s+Shared library: \[(.+?)\]", run("readelf", "-dW", module))


def library_file(name, options):
    """Where the compiler's machine has a shared library; works for a cross build too."""
    for compiler in [options.compiler] if options.sysroot else [options.compiler, "c++"]:
        sysroot = ["--sysroot=" + options.sysroot] if options.sysroot else []
        path = run(compiler, *sysroot, "-print-file-name=" + name).strip()
        if os.path.isabs(path) and os.path.exists(path):
            return path
    # A sysroot may keep a library under a link that only its own system can follow.
    for folder, _, files in os.walk(os.path.join(options.sysroot, "usr/lib") if options.sysroot else ""):
        if name in files:
            return os.path.join(folder, name)
    where = f" in {options.sysroot}" if options.sysroot else ""
    raise SystemExit(f"check_binary: {options.compiler} does not find {name}{where}, which {options.file} needs")


def exports(options):
    entries = []
    for kind, name in dynamic_symbols(options.file, "--defined-only"):
        binding = {"T": "function", "W": "weak", "V": "weak", "u": "unique"}.get(kind, f"kind {kind}")
        entries.append((binding, name.split("@")[0]))
    names = demangled([name for _, name in entries])
    return sorted({f"{binding} {name}" for (binding, _), name in zip(entries, names)})


def platform(options):
    supplied = set()
    for library in needed_libraries(options.file):
        symbols = dynamic_symbols(library_file(library, options), "--defined-only")
        supplied.update(name.split("@")[0] for _, name in symbols)
    open_symbols = [name for _, name in dynamic_symbols(options.file, "--undefined-only") if "@" not in name]
    left = [name for name in open_symbols if name not in supplied and name not in TOOLCHAIN_HOOKS]
    return sorted(set(demangled(left)))


def libraries(options):
    # The loader itself is named where the stack's guard is a variable of its. The version in ACE's name changes with the
    # distribution, and means another build of it, not another library.
    names = [name for name in needed_libraries(options.file) if not name.startswith("ld-linux-")]
    return sorted(re.sub(r"-[0-9.]+\.so$", ".so", name) for name in names)


def hardening(options):
    headers = run("readelf", "-lW", options.file)
    dynamic = run("readelf", "-dW", options.file)
    facts = []
    stack = re.search(r"GNU_STACK(?:\s+0x[0-9a-f]+){5}\s+([RWE]+)", headers)
    facts.append("stack not executable" if stack and "E" not in stack.group(1) else "stack executable")
    facts.append("relocations read-only" if "GNU_RELRO" in headers else "relocations writable")
    bound = re.search(r"\(FLAGS\).*BIND_NOW|\(FLAGS_1\).*NOW|\(BIND_NOW\)", dynamic)
    facts.append("bound at load" if bound else "bound lazily")
    facts.append("text relocations" if "TEXTREL" in dynamic else "no text relocations")
    facts.append("never unloaded" if "NODELETE" in dynamic else "can be unloaded")
    unique = [name for kind, name in dynamic_symbols(options.file, "--defined-only") if kind == "u"]
    facts.append("unique symbols: " + " ".join(unique) if unique else "no unique symbols")
    facts.append("library search path" if re.search(r"\((RPATH|RUNPATH)\)", dynamic) else "no library search path")
    segments = re.findall(r"LOAD(?:\s+0x[0-9a-f]+){5}\s+([RWE ]{3})", headers)
    facts.append("writable code" if any("W" in s and "E" in s for s in segments) else "no writable code")
    facts.append("position-independent program" if re.search(r"\(FLAGS_1\).*PIE", dynamic) else "shared object")
    facts.append(build_id_fact(options.file))
    used = {name.split("@")[0] for _, name in dynamic_symbols(options.file, "--undefined-only")}
    facts.append("stack protected" if "__stack_chk_fail" in used else "stack unprotected")
    checked = [name for name in used if re.fullmatch(r"__\w+_chk", name)]
    facts.append(LIBRARY_CALLS[0] if checked else LIBRARY_CALLS[1])
    return sorted(facts)


def build_id_fact(file):
    build_id = re.search(r"Build ID: ([0-9a-f]+)", run("readelf", "-nW", file))
    return f"build id of {len(build_id.group(1)) // 2} bytes" if build_id else "no build id"


def function_names(file):
    """Names of the functions at each address; identical functions may have been made one."""
    names = {}
    for line in run("nm", "--defined-only", file).splitlines():
        address, kind, name = line.split(" ", 2)
        if kind in "tTwW":
            names.setdefault(int(address, 16), []).append(name)
    return names


def table_entries(file):
    """Pairs (mangled table, slot, names of what stands there) of the virtual tables that the file defines."""
    symbols = re.findall(r"^\s*\d+: ([0-9a-f]+)\s+(\d+) OBJECT.* (_ZTV\w+)$", run("readelf", "-sW", file), re.M)
    relocations = {}
    for line in run("readelf", "-rW", file).splitlines():
        fields = line.split()
        if len(fields) >= 4 and re.fullmatch(r"[0-9a-f]{8,}", fields[0]):
            # Either a symbol's value, its name, "+" and an addend, or an address in this file alone.
            relocations[int(fields[0], 16)] = fields[4].split("@")[0] if len(fields) > 4 else int(fields[3], 16)
    functions = function_names(file)
    for address, size, table in sorted(set(symbols), key=lambda symbol: symbol[2]):
        # In front of the operations stand the offset to the whole object and its type information.
        first = int(address, 16) + 16
        for place in range(first, int(address, 16) + int(size), 8):
            target = relocations.get(place, 0)
            yield table, (place - first) // 8, functions.get(target, []) if isinstance(target, int) else [target]


def tables(options):
    """What stands in each slot of the classes' virtual tables; read from the full symbol table, as the constants are."""
    entries = list(table_entries(options.file))
    # Whether an abstract class has a table at all is the optimiser's choice.
    abstract = {table for table, _, names in entries if names == ["__cxa_pure_virtual"]}
    mangled = {name for table, _, names in entries for name in [table, *names]} | {"nothing"}
    readable = dict(zip(sorted(mangled), demangled(sorted(mangled), "--no-params")))
    wanted = set(reviewed(options.list))
    found = []
    for table, slot, names in entries:
        owner = readable[table].removeprefix("vtable for ")
        if table not in abstract and not owner.startswith(FOREIGN_TABLES) and "(anonymous namespace)" not in owner:
            choices = sorted({f"{owner}: slot {slot} {readable[name]}" for name in names or ["nothing"]})
            found.append(next((choice for choice in choices if choice in wanted), choices[0]))
    return found


def constants(options):
    """Constants that each unit has a copy of; read from the full symbol table, which a stripped module lacks."""
    names = [line.split()[-1] for line in run("nm", "-C", "--defined-only", options.file).splitlines()]
    return [f"{names.count('LOCAL_MAPPED_ADDRESS')} LOCAL_MAPPED_ADDRESS"]


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("what", choices=["exports", "platform", "libraries", "hardening", "constants", "tables"])
    parser.add_argument("--file", required=True, help="the module, or for hardening also a program")
    parser.add_argument("--list", required=True)
    parser.add_argument("--compiler", default="c++")
    parser.add_argument("--sysroot", default="", help="root of the libraries of a cross build")
    parser.add_argument("--unoptimised", action="store_true", help="the C library has checked calls for optimised code only")
    options = parser.parse_args()

    entries = [globals()[options.what](options), reviewed(options.list)]
    if options.unoptimised:
        entries = [[entry for entry in some if entry not in LIBRARY_CALLS] for some in entries]
    found, wanted = entries
    extra, missing = differences(found, wanted)
    for entry in extra:
        print(f"{options.file} has, and {options.list} lacks: {entry}")
    for entry in missing:
        print(f"{options.list} has, and {options.file} lacks: {entry}")
    if not extra and not missing:
        print(f"{options.what}: {len(found)} entries, all as reviewed")
    return 1 if extra or missing else 0


if __name__ == "__main__":
    sys.exit(main())
