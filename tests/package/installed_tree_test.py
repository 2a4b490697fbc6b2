#!/usr/bin/env python3
"""`cmake --install` into a folder: the reviewed files, and an agent that serves from there."""

import os
import sys
import unittest

from package_kit import BUILD, SOURCE, PackageTest, install, run

import talvik_e2e

sys.path.insert(0, str(SOURCE / "tests" / "docs"))

from links_test import broken_links  # noqa: E402 (the path comes first)
from pages import read_page  # noqa: E402

LIST = SOURCE / "tests" / "package" / "installed_files.txt"


def architecture():
    return run(os.environ.get("CXX", "g++"), "-print-multiarch").strip()


def files_below(prefix):
    """Each file below the folder; of a link also where it points to."""
    found = []
    for path in prefix.rglob("*"):
        name = str(path.relative_to(prefix)).replace(f"lib/{architecture()}/", "lib/TRIPLET/")
        if path.is_symlink():
            found.append(f"{name} -> {os.readlink(path)}")
        elif path.is_file():
            found.append(name)
    return sorted(found)


def pages_below(folder):
    """The Markdown pages below the folder, by the names under which readers find them: links to folders are followed."""
    names = [os.path.relpath(os.path.join(here, file), folder)
             for here, _, files in os.walk(folder, followlinks=True) for file in files if file.endswith(".md")]
    return {name: read_page(name, (folder / name).read_text(encoding="utf-8")) for name in sorted(names)}


class InstalledTree(PackageTest):
    def test_has_exactly_the_reviewed_files(self):
        prefix = self.folder / "prefix"

        install(prefix)

        reviewed = [line for line in LIST.read_text().splitlines() if line and not line.startswith("#")]
        self.assertEqual(files_below(prefix), reviewed)

    def test_has_the_whole_guide_and_no_link_that_leads_nowhere(self):
        prefix = self.folder / "prefix"
        install(prefix)
        documents = prefix / "share" / "doc"

        pages = pages_below(documents)

        self.assertEqual(list(broken_links(pages, lambda name: (documents / name).exists())), [])
        guide = {f"docs/{page.name}" for page in (SOURCE / "docs").glob("*.md")} | {"README.md", "contrib/README.md"}
        for package in ("talvik-agent", "talvik-dev", "talvik-mib-module"):
            self.assertEqual({page for page in guide if f"{package}/guide/{page}" not in pages}, set(), package)

    def test_leaves_what_the_administrator_has_changed_and_renews_the_rest(self):
        environment = dict(os.environ, DESTDIR=str(self.folder))
        once_more = ["cmake", "--install", BUILD, "--prefix", "/usr", "--component", "agent"]
        run(*once_more, env=environment)
        changed = self.folder / "etc" / "talvik" / "talvik-agentd.conf"
        changed.write_text("# mine\n")
        unit = self.folder / "lib" / "systemd" / "system" / "talvik-agentd.service"
        unit.write_text("# of an earlier version\n")

        run(*once_more, env=environment)

        self.assertEqual(changed.read_text(), "# mine\n")
        self.assertEqual(unit.read_text(), (SOURCE / "packaging" / "systemd" / unit.name).read_text())

    def test_listens_on_the_loopback_alone_until_told_otherwise(self):
        run("cmake", "--install", BUILD, "--prefix", "/usr", "--component", "agent",
            env=dict(os.environ, DESTDIR=str(self.folder)))

        lines = (self.folder / "etc" / "talvik" / "talvik-agentd.conf").read_text().splitlines()
        said = [line for line in lines if line and not line.startswith("#")]
        self.assertEqual([line for line in said if line.startswith("agentAddress")], ["agentAddress udp:127.0.0.1:161"])
        for word in ("community", "community6", "user", "createUser", "group", "access"):
            self.assertEqual([line for line in said if line.lstrip("rw").startswith(word)], [], word)


class InstalledAgent(talvik_e2e.TalvikTest):
    def test_serves_from_where_it_was_moved_to(self):
        first, prefix = self.folder / "first", self.folder / "second"
        install(first, "module", "agent")
        first.rename(prefix)
        configuration = self.write("second/etc/talvik/talvik-agentd.conf", talvik_e2e.CONFIG)
        port = talvik_e2e.free_port()

        agent = self.keep(talvik_e2e.Daemon(self.folder, "installed", [
            prefix / "sbin" / "talvik-agentd", "--listen", f"udp:127.0.0.1:{port}"]))
        agent.port = port
        agent.wait_for_log("ready, listening on")

        self.assertEqual(self.walk(agent), talvik_e2e.private_mib())
        raised = run(prefix / "bin" / "talvikctl", "alarm", "raise", "501010001", "--param", "0", "--param", "7",
                     "--param", "S3A1", "--param", "1")
        self.assertEqual(raised.strip(), "1")
        location = f"{talvik_e2e.ROOT}.2.91.10.1.1.1.2.1"
        self.assertEqual(self.lines("snmpget", agent, talvik_e2e.READER, location),
                         [f'{location} = STRING: "Enclosure 0, slot 7"'])
        self.assertTrue((prefix / "var" / "lib" / "talvik" / "alarms.db").is_file())
        self.assertEqual(configuration.parent, prefix / "etc" / "talvik")


if __name__ == "__main__":
    unittest.main()
