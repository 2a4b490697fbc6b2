"""The compile commands of a build tree, for the checks of this folder."""

import json
import os
import pathlib
import shlex
import shutil


def compiler_cache(root):
    """The words before a compiler that let it find what it compiled before, here or in another clone."""
    if shutil.which("ccache") is None:
        return []
    return ["env", f"CCACHE_BASEDIR={root}", "CCACHE_NOHASHDIR=1", "ccache"]


class CompileCommand:
    """One unit: its source, relative to the root, and the compiler's arguments without source and output."""

    def __init__(self, root, entry):
        self.directory = entry["directory"]
        self.file = pathlib.Path(entry["file"])
        self.output = entry.get("output", "")
        try:
            self.name = str(self.file.resolve().relative_to(root))
        except ValueError:
            self.name = None
        arguments = entry.get("arguments") or shlex.split(entry["command"])
        while self._is_launcher(arguments[0]):
            arguments = arguments[1:]
        self.compiler = arguments[0]
        self.flags = self._without_files(arguments[1:])

    @staticmethod
    def _is_launcher(word):
        return "=" in word or os.path.basename(word) in ("env", "ccache")

    def _without_files(self, arguments):
        kept = []
        skip = False
        for argument in arguments:
            if skip:
                skip = False
            elif argument in ("-o", "-MF", "-MT", "-MQ"):
                skip = True
            elif argument in ("-c", "-MD", "-MMD") or argument == str(self.file):
                continue
            else:
                kept.append(argument)
        return kept


def load(root, build):
    """The units of the tree itself; those that the build made are left out."""
    database = pathlib.Path(build) / "compile_commands.json"
    entries = json.loads(database.read_text(encoding="utf-8"))
    build = pathlib.Path(build).resolve()
    units = {}
    for entry in entries:
        command = CompileCommand(root, entry)
        if command.name and build not in command.file.resolve().parents:
            units.setdefault(command.name, command)
    return units
