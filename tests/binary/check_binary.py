#!/usr/bin/env python3
"""Compares the built module, as a binary, with a reviewed list.

A list has one entry a line; '#' starts a comment. What the binary has and the list lacks is reported, and the other way
round, so a list is always the whole truth.
"""

import argparse
import os
import re
import subprocess
import sys

# Hooks of the toolchain: weak, and absent in an ordinary process.
TOOLCHAIN_HOOKS = {"_ITM_deregisterTMCloneTable", "_ITM_registerTMCloneTable", "__gmon_start__"}
# The name of va_list's own type differs with the machine.
VA_LIST = re.compile(r"__va_list_tag\*|std::__va_list|__va_list")


def run(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def demangled(names):
    done = subprocess.run(["c++filt"], input="\n".join(names), check=True, capture_output=True, text=True)
    return [VA_LIST.sub("va_list", name) for name in done.stdout.splitlines()]


def reviewed(path):
    with open(path, encoding="utf-8") as lines:
        entries = [line.split("#", 1)[0].strip() for line in lines]
    return [entry for entry in entries if entry]


def dynamic_symbols(file, which):
    """Pairs (type letter, name) of the dynamic symbol table; a versioned name keeps its version."""
    pairs = []
    for line in run("nm", "-D", which, file).splitlines():
        fields = line.split()
        pairs.append((fields[-2], fields[-1]))
    return pairs


def needed_libraries(module):
    return re.findall(r"\(NEEDED\)\s+Shared library: \[(.+?)\]", run("readelf", "-dW", module))


def library_file(name, compiler):
    """Where the compiler's machine has a shared library; works for a cross build too."""
    for compiler_name in (compiler, "c++"):
        path = run(compiler_name, "-print-file-name=" + name).strip()
        if os.path.isabs(path) and os.path.exists(path):
            return path
    raise SystemExit(f"check_binary: {compiler} does not find {name}, which the module needs")


def exports(options):
    entries = []
    for kind, name in dynamic_symbols(options.module, "--defined-only"):
        binding = {"T": "function", "W": "weak", "V": "weak", "u": "unique"}.get(kind, f"kind {kind}")
        entries.append((binding, name.split("@")[0]))
    names = demangled([name for _, name in entries])
    return sorted({f"{binding} {name}" for (binding, _), name in zip(entries, names)})


def platform(options):
    supplied = set()
    for library in needed_libraries(options.module):
        symbols = dynamic_symbols(library_file(library, options.compiler), "--defined-only")
        supplied.update(name.split("@")[0] for _, name in symbols)
    open_symbols = [name for _, name in dynamic_symbols(options.module, "--undefined-only") if "@" not in name]
    left = [name for name in open_symbols if name not in supplied and name not in TOOLCHAIN_HOOKS]
    return sorted(set(demangled(left)))


def libraries(options):
    # The version in ACE's name changes with the distribution, and means another build of it, not another library.
    return sorted(re.sub(r"-[0-9.]+\.so$", ".so", name) for name in needed_libraries(options.module))


def hardening(options):
    headers = run("readelf", "-lW", options.module)
    dynamic = run("readelf", "-dW", options.module)
    facts = []
    stack = re.search(r"GNU_STACK(?:\s+0x[0-9a-f]+){5}\s+([RWE]+)", headers)
    facts.append("stack not executable" if stack and "E" not in stack.group(1) else "stack executable")
    facts.append("relocations read-only" if "GNU_RELRO" in headers else "relocations writable")
    bound = re.search(r"\(FLAGS\).*BIND_NOW|\(FLAGS_1\).*NOW|\(BIND_NOW\)", dynamic)
    facts.append("bound at load" if bound else "bound lazily")
    facts.append("text relocations" if "TEXTREL" in dynamic else "no text relocations")
    facts.append("never unloaded" if "NODELETE" in dynamic else "can be unloaded")
    unique = [name for kind, name in dynamic_symbols(options.module, "--defined-only") if kind == "u"]
    facts.append("unique symbols: " + " ".join(unique) if unique else "no unique symbols")
    facts.append("library search path" if re.search(r"\((RPATH|RUNPATH)\)", dynamic) else "no library search path")
    segments = re.findall(r"LOAD(?:\s+0x[0-9a-f]+){5}\s+([RWE ]{3})", headers)
    facts.append("writable code" if any("W" in s and "E" in s for s in segments) else "no writable code")
    return sorted(facts)


def constants(options):
    """Constants that each unit has a copy of; read from the full symbol table, which a stripped module lacks."""
    names = [line.split()[-1] for line in run("nm", "-C", "--defined-only", options.module).splitlines()]
    return [f"{names.count('LOCAL_MAPPED_ADDRESS')} LOCAL_MAPPED_ADDRESS"]


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("what", choices=["exports", "platform", "libraries", "hardening", "constants"])
    parser.add_argument("--module", required=True)
    parser.add_argument("--list", required=True)
    parser.add_argument("--compiler", default="c++")
    options = parser.parse_args()

    found = globals()[options.what](options)
    wanted = reviewed(options.list)
    extra = [entry for entry in found if entry not in wanted]
    missing = [entry for entry in wanted if entry not in found]
    for entry in extra:
        print(f"{options.module} has, and {options.list} lacks: {entry}")
    for entry in missing:
        print(f"{options.list} has, and {options.module} lacks: {entry}")
    if not extra and not missing:
        print(f"{options.what}: {len(found)} entries, all as reviewed")
    return 1 if extra or missing else 0


if __name__ == "__main__":
    sys.exit(main())
