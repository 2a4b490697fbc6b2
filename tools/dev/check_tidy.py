#!/usr/bin/env python3
"""clang-tidy over every unit of a build tree, with the checks of .clang-tidy. A unit that passed, here or in another clone,
is not looked at again until it, a file that it includes, its flags or the checks change: ~/.cache/talvik-tidy remembers.

Usage: check_tidy.py BUILD-DIRECTORY [NAME-PART...]. Prints the findings and exits 1 if there is any.
"""

import concurrent.futures
import hashlib
import json
import os
import pathlib
import subprocess
import sys
import time
import zlib

import compile_database

ROOT = pathlib.Path(__file__).resolve().parents[2]
# Of the other compiler; clang would stop at them. The compilers' own warnings are the builds' to report: hence -w.
FOREIGN_FLAGS = {"-fno-gnu-unique", "-femit-class-debug-always"}
# How long a pass is remembered after it was last of use, and how many earlier ones of a unit are.
KEPT_SECONDS = 30 * 24 * 3600
KEPT_VERSIONS = 4


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
    """The files that the unit includes, itself among them, as the preprocessor sees them."""
    command = ["clang++", *clang_flags(unit), "-M", "-MT", "x", str(unit.file)]
    done = subprocess.run(command, cwd=unit.directory, capture_output=True, text=True, check=False)
    if done.returncode != 0:
        return None
    names = done.stdout.replace("\\\n", " ").split()[1:]
    return sorted({os.path.normpath(os.path.join(unit.directory, name)) for name in names})


def content_hash(path, known={}):
    if path not in known:
        file = pathlib.Path(path)
        known[path] = hashlib.sha256(file.read_bytes()).hexdigest() if file.is_file() else None
    return known[path]


def digest_of(names):
    return hashlib.sha256("".join(f"{name}\0{content_hash(os.path.join(ROOT, name))}\0" for name in names).encode()).hexdigest()


class Passes:
    """The units that passed and the contents that they passed with. Of every clone: names are kept relative to the root."""

    def __init__(self, version):
        self.folder = pathlib.Path(os.environ.get("XDG_CACHE_HOME") or pathlib.Path.home() / ".cache") / "talvik-tidy"
        self.folder.mkdir(parents=True, exist_ok=True)
        self.version = version
        self._forget_old()

    def _forget_old(self):
        for record in self.folder.iterdir():
            if time.time() - record.stat().st_mtime > KEPT_SECONDS:
                record.unlink(missing_ok=True)

    def _record(self, unit):
        """The file about this unit with these flags and checks. Each line has what it included and a digest of all that."""
        flags = "\0".join(clang_flags(unit)).replace(unit.directory, "build").replace(str(ROOT), ".")
        digest = hashlib.sha256(f"{self.version}\0{unit.name}\0{flags}\0".encode())
        digest.update((ROOT / ".clang-tidy").read_bytes())
        return self.folder / digest.hexdigest()

    @staticmethod
    def _lines(record):
        return zlib.decompress(record.read_bytes()).decode().splitlines() if record.is_file() else []

    def have(self, unit):
        record = self._record(unit)
        for line in self._lines(record):
            digest, *names = line.split("\t")
            if digest == digest_of(names):
                record.touch()
                return True
        return False

    def add(self, unit):
        names = dependencies(unit)
        if names is None:
            return
        inside = str(ROOT) + "/"
        names = [name[len(inside):] if name.startswith(inside) else name for name in names]
        record = self._record(unit)
        lines = [*self._lines(record)[-KEPT_VERSIONS:], "\t".join([digest_of(names), *names])]
        written = record.with_name(f"{record.name}.{os.getpid()}")
        written.write_bytes(zlib.compress("\n".join(lines).encode()))
        written.replace(record)


def look_at(unit, folder, passes):
    """Name of the unit, the findings, empty when there are none, and whether it had passed before."""
    if passes.have(unit):
        return unit.name, "", True
    command = ["clang-tidy", "--quiet", "--warnings-as-errors=*", "-p", str(folder), str(unit.file)]
    done = subprocess.run(command, cwd=unit.directory, capture_output=True, text=True, check=False)
    if done.returncode != 0:
        return unit.name, done.stdout + done.stderr, False
    passes.add(unit)
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
    passes = Passes(version)
    bad = known = 0
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        for job in [pool.submit(look_at, unit, folder, passes) for unit in wanted]:
            name, output, was_known = job.result()
            known += was_known
            if output:
                bad += 1
                print(f"{name}:\n{output}", flush=True)
    print(f"clang-tidy: {len(wanted) - bad} of {len(wanted)} units pass, {known} of them unchanged since they last did")
    return 1 if bad else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
