#!/usr/bin/env python3
"""Every header compiles alone, and twice in one unit, with the flags of a source that stands near it.

Usage: check_headers.py BUILD-DIRECTORY. Prints what does not compile and exits 1 if there is any.
"""

import concurrent.futures
import os
import pathlib
import subprocess
import sys

import compile_database

ROOT = pathlib.Path(__file__).resolve().parents[2]


def headers():
    command = ["git", "-C", str(ROOT), "ls-files", "-z", "--cached", "--others", "--exclude-standard", "--", "*.h"]
    names = subprocess.run(command, check=True, capture_output=True, text=True).stdout.split("\0")
    return sorted({name for name in names if name and (ROOT / name).is_file()})


def neighbour(header, units):
    """The unit that shares most of its path with the header; its own source before others."""
    own = header[: -len(".h")] + ".cpp"
    if own in units:
        return units[own]

    def closeness(name):
        return len(os.path.commonpath(["/" + name, "/" + header]))

    # A header that belongs to no built room is compiled like the hosts' sources, which see every library.
    best = max(sorted(units), key=lambda name: (closeness(name), name.startswith("host/snmp/")))
    return units[best]


def include_path(header):
    for prefix in ("snmp_types/include/",):
        if header.startswith(prefix):
            return f"<{header[len(prefix):]}>"
    return f'"{header}"'


def compile_alone(header, unit, folder):
    source = folder / (header.replace("/", "__") + ".cpp")
    text = f"#include {include_path(header)}\n#include {include_path(header)}\n"
    if not source.is_file() or source.read_text(encoding="utf-8") != text:
        source.write_text(text, encoding="utf-8")
    command = [*compile_database.compiler_cache(ROOT), unit.compiler, *unit.flags, "-I", str(ROOT)]
    command += ["-c", str(source), "-o", str(source.with_suffix(".o"))]
    done = subprocess.run(command, cwd=unit.directory, capture_output=True, text=True, check=False)
    return header, done.returncode, done.stderr


def main(arguments):
    if len(arguments) != 1:
        print(__doc__, file=sys.stderr)
        return 2
    build = pathlib.Path(arguments[0]).resolve()
    folder = build / "header-check"
    folder.mkdir(exist_ok=True)
    units = compile_database.load(ROOT, build)
    bad = 0
    every = headers()
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        jobs = [pool.submit(compile_alone, header, neighbour(header, units), folder) for header in every]
        for job in jobs:
            header, status, output = job.result()
            if status != 0:
                bad += 1
                print(f"{header}: does not compile alone\n{output}")
    print(f"headers: {len(every) - bad} of {len(every)} compile alone")
    return 1 if bad else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
