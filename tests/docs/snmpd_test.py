#!/usr/bin/env python3
"""The agent under Debian's stock snmpd, as docs/operations.md sets it up: its block of snmpd.conf, its command lines, its walk.

Only addresses, paths, passphrases and the names of users and groups are replaced. As root, snmpd runs as Debian runs it and the
agent as an ordinary user, so that the permissions count.
"""

import grp
import os
import pathlib
import pwd
import re
import shutil
import subprocess
import sys
import unittest

from pages import SOURCE, read_page

sys.path.insert(0, str(SOURCE / "tests" / "e2e"))

from talvik_e2e import AUTH, BIN, MODULE, OPERATOR, PRIV, TABLE, Daemon, TalvikTest, free_port, topology  # noqa: E402

PAGE = "docs/operations.md"
SNMPD, STOCK = "/usr/sbin/snmpd", pathlib.Path("/etc/snmp/snmpd.conf")
USUAL, NAMED = "/var/agentx", "/run/snmpd"  # the socket's folder in either command line
IS_ROOT = os.getuid() == 0
MASTER_USER = "Debian-snmp" if IS_ROOT else pwd.getpwuid(os.getuid()).pw_name
AGENT_USER = "nobody" if IS_ROOT else MASTER_USER
AGENT_GROUP = "nogroup" if IS_ROOT else grp.getgrgid(os.getgid()).gr_name
OWN_MOUNTS = "unshare --mount" if IS_ROOT else "unshare --map-root-user --mount"
AS_AGENT = f"setpriv --reuid={AGENT_USER} --regid={AGENT_GROUP} --clear-groups" if IS_ROOT else ""


def page():
    return read_page(PAGE, (SOURCE / PAGE).read_text(encoding="utf-8"))


def settings():
    """The block that the page adds to Debian's file, for this test's users."""
    (block,) = [block for block in page().blocks if block.lines[0] == "master agentx"]
    text = "\n".join(block.lines) + "\n"
    text = text.replace("AUTHENTICATION-PASSPHRASE", AUTH).replace("PRIVACY-PASSPHRASE", PRIV)
    return re.sub(r"(?m)^(agentXPerms .*) Debian-snmp talvik$", rf"\1 {MASTER_USER} {AGENT_GROUP}", text)


def stock_settings():
    """Debian's file, where this user may read it, without addresses and files of this machine."""
    text = STOCK.read_text(encoding="utf-8") if os.access(STOCK, os.R_OK) else ""
    return re.sub(r"(?m)^(agentaddress|includeDir)\s.*$", "", text)


def command_lines(start):
    """The commands of the page that begin so, without the comments."""
    lines = [line for block in page().blocks for line in block.lines if line.startswith(start)]
    return [line.split("#")[0].strip() for line in lines]


class UnderSnmpd(TalvikTest):
    def setUp(self):
        self.port = free_port()
        self.folder.chmod(0o755)
        self.socket_folder = self.folder / "agentx"
        self.socket_folder.mkdir(0o700)  # as an snmpd without these settings has left it
        self.programs = self.folder / "programs"
        self.programs.mkdir()
        for file in (BIN / "talvik-agentd", MODULE, SOURCE / "mibs" / "KEL-TALVIK-MIB.json", SOURCE / "etc" / "talvik-device.xml",
                     SOURCE / "etc" / "talvik-agentd.conf"):
            shutil.copy(file, self.programs)  # where the agent's user can read them
        for name, user in (("master", MASTER_USER), ("agent", AGENT_USER)):
            (self.folder / name).mkdir()
            shutil.chown(self.folder / name, user)

    def make_folder_as_the_page_says(self):
        (command,) = {text for _, text in page().code_words if text.startswith("chmod ") and text.endswith(" " + USUAL)}
        self.socket_folder.chmod(int(command.split()[1], 8))

    def start_snmpd(self):
        config = self.write("snmpd.conf", f"{stock_settings()}\nagentaddress udp:127.0.0.1:{self.port}\n"
                            f"agentXSocket {self.socket_folder}/master\n{settings()}")
        environment = dict(os.environ, SNMP_PERSISTENT_DIR=str(self.folder / "master"), MIBS="", LC_ALL="C")
        user = ["-u", MASTER_USER, "-g", MASTER_USER] if IS_ROOT else []
        snmpd = self.keep(Daemon(self.folder, "snmpd", [SNMPD, "-Lo", *user, "-I", "-smux,mteTrigger,mteTriggerConf", "-f", "-C",
                                                        "-c", config], environment))
        snmpd.wait_for_log("NET-SNMP version")
        return snmpd

    def start_agent_by(self, line):
        """The page's command line. The usual socket is this test's one for that process alone."""
        words = line.replace(f"{NAMED}/agentx", f"{self.socket_folder}/master").replace(
            "talvik-agentd", str(self.programs / "talvik-agentd"), 1)
        words += (f" --config {self.programs}/talvik-agentd.conf --device {self.programs}/talvik-device.xml --mib-dir {self.programs}"
                  f" --module {self.programs}/{MODULE.name} --state-dir {self.folder}/agent/state")
        script = f"exec {AS_AGENT} {words}"
        if NAMED not in line:
            script = (f"exec {OWN_MOUNTS} sh -c '"
                      f"mount -t tmpfs none /var && mkdir {USUAL} && mount --bind {self.socket_folder} {USUAL} && {script}'")
        return self.keep(Daemon(self.folder, f"agentd-{len(self.daemons)}", ["sh", "-c", script]))

    def test_serves_managers_through_it(self):
        self.make_folder_as_the_page_says()
        snmpd = self.start_snmpd()
        lines = command_lines("talvik-agentd --agentx")
        self.assertEqual([NAMED in line for line in lines], [False, True])

        for line in lines:
            with self.subTest(line):
                if NAMED not in line and subprocess.run([*OWN_MOUNTS.split(), "true"], check=False).returncode != 0:
                    self.skipTest(f"no {USUAL} of its own can be had here")
                agent = self.start_agent_by(line)
                agent.wait_for_log(": connected, requests come through it")
                self.assertEqual(self.lines("snmpwalk", self, OPERATOR, TABLE), topology())
                self.assertEqual(agent.stop(), 0)

        self.assertEqual(re.findall(r"(?im)^.*(?:error|warning|can't|cannot|unknown).*$", snmpd.log()), [])

    @unittest.skipUnless(IS_ROOT, "only root can be kept out by a folder of root's")
    def test_is_out_of_reach_while_the_folder_is_closed(self):
        self.start_snmpd()

        agent = self.start_agent_by(command_lines("talvik-agentd --agentx")[1])

        agent.wait_for_log("cannot be reached: Permission denied")
        self.make_folder_as_the_page_says()
        agent.wait_for_log(": connected, requests come through it")

    def test_takes_the_other_addresses_that_the_page_names(self):
        text = (SOURCE / PAGE).read_text(encoding="utf-8")
        (comment,) = re.findall(r"--agentx unix:/run/snmpd/agentx +# or (.*)", text)
        for address in comment.split(", "):
            with self.subTest(address):
                done = self.run_agent("--check", agentx=address, listen=None)
                self.assertEqual(done.returncode, 0, done.stderr)


if __name__ == "__main__":
    unittest.main()
