#!/usr/bin/env python3
"""The module as it is shipped: without debug information, which lies in a file of its own and still tells where code is."""

import argparse
import os
import re
import subprocess
import sys
import tempfile
import unittest

parser = argparse.ArgumentParser(description=__doc__)
parser.add_argument("--module", required=True, help="as it was built")
parser.add_argument("--build", required=True, help="the build tree, to install from")
for tool in ("cmake", "objcopy", "addr2line"):
    parser.add_argument("--" + tool, default=tool)
options = parser.parse_args()
FACTORY = "SNMP_SvcModuleCreator"


def run(*command):
    return subprocess.run(command, check=True, capture_output=True, encoding="utf-8", errors="replace").stdout


def sections(file):
    return set(re.findall(r"\]\s+(\.\S+)", run("readelf", "-SW", file)))


def build_id(file):
    return re.search(r"Build ID: ([0-9a-f]{40})\b", run("readelf", "-nW", file)).group(1)


def exported(file):
    """Addresses of what the file exports, by name."""
    fields = [line.split() for line in run("nm", "-D", "--defined-only", file).splitlines()]
    return {name: address for address, _, name in fields}


class SplitDebug(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(cls.folder.cleanup)
        run(options.cmake, "--install", options.build, "--component", "module", "--strip", "--prefix", cls.folder.name)
        cls.shipped = os.path.join(cls.folder.name, "lib", "talvik", os.path.basename(options.module))
        cls.debug = os.path.join(cls.folder.name, os.path.basename(options.module) + ".debug")
        run(options.objcopy, "--only-keep-debug", options.module, cls.debug)
        run(options.objcopy, "--add-gnu-debuglink=" + cls.debug, cls.shipped)

    def test_the_shipped_file_has_no_debug_information(self):
        found = sections(self.shipped)
        self.assertEqual([name for name in found if name.startswith(".debug_")], [])
        self.assertNotIn(".symtab", found)
        self.assertIn(".debug_info", sections(self.debug))

    def test_the_shipped_file_leads_to_the_other(self):
        self.assertEqual(build_id(self.shipped), build_id(options.module))
        self.assertEqual(build_id(self.debug), build_id(options.module))
        link = run("readelf", "--string-dump=.gnu_debuglink", self.shipped)
        self.assertIn(os.path.basename(self.debug), link)

    def test_the_shipped_file_exports_what_the_built_one_does(self):
        self.assertEqual(exported(self.shipped), exported(options.module))

    def test_the_other_tells_function_file_and_line(self):
        address = exported(self.shipped)[FACTORY]
        function, place = run(options.addr2line, "-f", "-e", self.debug, "0x" + address).splitlines()
        self.assertEqual(function, FACTORY)
        # A path from the root of the tree: no folder of the machine that built it.
        self.assertRegex(place, r"^(\./)?module/talvik_mib_module\.cpp:[1-9]\d*$")


if __name__ == "__main__":
    if ".debug_info" not in sections(options.module):
        print(f"{options.module} has no debug information: build it with -g")
        sys.exit(77)
    unittest.main(argv=sys.argv[:1], verbosity=2)
