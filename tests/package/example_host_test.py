#!/usr/bin/env python3
"""The example host, copied out of the tree and built against what is installed, reads the topology row."""

import os
import shutil
import subprocess
import unittest

from package_kit import BUILD, LIMIT, SOURCE, PackageTest, install, library_folder, run, topology_of_the_example


# Modules that break a rule, and what the example says of them.
FAULTY = (
    ("throwing_factory", "SNMP_SvcModuleCreator failed: CKEL_Exception: the factory refuses"),
    ("registers_then_throws", "SNMP_SvcModuleCreator failed: CKEL_Exception: the factory refuses after it has registered"),
    ("factory_throws_int", "SNMP_SvcModuleCreator failed: an exception of an unknown type"),
    ("null_factory", "the module could not be set up"),
    ("handlers_throw", "getSvcHandler failed: CKEL_Exception: no second handler"),
    ("null_handler", "the module has no handler of its own for 1.3.6.1.4.1.99999.2.91.9.1"),
    ("one_handler_for_two_oids", "the module has no handler of its own for 1.3.6.1.4.1.99999.2.91.10.4.1"),
    ("no_handlers", "the module serves no 1.3.6.1.4.1.99999.2.91.9.1"),
    ("throws_kel_exception", "OnQueryTable failed: CKEL_Exception: the handler gives up"),
    ("throws_int", "OnQueryTable failed: an exception of an unknown type"),
    ("returns_seven", "the query failed with result 7"),
)


class ExampleHost(PackageTest):
    def setUp(self):
        super().setUp()
        self.prefix = self.folder / "moved" / "prefix"
        installed = self.folder / "prefix"
        install(installed, "module", "dev")
        installed.parent.joinpath("moved").mkdir()
        installed.rename(self.prefix)  # nothing may name the place that it was installed in
        self.example = self.folder / "host"
        shutil.copytree(self.prefix / "share" / "doc" / "talvik-dev" / "examples" / "host", self.example)

    def assert_shows_the_row(self, program):
        self.assertEqual(run(program).splitlines(), topology_of_the_example())

    def assert_survives_faulty_modules(self, program):
        for name, text in FAULTY:
            with self.subTest(module=name):
                result = subprocess.run([program, BUILD / "lib" / "test-modules" / f"{name}.so"], stdin=subprocess.DEVNULL,
                                        capture_output=True, text=True, timeout=LIMIT, check=False)
                self.assertEqual(result.returncode, 1, result.stderr)
                self.assertIn(f"topology-host: {text}", result.stderr)

    def test_builds_with_cmake_and_reads_the_row(self):
        build = self.folder / "build"

        run("cmake", "-S", self.example, "-B", build, f"-DCMAKE_PREFIX_PATH={self.prefix}")
        run("cmake", "--build", build)

        self.assert_shows_the_row(build / "topology-host")
        self.assert_survives_faulty_modules(build / "topology-host")

    def test_builds_with_pkg_config_and_reads_the_row(self):
        environment = dict(os.environ, PKG_CONFIG_PATH=str(library_folder(self.prefix) / "pkgconfig"))

        run("make", "-C", self.example, env=environment)

        self.assert_shows_the_row(self.example / "topology-host")

    def test_is_installed_as_it_stands_in_the_tree(self):
        for file in sorted(self.example.iterdir()):
            self.assertEqual(file.read_text(), (SOURCE / "examples" / "host" / file.name).read_text(), file.name)

    def test_refuses_a_release_that_is_not_installed(self):
        listing = self.example / "CMakeLists.txt"
        listing.write_text(listing.read_text().replace("Talvik 0.1", "Talvik 99.0"))

        with self.assertRaisesRegex(AssertionError, r'requested version "99\.0"'):
            run("cmake", "-S", self.example, "-B", self.folder / "build", f"-DCMAKE_PREFIX_PATH={self.prefix}")


if __name__ == "__main__":
    unittest.main()
