#!/usr/bin/env python3
"""Looks at the packages of a build tree, of this machine's architecture or another.

Usage: check_packages.py BUILD-DIRECTORY

Each is for the machine that the module is for, depends on what the list of shared libraries says, and the package of debug
symbols has those of the module, by build id.
"""

import pathlib
import re
import subprocess
import sys
import tempfile

SOURCE = pathlib.Path(__file__).resolve().parents[2]
LIBRARIES = SOURCE / "packaging" / "deb" / "shared-libraries.txt"
MODULE = "libSnmpTalvikMibModule.so"
ARCHITECTURES = {"AArch64": "arm64", "Advanced Micro Devices X86-64": "amd64"}
NAMES = ("talvik-agent", "talvik-agent-dbgsym", "talvik-dev", "talvik-mib-module", "talvik-mib-module-dbgsym")


def run(*command):
    return subprocess.run([str(part) for part in command], check=True, capture_output=True, text=True, timeout=120).stdout


def build_id(file):
    return re.search(r"Build ID: ([0-9a-f]+)", run("readelf", "-nW", file)).group(1)


def architecture(file):
    return ARCHITECTURES[re.search(r"Machine:\s+(.*)", run("readelf", "-hW", file)).group(1).strip()]


def listed_libraries(component):
    (line,) = [line for line in LIBRARIES.read_text().splitlines() if line.startswith(component + ": ")]
    return line.split(": ", 1)[1].split(", ")


def problems(build):
    module = build / "lib" / MODULE
    packages = {}
    for name in NAMES:
        found = list((build / "packages").glob(f"{name}_*.deb"))
        if len(found) != 1:
            yield f"{build}/packages has {len(found)} packages {name}, not one"
            return
        packages[name] = found[0]

    def field(name, which):
        return run("dpkg-deb", "--field", packages[name], which).strip()

    for name in NAMES:
        if field(name, "Architecture") != architecture(module):
            yield f"{name} is for {field(name, 'Architecture')}, but the module is for {architecture(module)}"
    for component, name in (("module", "talvik-mib-module"), ("agent", "talvik-agent")):
        depends = [one for one in field(name, "Depends").split(", ") if one.startswith("lib")]
        if sorted(depends) != sorted(listed_libraries(component)):
            yield f"{name} depends on {', '.join(depends)}, but {LIBRARIES} says {', '.join(listed_libraries(component))}"

    with tempfile.TemporaryDirectory() as folder:
        for name in ("talvik-mib-module", "talvik-mib-module-dbgsym"):
            run("dpkg-deb", "--extract", packages[name], folder)
        installed = pathlib.Path(folder) / "usr/lib/talvik" / MODULE
        built, packed = build_id(module), build_id(installed)
        symbols = pathlib.Path(folder) / "usr/lib/debug/.build-id" / packed[:2] / f"{packed[2:]}.debug"
        if packed != built:
            yield f"the module of the package has the build id {packed}, the one that was built {built}"
        if not symbols.is_file() or architecture(symbols) != architecture(module):
            yield f"talvik-mib-module-dbgsym has no debug symbols for the build id {packed}"
        elif field("talvik-mib-module-dbgsym", "Build-Ids").split() != [packed]:
            yield f"talvik-mib-module-dbgsym does not say that it is for the build id {packed}"


def main(arguments):
    if len(arguments) != 1:
        print(__doc__, file=sys.stderr)
        return 2
    build = pathlib.Path(arguments[0])
    found = list(problems(build))
    for problem in found:
        print(f"check_packages: {problem}", file=sys.stderr)
    if not found:
        print(f"{len(NAMES)} packages for {architecture(build / 'lib' / MODULE)}, as they should be")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
