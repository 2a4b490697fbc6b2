#!/usr/bin/env python3
"""What cpack makes: control fields, files, modes, and debug symbols that are found by build id."""

import gzip
import os
import re
import shutil
import subprocess
import unittest

from package_kit import BUILD, SOURCE, PackageTest, library_folder, run, topology_of_the_example

NAMES = ["talvik-agent", "talvik-agent-dbgsym", "talvik-dev", "talvik-mib-module", "talvik-mib-module-dbgsym"]
LIBRARIES = SOURCE / "packaging" / "deb" / "shared-libraries.txt"
EPOCH = "1700000000"  # before any file of the packages was made


class Packages(unittest.TestCase):
    """The packages are made once, for all tests of this file."""

    maxDiff = None

    @classmethod
    def setUpClass(cls):
        cls.place = PackageTest()
        cls.place.setUp()
        cls.addClassCleanup(cls.place.doCleanups)
        cls.folder = cls.place.folder / "packages"
        environment = dict(os.environ, SOURCE_DATE_EPOCH=EPOCH)
        run("bash", SOURCE / "packaging" / "make-packages.sh", BUILD, cls.folder, env=environment)

    def file(self, name):
        (found,) = self.folder.glob(f"{name}_*.deb")
        return found

    def field(self, name, field):
        return run("dpkg-deb", "--field", self.file(name), field).strip()

    def extracted(self, name):
        tree = self.place.folder / name
        if not tree.exists():
            run("dpkg-deb", "--raw-extract", self.file(name), tree)
        return tree

    def contents(self, name):
        """(mode, owner, path) of each file and folder."""
        lines = run("dpkg-deb", "--contents", self.file(name), env=dict(os.environ, TZ="UTC")).splitlines()
        return [(line.split()[0], line.split()[1], line.split(maxsplit=5)[5]) for line in lines]

    def test_are_one_for_each_component_and_its_debug_symbols(self):
        self.assertEqual(sorted(file.name.split("_")[0] for file in self.folder.iterdir()), NAMES)

    def test_belong_to_the_architecture_of_this_build(self):
        here = run("dpkg", "--print-architecture").strip()
        self.assertEqual({self.field(name, "Architecture") for name in NAMES}, {here})

    def test_of_one_version_depend_on_each_other(self):
        version = self.field("talvik-mib-module", "Version")

        for name in ("talvik-agent", "talvik-dev"):
            self.assertIn(f"talvik-mib-module (= {version})", self.field(name, "Depends"))
        for name in ("talvik-agent", "talvik-mib-module"):
            self.assertEqual(self.field(f"{name}-dbgsym", "Depends"), f"{name} (= {version})")

    def test_for_hosts_depend_on_what_their_build_files_ask_for(self):
        self.assertIn("pkg-config", self.field("talvik-dev", "Depends").split(", "))

    def test_are_enough_to_build_and_run_the_example(self):
        root = self.place.folder / "root"
        for name in ("talvik-mib-module", "talvik-dev"):
            run("dpkg-deb", "--extract", self.file(name), root)
        prefix = root / "usr"
        example = self.place.folder / "example"
        shutil.copytree(prefix / "share" / "doc" / "talvik-dev" / "examples" / "host", example)

        run("cmake", "-S", example, "-B", example / "build", f"-DCMAKE_PREFIX_PATH={prefix}")
        run("cmake", "--build", example / "build")
        run("make", "-C", example, env=dict(os.environ, PKG_CONFIG_PATH=str(library_folder(prefix) / "pkgconfig")))

        for program in (example / "build" / "topology-host", example / "topology-host"):
            self.assertEqual(run(program).splitlines(), topology_of_the_example(), program)

    def test_have_a_changelog_that_begins_with_their_version(self):
        version = self.field("talvik-mib-module", "Version")
        for name in ("talvik-agent", "talvik-dev", "talvik-mib-module"):
            with gzip.open(self.extracted(name) / "usr/share/doc" / name / "changelog.gz", "rt") as lines:
                self.assertEqual(lines.readline().split(";")[0], f"talvik ({version}) unstable",
                                 "bring packaging/deb/changelog up to the version of CMakeLists.txt")

    def test_go_into_no_folder_that_holds_something_else(self):
        folder = self.place.folder / "someone's"
        folder.mkdir()
        (folder / "notes").write_text("kept")
        done = subprocess.run(["bash", SOURCE / "packaging" / "make-packages.sh", BUILD, folder], capture_output=True, text=True,
                              timeout=60, check=False)
        self.assertEqual((done.returncode, done.stdout), (1, ""))
        self.assertIn(f"{folder} holds what this did not make: {folder}/notes; name an empty folder", done.stderr)
        self.assertEqual((folder / "notes").read_text(), "kept")

    def test_need_the_libraries_of_the_list_that_cross_builds_go_by(self):
        found = []
        for component, name in (("module", "talvik-mib-module"), ("agent", "talvik-agent")):
            depends = self.field(name, "Depends").split(", ")
            libraries = [one for one in depends if one.startswith("lib")]
            found.append(f"{component}: {', '.join(libraries)}")

        listed = [line for line in LIBRARIES.read_text().splitlines() if not line.startswith("#")]
        self.assertEqual(listed, found, f"bring {LIBRARIES} up to date")

    def test_say_which_files_are_configuration(self):
        tree = self.extracted("talvik-agent")

        conffiles = (tree / "DEBIAN" / "conffiles").read_text().split()
        below_etc = sorted("/" + path for mode, _, path in self.trimmed("talvik-agent")
                           if path.startswith("etc/") and not mode.startswith("d"))
        self.assertEqual(conffiles, below_etc)
        for name in ("talvik-mib-module", "talvik-dev"):
            self.assertEqual([path for _, _, path in self.trimmed(name) if path.startswith("etc")], [])

    def trimmed(self, name):
        return [(mode, owner, path.removeprefix("./").rstrip("/")) for mode, owner, path in self.contents(name)]

    def test_have_files_of_root_that_only_root_can_change(self):
        for name in NAMES:
            for mode, owner, path in self.contents(name):
                with self.subTest(package=name, path=path):
                    self.assertEqual(owner, "root/root")
                    self.assertRegex(mode, r"^(drwxr-xr-x|-rw-r--r--|-rwxr-xr-x|lrwxrwxrwx)$")

    def test_hold_nothing_younger_than_the_sources(self):
        for name in NAMES:
            lines = run("dpkg-deb", "--contents", self.file(name), env=dict(os.environ, TZ="UTC")).splitlines()
            self.assertEqual({" ".join(line.split()[3:5]) for line in lines}, {"2023-11-14 22:13"}, name)

    def test_list_the_checksum_of_each_file(self):
        for name in NAMES:
            run("md5sum", "--quiet", "--check", "DEBIAN/md5sums", cwd=self.extracted(name))

    def test_have_scripts_only_where_there_is_something_to_do(self):
        scripts = {name: sorted(file.name for file in (self.extracted(name) / "DEBIAN").iterdir()
                                if file.name in ("preinst", "postinst", "prerm", "postrm", "triggers")) for name in NAMES}
        expected = {name: [] for name in NAMES}
        expected["talvik-agent"] = ["postinst", "postrm", "prerm"]
        self.assertEqual(scripts, expected)
        for script in expected["talvik-agent"]:
            run("sh", "-n", self.extracted("talvik-agent") / "DEBIAN" / script)

    def test_have_debug_symbols_where_debuggers_look_by_build_id(self):
        for name, programs in (("talvik-mib-module", ["usr/lib/talvik/libSnmpTalvikMibModule.so"]),
                               ("talvik-agent", ["usr/sbin/talvik-agentd", "usr/sbin/talvik-backendd", "usr/bin/talvikctl"])):
            symbols = self.extracted(f"{name}-dbgsym")
            ids = []
            for program in programs:
                with self.subTest(program=program):
                    file = self.extracted(name) / program
                    notes = run("readelf", "--notes", file)
                    build_id = re.search(r"Build ID: ([0-9a-f]+)", notes).group(1)
                    ids.append(build_id)
                    debug = symbols / "usr/lib/debug/.build-id" / build_id[:2] / f"{build_id[2:]}.debug"
                    self.assertIn(".debug_info", run("readelf", "--section-headers", "--wide", debug))
                    self.assertNotIn(".debug_info", run("readelf", "--section-headers", "--wide", file))
            self.assertEqual(self.field(f"{name}-dbgsym", "Build-Ids").split(), sorted(ids))

    def test_name_no_folder_of_the_building_machine(self):
        for name in ("talvik-agent", "talvik-mib-module", "talvik-dev"):
            found = subprocess.run(["grep", "-rlF", "-e", str(SOURCE), "-e", str(BUILD), self.extracted(name)],
                                   capture_output=True, text=True, timeout=60, check=False)
            self.assertEqual(found.stdout, "")


if __name__ == "__main__":
    unittest.main()
