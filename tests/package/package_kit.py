"""What the tests of the installation share.

TALVIK_BUILD_DIR names the build tree that is installed and packed.
"""

import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest

SOURCE = pathlib.Path(__file__).resolve().parents[2]
BUILD = pathlib.Path(os.environ.get("TALVIK_BUILD_DIR", SOURCE / "build" / "release"))
LIMIT = 240  # seconds that one command may take; only a hanging one ever needs them
COMPONENTS = ("module", "agent", "dev")

sys.path.insert(0, str(SOURCE / "tests" / "e2e"))


def run(*command, expected=0, **options):
    """What a command writes to standard output; fails with all that it wrote unless it ends as expected."""
    result = subprocess.run([str(part) for part in command], stdin=subprocess.DEVNULL, capture_output=True, text=True,
                            timeout=LIMIT, check=False, **options)
    if result.returncode != expected:
        words = " ".join(str(part) for part in command)
        raise AssertionError(f"{words} ended with {result.returncode}:\n{result.stdout}{result.stderr}")
    return result.stdout


def install(prefix, *components):
    for component in components or COMPONENTS:
        run("cmake", "--install", BUILD, "--prefix", prefix, "--component", component)


def library_folder(prefix):
    """Where the static libraries are: lib/, or Debian's folder of the architecture in it."""
    (library,) = prefix.glob("lib/**/libtalvik_framework.a")
    return library.parent


def topology_of_the_example():
    """What the example prints, as its README shows it."""
    text = (SOURCE / "examples" / "README.md").read_text(encoding="utf-8")
    lines = text[text.index("    1.3.6.1.4.1.99999"):].splitlines()
    return [line[4:] for line in lines[:lines.index("")]]


class PackageTest(unittest.TestCase):
    """A test in a folder of its own."""

    maxDiff = None

    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="talvik-package-"))
        self.addCleanup(shutil.rmtree, self.folder)
