#!/usr/bin/env python3
"""Builds the module against another set of platform headers, and looks at what came out.

The set is this tree's headers with those of tests/platform_choice/platform/ in their place.
"""

import argparse
import os
import shutil
import subprocess
import sys
import unittest

HERE = os.path.dirname(os.path.abspath(__file__))
SOURCE = os.path.dirname(os.path.dirname(HERE))
sys.path.insert(0, os.path.join(SOURCE, "tests", "binary"))
import abi_description  # noqa: E402  (its folder is known only now)

parser = argparse.ArgumentParser(description=__doc__)
parser.add_argument("--work", required=True, help="a folder of the test's own; what was compiled there stays for the next run")
parser.add_argument("--cmake", default="cmake")
parser.add_argument("--generator", default="Ninja")
parser.add_argument("--compiler", default="c++")
options = parser.parse_args()
headers = os.path.join(options.work, "vendor")
build = os.path.join(options.work, "build")
module = os.path.join(build, "lib", "libSnmpTalvikMibModule.so")


def run(*command):
    return subprocess.run(command, capture_output=True, text=True, check=False)


def configure(folder, name="build"):
    done = run(options.cmake, "-S", SOURCE, "-B", os.path.join(options.work, name), "-G", options.generator,
               f"-DCMAKE_CXX_COMPILER={options.compiler}", "-DCMAKE_BUILD_TYPE=Debug", "-DCMAKE_CXX_FLAGS_DEBUG=-O0 -g",
               "-DTALVIK_WERROR=ON", f"-DTALVIK_PLATFORM_DIR={folder}")
    # CMake wraps a message to the width of a line.
    return done.returncode, " ".join((done.stdout + done.stderr).split())


def write_set():
    shutil.rmtree(headers, ignore_errors=True)
    # With their times: what has not changed is not compiled anew.
    shutil.copytree(os.path.join(SOURCE, "platform"), os.path.join(headers, "platform"))
    shutil.copytree(os.path.join(HERE, "platform"), os.path.join(headers, "platform"), dirs_exist_ok=True)


class PlatformChoice(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        write_set()
        cls.status, cls.output = configure(headers)
        if cls.status != 0:
            raise AssertionError(cls.output)
        done = run(options.cmake, "--build", build, "--parallel", str(os.cpu_count()))
        if done.returncode != 0:
            raise AssertionError(done.stdout + done.stderr)

    def test_tells_that_only_the_module_is_built(self):
        self.assertIn("only the module is built", self.output)
        self.assertTrue(os.path.exists(module))
        self.assertFalse(os.path.exists(os.path.join(build, "bin")))

    def test_exports_what_the_module_of_this_tree_exports(self):
        done = run(sys.executable, "-B", os.path.join(SOURCE, "tests", "binary", "check_binary.py"), "exports", "--file", module,
                   "--list", os.path.join(SOURCE, "tests", "binary", "exported_symbols.txt"))
        self.assertEqual(done.returncode, 0, done.stdout + done.stderr)

    def test_installs_the_module_and_its_data(self):
        prefix = os.path.join(options.work, "installed")
        shutil.rmtree(prefix, ignore_errors=True)
        done = run(options.cmake, "--install", build, "--prefix", prefix)
        self.assertEqual(done.returncode, 0, done.stdout + done.stderr)
        for name in ("lib/talvik/libSnmpTalvikMibModule.so", "share/talvik/mibs/KEL-TALVIK-MIB.json"):
            self.assertTrue(os.path.isfile(os.path.join(prefix, name)), name)
        self.assertFalse(os.path.exists(os.path.join(prefix, "sbin")))

    def test_leaves_open_what_the_headers_declare(self):
        left_open = set(run("nm", "-DC", "--undefined-only", "--format=just-symbols", module).stdout.splitlines())
        self.assertIn("vendor_checked_copy", left_open)
        self.assertIn("CNotifyHandler::instance()", left_open)
        for name in ("memcpy_s", "KelUtility::UintToStr[abi:cxx11](unsigned int)"):
            self.assertNotIn(name, left_open)

    def test_lays_classes_out_as_the_headers_do(self):
        dispatcher = abi_description.layout(abi_description.described(module, "--load-all-types"))["CNotifyHandler"]
        self.assertIn("CNotifyHandler: 64 bytes", dispatcher)
        self.assertIn("CNotifyHandler: at 0 std::string m_sVendorName", dispatcher)
        self.assertEqual([line.split()[2] for line in dispatcher if line.endswith(" m_oHandlers")], ["32"])

    def test_refuses_a_set_without_one_of_the_headers(self):
        lacking = os.path.join(options.work, "lacking")
        shutil.rmtree(lacking, ignore_errors=True)
        shutil.copytree(headers, lacking)
        os.remove(os.path.join(lacking, "platform", "trap_api.h"))
        status, output = configure(lacking, "refused")
        self.assertNotEqual(status, 0)
        self.assertIn(f"TALVIK_PLATFORM_DIR is \"{lacking}\", which lacks platform/trap_api.h.", output)

    def test_refuses_the_headers_own_folder(self):
        status, output = configure(os.path.join(headers, "platform"), "refused")
        self.assertNotEqual(status, 0)
        self.assertIn("holds no folder platform/. Name the folder above the headers", output)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=2)
