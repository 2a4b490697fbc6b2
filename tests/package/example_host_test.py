#!/usr/bin/env python3
"""The example host, copied out of the tree and built against what is installed, reads the topology row."""

import os
import shutil
import unittest

from package_kit import SOURCE, PackageTest, install, library_folder, run, topology_of_the_example


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

    def test_builds_with_cmake_and_reads_the_row(self):
        build = self.folder / "build"

        run("cmake", "-S", self.example, "-B", build, f"-DCMAKE_PREFIX_PATH={self.prefix}")
        run("cmake", "--build", build)

        self.assert_shows_the_row(build / "topology-host")

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
