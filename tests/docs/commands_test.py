#!/usr/bin/env python3
"""Every command of every page runs, or is on a short list that says what runs it instead.

Where a page shows what a command prints, that is what it prints.
"""

import re
import sys
import tempfile
import unittest

from commands import commands_of_page, differs, kind_of, program_of, unaccounted
from pages import SOURCE, all_pages
from place import GOES_ON, Place, lasting_port, write_files
from scenes import MADE, NOT_RUN, OUTPUTS, OUTPUTS_ELSEWHERE, SCENES, SETTINGS_ELSEWHERE, Scene
from talvik_e2e import BIN, wait_until

sys.path.insert(0, str(SOURCE / "tools" / "dev"))

from recording import lines_of  # noqa: E402 (the path comes first)

RECORDING = SOURCE / "docs" / "pictures" / "first-run.cast"



def without_what_is_made(page):
    """The page without the blocks behind the line from which on a program has made it."""
    if page.name not in MADE:
        return page
    border = (SOURCE / page.name).read_text(encoding="utf-8").splitlines().index(MADE[page.name][0])
    return page._replace(blocks=[block for block in page.blocks if block.line <= border])


PAGES = {name: without_what_is_made(page) for name, page in all_pages().items()}
KNOWN_OUTPUTS = {**OUTPUTS, **OUTPUTS_ELSEWHERE}
COMMANDS = {name: commands_of_page(page, KNOWN_OUTPUTS) for name, page in PAGES.items()}


def gist(lines):
    """What is printed, without the numbers, which differ from run to run, and where a terminal breaks lines."""
    text = re.sub(r"\s", "", "".join(line for line in lines if not line.startswith("$ ")))
    text = re.sub(r"Hex-STRING:[0-9A-F]+(?=\.)", "Hex-STRING:", text)
    return re.sub(r"[-+\d:,]+", "#", text).replace("==", "\n==").splitlines()


def entries_for(command):
    return [entry for entry in NOT_RUN if entry.matches(command.text)]


def among_others(lines):
    return [part for line in lines for part in ("...", line)] + ["..."]


def block_of(page, start):
    return next(block for block in PAGES[page].blocks if block.lines[0].startswith(start))


def hook(hooks, text, default=None):
    return next((value for start, value in hooks.items() if text.startswith(start)), default)


class Accounts(unittest.TestCase):
    """Nothing is left out."""

    def test_every_block_is_known_for_what_it_is(self):
        self.assertEqual(list(unaccounted(PAGES, KNOWN_OUTPUTS)), [])

    def test_every_entry_of_the_list_is_needed_and_names_what_is_there(self):
        texts = [command.text for commands in COMMANDS.values() for command in commands]
        for entry in NOT_RUN:
            with self.subTest(entry.command):
                matching = [text for text in texts if entry.matches(text)]
                self.assertNotEqual(matching, [], "no page has this command any more")
                for text in matching:
                    self.assertEqual([word for word in entry.words if word not in text], [], text)
                self.assertNotEqual(entry.words, ())
                self.assertEqual(entry.lacks(SOURCE), [], entry.covered_by)

    def test_every_command_that_is_not_run_has_one_entry(self):
        counts = {command.where: len(entries_for(command)) for commands in COMMANDS.values() for command in commands}
        self.assertEqual([where for where, count in counts.items() if count > 1], [])

    def test_every_hook_and_output_belongs_to_a_page(self):
        for name, scene in SCENES.items():
            for start in [*scene.before, *scene.status]:
                with self.subTest(f"{name}: {start}"):
                    self.assertTrue(any(command.text.startswith(start) for command in COMMANDS[name]))
        for name, start in [*KNOWN_OUTPUTS, *SETTINGS_ELSEWHERE]:
            with self.subTest(f"{name}: {start}"):
                self.assertTrue(any(block.lines[0].startswith(start) for block in PAGES[name].blocks))
        for file, text in [*OUTPUTS_ELSEWHERE.values(), *SETTINGS_ELSEWHERE.values()]:
            with self.subTest(file):
                self.assertIn(text, (SOURCE / file).read_text())

    def test_what_is_made_of_a_program_is_held_to_it(self):
        for line, test in MADE.values():
            self.assertIn(line, (SOURCE / test).read_text())

    def test_dev_has_every_command_that_a_page_names(self):
        known = set(re.findall(r"[a-z-]+", re.search(r"^    (setup[^)]*)\)", (SOURCE / "dev").read_text(), re.M)[1])) | {"help"}
        named = [(page.name, line, words[1]) for page in PAGES.values() if page.name != "CHANGELOG.md"
                 for line, text in page.code_words if len(words := text.split()) > 1 and words[0] == "./dev"]
        self.assertGreater(len(named), 10)
        self.assertEqual([where for where in named if where[2] not in known and where[2].isalpha() and where[2].islower()], [])


class Commands(unittest.TestCase):
    """One test a page that has commands; the methods are made below."""

    maxDiff = None

    def setUp(self):
        self.running = {}  # what runs on, by its command

    def run_page(self, name):
        scene = SCENES.get(name, Scene())
        with tempfile.TemporaryDirectory(prefix="talvik-docs-") as folder:
            place = Place(folder, scene.user, scene.names)
            try:
                write_files(place, PAGES[name])
                place.keep_alarms()
                for command in COMMANDS[name]:
                    if entries := entries_for(command):
                        self.run_in_place_of(place, entries[0], command)
                    else:
                        self.run_command(place, scene, command)
                for (page, start), owner in OUTPUTS.items():
                    if page == name and owner in self.running:
                        self.wait_for(place, owner, block_of(page, start).lines, f"{page}: {start}")
                self.check_settings(place, PAGES[name])
            except BaseException:
                print(place.logs())
                raise
            finally:
                place.stop()

    def run_in_place_of(self, place, entry, command):
        """Runs what shows at least that the words of the command are still right."""
        if text := entry.in_place_of(command.text, BIN.parent):
            done = place.run(text)
            self.assertEqual(done.status, 0, "\n".join([command.where, text, *done.lines]))

    def run_command(self, place, scene, command):
        if prepare := hook(scene.before, command.text):
            prepare(place)
        program = program_of(command.text)
        if not program or program == "cd":
            place.remember(command.text)
            return
        if command.is_synopsis:
            self.check_synopsis(place, command)
            return
        if place.is_daemon(program, command.text):
            self.running[command.text] = place.start(program, command.text)
            self.wait_for(place, command.text, command.shown, command.where)
            return
        goes_on = command.text.startswith(GOES_ON)
        done = place.run_for_a_while(command.text) if goes_on else place.run(command.text)
        self.assertEqual(done.status, hook(scene.status, command.text, 0), "\n".join([command.where, *done.lines]))
        if command.shown:
            self.assertIsNone(differs(command.shown, done.lines), command.where)
        if command.text == "./dev run":
            recorded = [line for _, line in lines_of(RECORDING.read_text(encoding="utf-8"))]
            self.assertEqual(gist(recorded), gist(done.lines), "run tools/dev/record.sh and commit the result")
        for (page, start), owner in OUTPUTS.items():
            if page == command.page and owner == command.text:
                block = block_of(page, start)
                self.assertIsNone(differs(among_others(block.lines), done.lines), f"{page}:{block.line}")

    def wait_for(self, place, command, shown, where):
        """Waits until a daemon has printed what is shown, in that order and among other things."""
        wait_until(lambda: differs(among_others(shown), place.there(self.running[command].log()).splitlines()) is None,
                   f"{where}: {shown}")

    def check_synopsis(self, place, command):
        """The program's help has the command and each of the options."""
        words = command.text.split()
        done = place.run(" ".join([*(word for word in words[:3] if re.fullmatch(r"[a-z-]+", word)), "--help"]))
        self.assertEqual(done.status, 0, command.where)
        for option in re.findall(r"--[a-z-]+", command.text):
            self.assertRegex("\n".join(done.lines), rf"(?m)^ +(-\w,)?{option}\b", command.where)

    def check_settings(self, place, page):
        """The agent takes each block of configuration, and says nothing against it."""
        for block in page.blocks:
            if kind_of(block, KNOWN_OUTPUTS) != "settings":
                continue
            if (page.name, block.lines[0]) in SETTINGS_ELSEWHERE:
                continue
            where, text = f"{page.name}:{block.line}", "\n".join(block.lines)
            if "authUser" in text or "authCommunity" in text:
                self.check_receiver_settings(place, text, where)
                continue
            file = place.folder / "settings.conf"
            file.write_text(place.here(text) + "\n")
            file.chmod(0o600)
            done = place.run(f"talvik-agentd --config {file} --check")
            self.assertEqual(done.status, 0, "\n".join([where, *done.lines]))
            self.assertEqual([line for line in done.lines if " warning " in line or " error " in line], [], where)

    def check_receiver_settings(self, place, text, where):
        file = place.folder / "snmptrapd.conf"
        file.write_text(place.here(text.replace("0x8001869F...", "0x8001869F05DA644CEA8508AD23")) + "\n")
        daemon = place.start("snmptrapd", f"snmptrapd -f -Lo -n -C -c {file} udp:127.0.0.1:{lasting_port()}")
        daemon.stop()
        self.assertNotRegex(daemon.log(), "(?i)warning|error|unknown", where)


def test_of(name):
    return lambda self: self.run_page(name)


for _name, _commands in COMMANDS.items():
    if any(not entries_for(command) or entries_for(command)[0].instead for command in _commands) or any(
            kind_of(block, KNOWN_OUTPUTS) == "settings" for block in PAGES[_name].blocks):
        setattr(Commands, "test_" + re.sub(r"\W+", "_", _name.removesuffix(".md")).lower(), test_of(_name))


if __name__ == "__main__":
    unittest.main()
