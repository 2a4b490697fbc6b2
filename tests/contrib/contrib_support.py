"""What the tests of contrib/ share: an agent with alarms whose texts are not all ASCII, and the programs of others."""

import importlib.machinery
import importlib.util
import os
import pathlib
import shutil
import subprocess
import sys
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "e2e"))

from alarm_table import AlarmTableTest  # noqa: E402 (the path comes first)
from notifications import DISK_FAILED  # noqa: E402
from talvik_e2e import AUTH, LIMIT, PRIV, SOURCE, Daemon  # noqa: E402

CONTRIB = SOURCE / "contrib"
MIBS = "KEL-TALVIK-MIB:TALVIK-AGENT-MIB"
MIB_FOLDERS = f"{SOURCE / 'mibs'}:{SOURCE / 'tests' / 'mib' / 'stubs'}"

DISK_SLOW = 501010007
MAJOR, MINOR, INFO = 5, 4, 2  # as alarms are raised
PLACE = "Gehäuse ž 台"
FILL_IN_AUTH, FILL_IN_PRIV = "FILL-IN-AUTHENTICATION-PASSPHRASE", "FILL-IN-PRIVACY-PASSPHRASE"

# What the tests need beside the users of contrib/net-snmp.
COMMUNITIES = """
rocommunity reader 127.0.0.1 -V talvikView
rwcommunity writer 127.0.0.1
"""


def needs(*programs):
    """Skips a test where a program is missing. In CI all are there, so there it fails instead."""
    missing = [program for program in programs if shutil.which(program) is None]
    if missing and not os.environ.get("CI"):
        return unittest.skip(f"not installed: {', '.join(missing)} (./dev setup installs what the tests take)")
    return lambda test: test


def filled_in(text, **others):
    """A configuration with its blanks filled in; each of `others` must occur."""
    for blank, value in {FILL_IN_AUTH: AUTH, FILL_IN_PRIV: PRIV, **others}.items():
        if blank in others and blank not in text:
            raise AssertionError(f"no {blank} in:\n{text}")
        text = text.replace(blank, value)
    return text


def script(path):
    """A script of contrib/ as a module."""
    sys.dont_write_bytecode = True  # contrib/ is for what is delivered
    loader = importlib.machinery.SourceFileLoader(path.name.replace("-", "_"), str(path))
    module = importlib.util.module_from_spec(importlib.util.spec_from_loader(loader.name, loader))
    loader.exec_module(module)
    return module


def run(*command, **environment):
    """Runs a program to its end and returns what it printed; fails if it does."""
    done = subprocess.run([str(part) for part in command], stdin=subprocess.DEVNULL, capture_output=True, text=True,
                          timeout=LIMIT, env={**os.environ, "LC_ALL": "C.UTF-8", **environment})
    if done.returncode:
        raise AssertionError(f"{command} ended with {done.returncode}:\n{done.stdout}{done.stderr}")
    return done.stdout


class ContribTest(AlarmTableTest):
    """A test of a configuration in contrib/; the agent's zone is not UTC."""

    def setUp(self):
        super().setUp()
        users = (CONTRIB / "net-snmp" / "users.conf").read_text()
        self.config.write_text(filled_in(users, **{FILL_IN_AUTH: AUTH, FILL_IN_PRIV: PRIV}) + COMMUNITIES)

    def hide_health(self):
        """Takes the agent's own health out of the view of all users in contrib/."""
        line = "view talvikView excluded 1.3.6.1.4.1.99999.2.91.20\n"
        self.config.write_text(self.config.read_text() + line)

    def daemon(self, name, *command, **environment):
        return self.keep(Daemon(self.folder, name, command, {**os.environ, "LC_ALL": "C.UTF-8", **environment}))

    def raise_disk(self, client, number=7, level=MAJOR, place=PLACE):
        """The serial number of an alarm about a disk whose location is not all ASCII."""
        return client.raise_alarm(DISK_FAILED, f"{place},{number},SN-{number},1".encode(), level=level)
