#!/usr/bin/env python3
"""A host with platform symbols of its own takes the headers and talvik::framework alone from what is installed.

Its symbols are those of the tests' fake host, with the reference host's cells and records.
"""

import os
import shlex
import shutil
import unittest
from concurrent.futures import ThreadPoolExecutor

from package_kit import SOURCE, PackageTest, install, library_folder, run

PLATFORM = ("tests/support/fake_*.h", "tests/support/fake_*.cpp", "tests/support/request_context.h", "host/platform/tlv_*.cpp")
COMPILER = os.environ.get("CXX", "g++")
SHOWN = """\
1.3.6.1.4.1.99999.2.91.9.1
1.3.6.1.4.1.99999.2.91.10.1.1
1.3.6.1.4.1.99999.2.91.10.1.2
1.3.6.1.4.1.99999.2.91.10.4.1
result 0, rows 1
"""


class OwnPlatform(PackageTest):
    def setUp(self):
        super().setUp()
        self.prefix = self.folder / "prefix"
        install(self.prefix, "module", "dev")
        self.host = self.folder / "host"
        shutil.copytree(SOURCE / "tests" / "package" / "own_platform", self.host)
        # Beside the host, not in the tree, whose headers would stand in for the installed ones.
        copied = [found.relative_to(SOURCE) for pattern in PLATFORM for found in SOURCE.glob(pattern)]
        for file in copied:
            (self.host / file).parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(SOURCE / file, self.host / file)
        # In one unit it is compiled in a quarter of the time; records and cells have constants of the same names.
        together = [file for file in copied if file.suffix == ".cpp" and file.name != "tlv_record.cpp"]
        (self.host / "platform.cpp").write_text("".join(f'#include "{file}"\n' for file in together))

    def flags(self, kind):
        """pkg-config's, for talvik-framework."""
        environment = dict(os.environ, PKG_CONFIG_PATH=str(library_folder(self.prefix) / "pkgconfig"))
        return shlex.split(run("pkg-config", kind, "talvik-framework", env=environment))

    def assert_hosts_the_module(self, program):
        self.assertEqual(run(program, self.prefix / "lib" / "talvik" / "libSnmpTalvikMibModule.so"), SHOWN)

    def test_builds_with_cmake(self):
        build = self.folder / "build"

        run("cmake", "-S", self.host, "-B", build, f"-DCMAKE_PREFIX_PATH={self.prefix}")
        run("cmake", "--build", build, "--parallel", "2")

        self.assert_hosts_the_module(build / "own-platform")

    def test_builds_with_pkg_config(self):
        program = self.folder / "own-platform"

        sources = [*self.host.glob("*.cpp"), self.host / "host" / "platform" / "tlv_record.cpp"]
        run(COMPILER, "-std=c++17", f"-I{self.host}", *self.flags("--cflags"), *sources, "-o", program, "-rdynamic",
            *self.flags("--libs"))

        self.assert_hosts_the_module(program)

    def test_has_headers_that_compile_alone(self):
        include = self.prefix / "include" / "talvik"
        headers = [path.relative_to(include).as_posix() for path in sorted(include.rglob("*.h"))]
        self.assertGreater(len(headers), 30)
        flags = ["-std=c++17", "-Wall", "-Wextra", "-Werror", "-fsyntax-only", *self.flags("--cflags")]

        with ThreadPoolExecutor(2) as pool:
            done = [pool.submit(run, COMPILER, *flags, "-include", header, "-x", "c++", os.devnull) for header in headers]

        for header, one in zip(headers, done):
            with self.subTest(header=header):
                one.result()


if __name__ == "__main__":
    unittest.main()
