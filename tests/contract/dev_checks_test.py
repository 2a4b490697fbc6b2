#!/usr/bin/env python3
"""The checks of ./dev check report what they are for: each gets a small tree of its own that breaks its rule, and one
that keeps it.

Usage: dev_checks_test.py SOURCE-ROOT
"""

import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

SOURCE_ROOT = pathlib.Path(sys.argv.pop(1)) if len(sys.argv) > 1 else pathlib.Path(__file__).resolve().parents[2]
CHECKS = SOURCE_ROOT / "tools" / "dev"
GIT = ["git", "-c", "user.name=test", "-c", "user.email=test@localhost", "-c", "init.defaultBranch=main"]


class SmallTree(unittest.TestCase):
    """A git repository of its own, and the checks run on it."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="talvik-checks-")
        self.addCleanup(folder.cleanup)
        self.root = pathlib.Path(folder.name)
        self.git("init", "-q")

    def git(self, *arguments):
        subprocess.run([*GIT, "-C", str(self.root), *arguments], check=True, capture_output=True)

    def write(self, name, text):
        path = self.root / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text, encoding="utf-8")

    def commit(self, message):
        self.git("add", "-A")
        self.git("commit", "-q", "--allow-empty", "-m", message)

    def check(self, script):
        """Exit status and output of one check."""
        command = [sys.executable, str(CHECKS / script), str(self.root)]
        environment = {name: value for name, value in os.environ.items() if not name.startswith(("TALVIK_", "GIT_"))}
        done = subprocess.run(command, capture_output=True, text=True, check=False, env=environment)
        self.assertEqual(done.stderr, "")
        return done.returncode, done.stdout


class RoomRules(SmallTree):
    def setUp(self):
        super().setUp()
        for header in ("framework/cell.h", "platform/log.h", "trap/trap_dest_info.h", "trap/handler.h",
                       "notify/handler.h", "handlers/topo.h", "host/snmp/net_snmp.h", "host/startup_error.h",
                       "tools/net_snmp_client.h"):
            self.write(header, "#pragma once\n")

    def refused(self, path, include):
        self.write(path, f"#include {include}\n")
        status, output = self.check("check_rooms.py")
        self.assertEqual(status, 1, output)
        self.assertIn(f"{path}:1:", output)

    def accepted(self, path, include):
        self.write(path, f"#include {include}\n")
        status, output = self.check("check_rooms.py")
        self.assertEqual(status, 0, output)

    def test_a_module_room_may_use_the_framework(self):
        self.accepted("handlers/topo.cpp", '"framework/cell.h"')

    def test_the_module_may_use_every_module_room(self):
        self.accepted("module/module.cpp", '"notify/handler.h"')

    def test_the_framework_may_not_use_a_module_room(self):
        self.refused("framework/cell.cpp", '"handlers/topo.h"')

    def test_the_host_may_use_the_record_of_a_trap_destination(self):
        self.accepted("host/platform/trap_api.cpp", '"trap/trap_dest_info.h"')

    def test_the_host_may_not_use_any_other_part_of_the_module(self):
        self.refused("host/snmp/bridge.cpp", '"trap/handler.h"')

    def test_the_host_platform_may_not_use_the_net_snmp_side(self):
        self.refused("host/platform/log.cpp", '"host/snmp/net_snmp.h"')

    def test_the_carried_types_use_nothing_of_the_project(self):
        self.refused("snmp_types/src/oid.cpp", '"framework/cell.h"')

    def test_the_back_end_knows_nothing_of_the_value_types(self):
        self.refused("backend/store.cpp", "<snmp_pp/oid.h>")

    def test_the_library_is_included_through_one_door_a_side(self):
        self.accepted("host/snmp/net_snmp.h", "<net-snmp/net-snmp-config.h>")
        self.accepted("tools/net_snmp_client.h", "<net-snmp/net-snmp-includes.h>")
        self.refused("host/snmp/bridge.cpp", "<net-snmp/net-snmp-config.h>")

    def test_the_tools_include_the_library_through_their_door_alone(self):
        self.accepted("tools/snmp_client.cpp", '"tools/net_snmp_client.h"')
        self.refused("tools/snmp_client.cpp", "<net-snmp/net-snmp-includes.h>")

    def test_a_side_may_not_use_the_other_side_s_door(self):
        self.refused("tools/snmp_client.cpp", '"host/snmp/net_snmp.h"')
        (self.root / "tools/snmp_client.cpp").unlink()
        self.refused("host/snmp/bridge.cpp", '"tools/net_snmp_client.h"')

    def test_paths_start_at_the_room(self):
        self.refused("framework/cell.cpp", '"cell.h"')

    def test_a_file_outside_every_room_is_reported(self):
        self.refused("extras/file.cpp", '"framework/cell.h"')


class Vocabulary(SmallTree):
    # Put together from pieces, so that this file does not trip over itself.
    SECTION = "Par" + "t 2.1"
    TICKET = "iss" + "ue #12"
    MACHINE = "/wo" + "rk/main"

    def found(self, text):
        status, output = self.check("check_vocabulary.py")
        self.assertEqual(status, 1, output)
        self.assertIn(text, output)

    def test_plain_words_pass(self):
        self.write("README.md", "A part of the system, two issues long; specific, in 3.1 seconds.\n")
        self.commit("docs: Say what it is")
        status, output = self.check("check_vocabulary.py")
        self.assertEqual(status, 0, output)

    def test_a_numbered_section_in_a_text_is_found(self):
        self.write("docs/a.md", f"one\nas {self.SECTION} says\n")
        self.found("docs/a.md:2")

    def test_a_ticket_number_in_a_commit_message_is_found(self):
        self.write("a.txt", "a\n")
        self.commit(f"host: Close {self.TICKET}")
        self.found("commit message")

    def test_a_path_of_one_machine_is_found(self):
        self.write("a.cmake", f"set(root {self.MACHINE})\n")
        self.found("a.cmake:1")

    def test_a_file_name_is_found(self):
        self.write("docs/" + "sp" + "ec.md", "text\n")
        self.found("file name")


class Changelog(SmallTree):
    EMPTY = "# Changelog\n\n## [Unreleased]\n\n## [0.1.0] - 2026-01-01\n\n- First.\n"
    FILLED = "# Changelog\n\n## [Unreleased]\n\n- Serves more.\n\n## [0.1.0] - 2026-01-01\n\n- First.\n"

    def setUp(self):
        super().setUp()
        self.write("platform/log.h", "#pragma once\n")
        self.write("CHANGELOG.md", self.EMPTY)
        self.commit("platform: Begin")
        self.git("checkout", "-q", "-b", "change")

    def test_a_change_of_the_contract_without_an_entry_is_found(self):
        self.write("platform/log.h", "#pragma once\nvoid log();\n")
        self.commit("platform: Log")
        status, output = self.check("check_changelog.py")
        self.assertEqual(status, 1)
        self.assertIn("platform/log.h", output)

    def test_a_change_that_is_not_committed_yet_is_found(self):
        self.write("mibs/new.json", "{}\n")
        status, output = self.check("check_changelog.py")
        self.assertEqual(status, 1)
        self.assertIn("mibs/new.json", output)

    def test_an_entry_satisfies_it(self):
        self.write("platform/log.h", "#pragma once\nvoid log();\n")
        self.write("CHANGELOG.md", self.FILLED)
        self.commit("platform: Log")
        status, output = self.check("check_changelog.py")
        self.assertEqual(status, 0, output)

    def test_an_entry_under_an_older_release_does_not(self):
        self.write("platform/log.h", "#pragma once\nvoid log();\n")
        self.write("CHANGELOG.md", self.EMPTY + "- Second.\n")
        self.commit("platform: Log")
        status, _ = self.check("check_changelog.py")
        self.assertEqual(status, 1)

    def test_other_changes_need_none(self):
        self.write("host/main.cpp", "int main() {}\n")
        self.commit("host: Begin")
        status, output = self.check("check_changelog.py")
        self.assertEqual(status, 0, output)

    def test_without_a_main_branch_it_is_skipped_aloud(self):
        self.git("branch", "-q", "-D", "main")
        status, output = self.check("check_changelog.py")
        self.assertEqual(status, 0)
        self.assertIn("skipped", output)


if __name__ == "__main__":
    unittest.main()
