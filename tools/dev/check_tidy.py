#!/usr/bin/env python3
"""clang-tidy over every unit of a build tree, with the checks of .clang-tidy. A unit that passed is not looked at again
until it, a file that it includes, its flags or the checks change.

Usage: check_tidy.py BUILD-DIRECTORY [NAME-PART...]. Prints the findings and exits 1 if there is any.
"""

import concurrent.futures
import hashlib
import json
import os
import pathlib
import subprocess
import sys

import compile_database

ROOT = pathlib.Path(__file__).resolve().parents[2]
# Of the other compiler; clang would stop at them. The compilers' own warnings are the builds' to report: hence -w.
FOREIGN_FLAGS = {"-fno-gnu-unique", "-femit-class-debug-always"}


def clang_flags(unit):
    return [flag for flag in unit.flags if flag not in FOREIGN_FLAGS] + ["-w"]


def write_database(units, folder):
    entries = [
        {
            "directory": unit.directory,
            "file": str(unit.file),
            "arguments": ["clang++", *clang_flags(unit), "-c", str(unit.file)],
        }
        for unit in units.values()
    ]
    (folder / "compile_commands.json").write_text(json.dumps(entries), encoding="utf-8")


def dependencies(unit):
    """The files that the unit includes, as the preprocessor sees them."""
    command = ["clang++", *clang_flags(unit), "-M", "-MT", "x", str(unit.file)]
    done = subprocess.run(command, cwd=unit.directory, capture_output=True, text=True, check=False)
    if done.returncode != 0:
        return None
    names = done.stdout.replace("\\\n", " ").split()[1:]
    return sorted({os.path.normpath(os.path.join(unit.directory, name)) for name in names})


def content_hash(path, known={}):
    if path not in known:
        known[path] = hashlib.sha256(pathlib.Path(path).read_bytes()).hexdigest()
    return known[path]


def key_of(unit, version):
    names = dependencies(unit)
    if names is None:
        return None
    digest = hashlib.sha256(version.encode())
    digest.update((ROOT / ".clang-tidy").read_bytes())
    digest.update("\0".join(clang_flags(unit)).encode())
    for name in names:
        digest.update(f"{name}\0{content_hash(name)}\0".encode())
    return digest.hexdigest()


def look_at(unit, folder, version):
    """Name of the unit and the findings, empty when there are none."""
    key = key_of(unit, version)
    passed = folder / key if key else None
    if passed and passed.is_file():
        return unit.name, "", True
    command = ["clang-tidy", "--quiet", "--warnings-as-errors=*", "-p", str(folder), str(unit.file)]
    done = subprocess.run(command, cwd=unit.directory, capture_output=True, text=True, check=False)
    if done.returncode != 0:
        return unit.name, done.stdout + done.stderr, False
    if passed:
        passed.touch()
    return unit.name, "", False


def main(arguments):
    if not arguments:
        print(__doc__, file=sys.stderr)
        return 2
    build = pathlib.Path(arguments[0]).resolve()
    folder = build / "tidy"
    folder.mkdir(exist_ok=True)
    units = compile_database.load(ROOT, build)
    write_database(units, folder)
    wanted = [unit for name, unit in sorted(units.items()) if not arguments[1:] or any(p in name for p in arguments[1:])]
    version = subprocess.run(["clang-tidy", "--version"], check=True, capture_output=True, text=True).stdout
    bad = known = 0
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        for job in [pool.submit(look_at, unit, folder, version) for unit in wanted]:
            name, output, was_known = job.result()
            known += was_known
            if output:
                bad += 1
                print(f"{name}:\n{output}", flush=True)
    print(f"clang-tidy: {len(wanted) - bad} of {len(wanted)} units pass, {known} of them unchanged since they last did")
    return 1 if bad else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
