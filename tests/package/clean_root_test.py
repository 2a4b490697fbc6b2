#!/usr/bin/env python3
"""The packages on a clean Debian root with systemd: installed, upgraded, removed and purged, with the agent on port 161.

`./dev package-test` makes what this takes and runs it, as root: TALVIK_PACKAGES is the folder of the packages, TALVIK_ROOT that of
the clean root.
"""

import os
import pathlib
import re
import tempfile
import unittest

from booted_root import BootedRoot, CannotBoot, Root
from package_kit import run

PACKAGES = pathlib.Path(os.environ["TALVIK_PACKAGES"])
ROOT = pathlib.Path(os.environ["TALVIK_ROOT"])
NEXT = "99.0.0"  # the version to upgrade to

AGENTD_CONF = "/etc/talvik/talvik-agentd.conf"
CONFFILES = [AGENTD_CONF, "/etc/talvik/talvik-device.xml", "/etc/talvik/talvik-traps.json", "/etc/default/talvik-agentd",
             "/etc/default/talvik-backendd"]
ACCESS = """
createUser operator SHA-256 "authentication" AES "privacy-phrase"
rouser operator authPriv -V talvikView
"""
ASK = ("-v3 -u operator -l authPriv -a SHA-256 -A authentication -x AES -X privacy-phrase -On -m '' -r 1 -t 5 127.0.0.1")
CLIENT = """
defVersion 3
defSecurityName operator
defSecurityLevel authPriv
defAuthType SHA-256
defAuthPassphrase authentication
defPrivType AES
defPrivPassphrase privacy-phrase
"""
TABLE = ".1.3.6.1.4.1.99999.2.91.9.1.1"
LOCATION = ".1.3.6.1.4.1.99999.2.91.10.1.1.1.2.1"

# What the kernel says of the agent's process: its user's capabilities are that of the port alone, and the unit's filters hold.
NET_BIND_SERVICE = "0000000000000400"


def package(name, folder=PACKAGES):
    (found,) = folder.glob(f"{name}_*.deb")
    return found


def make_next_version(folder):
    """The packages again as a later version, whose agent configuration has one line more."""
    for name in ("talvik-mib-module", "talvik-agent"):
        tree = folder / "tree"
        run("dpkg-deb", "--raw-extract", package(name), tree)
        control = tree / "DEBIAN" / "control"
        text = re.sub(r"(?m)^Version: .*$", f"Version: {NEXT}", control.read_text())
        control.write_text(re.sub(r"talvik-mib-module \(= [^)]*\)", f"talvik-mib-module (= {NEXT})", text))
        shipped = tree / AGENTD_CONF[1:]
        if shipped.exists():
            shipped.write_text(shipped.read_text() + "# of the next version\n")
        run("dpkg-deb", "--root-owner-group", "--build", tree, folder / f"{name}_{NEXT}_all.deb")
        run("rm", "-r", tree)


class MadePackages(unittest.TestCase):
    """Has the packages, and those of the next version, in one folder."""

    maxDiff = None

    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory(prefix="talvik-packages-")
        cls.addClassCleanup(cls.folder.cleanup)
        packages = pathlib.Path(cls.folder.name)
        for name in ("talvik-mib-module", "talvik-agent", "talvik-dev"):
            run("cp", package(name), packages)
        make_next_version(packages)

    def machine_of(self, kind):
        machine = kind(ROOT, self.folder.name).__enter__()
        self.addCleanup(machine.__exit__)
        return machine


class WithoutSystemd(MadePackages):
    """As in a container: the scripts start nothing and do not fail, and the agent runs by hand as its unit would run it."""

    INSTALL = "dpkg --install /packages/talvik-mib-module_[0-8]*.deb /packages/talvik-agent_[0-8]*.deb"
    # The privileges of the unit.
    AS_THE_UNIT = ("setpriv --reuid talvik --regid talvik --clear-groups --no-new-privs --bounding-set -all,+net_bind_service "
                   "--inh-caps -all,+net_bind_service --ambient-caps -all,+net_bind_service")

    def test_packages_come_and_go_and_the_agent_serves_port_161(self):
        machine = self.machine_of(Root)
        machine.shell(self.INSTALL)
        machine.shell("test -e /etc/systemd/system/multi-user.target.wants/talvik-agentd.service")

        machine.shell(f"printf '%s' '{ACCESS}' >> {AGENTD_CONF}")
        machine.shell(f"{self.AS_THE_UNIT} talvik-agentd >/tmp/log 2>&1 & echo $! >/tmp/agent")
        machine.wait_for("grep -q 'ready, listening on' /tmp/log", "the agent's start")
        rows = machine.shell(f"snmpwalk {ASK} {TABLE}").splitlines()
        self.assertEqual((len(rows), rows[7]), (8, f"{TABLE}.8.1 = INTEGER: 1"))
        machine.shell("kill $(cat /tmp/agent)")
        machine.wait_for("! grep -q '^State:.[^Z]' /proc/$(cat /tmp/agent)/status", "the agent's end")

        machine.shell("dpkg --remove talvik-agent && test -e /var/lib/talvik/engine.json")
        machine.shell("dpkg --purge talvik-agent talvik-mib-module && test ! -e /var/lib/talvik && test ! -e /etc/talvik")


class CleanRoot(MadePackages):
    def setUp(self):
        try:
            self.machine = self.machine_of(BootedRoot)
        except CannotBoot as reason:
            if os.environ.get("CI") == "true":
                raise
            self.skipTest(str(reason))

    # --- what is done --------------------------------------------------------------------------------------------

    def install(self, *names, version="[0-8]*"):
        files = " ".join(f"/packages/{name}_{version}.deb" for name in names)
        self.machine.shell(f"dpkg --force-confdef --force-confold --install {files}")

    def install_agent(self):
        self.install("talvik-mib-module", "talvik-agent")
        self.wait_until_ready()

    def let_operator_in(self):
        self.machine.shell(f"printf '%s' '{ACCESS}' >> {AGENTD_CONF}")
        self.restart("talvik-agentd")

    def restart(self, unit):
        self.machine.run("systemctl", "restart", unit)
        self.wait_until_ready()

    def wait_until_ready(self):
        """Until port 161 is bound by the agent that runs now."""
        self.machine.wait_for("systemctl --quiet is-active talvik-agentd && grep -q ':00A1 ' /proc/net/udp",
                              "an agent on port 161")

    # --- what is seen --------------------------------------------------------------------------------------------

    def status_of(self, unit):
        return self.machine.shell(f"systemctl show --value --property ActiveState {unit}").strip()

    def enabled(self, unit):
        return self.machine.shell(f"systemctl is-enabled {unit} || true").strip()

    def process(self, unit):
        return self.machine.run("systemctl", "show", "--value", "--property", "MainPID", unit).strip()

    def mode_and_owner(self, path):
        return self.machine.run("stat", "--format", "%a %U %G", path).strip()

    def exists(self, path):
        return self.machine.shell(f"[ -e {path} ] && echo yes || echo no").strip() == "yes"

    def topology(self):
        return self.machine.shell(f"snmpwalk {ASK} {TABLE}").splitlines()

    def assert_serves_topology(self):
        rows = self.topology()
        self.assertEqual(len(rows), 8, rows)
        self.assertEqual(rows[0], f'{TABLE}.1.1 = STRING: "TALVIK-0001"')
        self.assertEqual(rows[7], f"{TABLE}.8.1 = INTEGER: 1")

    def raise_alarm(self):
        self.machine.shell("talvikctl alarm raise 501010001 --param 0 --param 7 --param S3A1 --param 1")

    def assert_shows_the_alarm(self):
        self.assertEqual(self.machine.shell(f"snmpget {ASK} {LOCATION}").strip(),
                         f'{LOCATION} = STRING: "Enclosure 0, slot 7"')

    # --- the tests -----------------------------------------------------------------------------------------------

    def test_a_new_installation_runs_as_its_own_user_on_port_161_of_the_loopback(self):
        self.install_agent()

        self.assertEqual(self.enabled("talvik-agentd"), "enabled")
        self.assertEqual((self.enabled("talvik-backendd"), self.status_of("talvik-backendd")), ("disabled", "inactive"))
        listening = self.machine.shell("cat /proc/net/udp /proc/net/udp6 /proc/net/tcp /proc/net/tcp6")
        self.assertEqual(re.findall(r"^ *\d+: ([0-9A-F]+:00A1)", listening, re.M), ["0100007F:00A1"])
        self.assertEqual(self.mode_and_owner("/var/lib/talvik"), "700 talvik talvik")
        self.assertEqual(self.mode_and_owner(AGENTD_CONF), "640 root talvik")
        self.assertEqual(self.mode_and_owner("/etc/talvik/talvik-traps.json"), "640 root talvik")
        self.assertEqual(self.mode_and_owner("/etc/talvik/talvik-device.xml"), "644 root root")
        self.assertRegex(self.machine.run("getent", "passwd", "talvik"), r":/usr/sbin/nologin$")
        self.let_operator_in()
        self.assert_serves_topology()
        self.assertIn("ready, listening on", self.machine.shell("journalctl --unit talvik-agentd"))

    def test_talvikctl_asks_the_installed_agent_without_being_told_where(self):
        self.install_agent()
        self.let_operator_in()
        self.machine.shell(f"umask 077; mkdir /root/.snmp; printf '%s' '{CLIENT}' > /root/.snmp/snmp.conf")

        self.assertIn("--agent ADDRESS=udp:127.0.0.1:161\n", self.machine.run("talvikctl", "trap", "list", "--help"))
        self.assertIn('"agent" : "udp:127.0.0.1:161"', self.machine.run("talvikctl", "trap", "list", "--json"))

    def test_the_unit_fails_once_where_the_agent_cannot_start(self):
        self.install_agent()
        self.machine.shell(f"echo 'agentAddress no-such-transport:1' >> {AGENTD_CONF}")

        self.machine.shell("systemctl restart talvik-agentd || true")

        self.machine.wait_for("systemctl --quiet is-failed talvik-agentd", "the end of the unit")
        self.assertEqual(self.machine.shell("systemctl show --value --property NRestarts talvik-agentd").strip(), "0")

    def test_the_agents_process_is_confined(self):
        self.install_agent()
        agent = self.process("talvik-agentd")

        status = dict(line.split(":\t", 1) for line in self.machine.run("cat", f"/proc/{agent}/status").splitlines()
                      if ":\t" in line)
        user = self.machine.run("id", "-u", "talvik").strip()
        self.assertEqual(set(status["Uid"].split()), {user})
        self.assertEqual((status["NoNewPrivs"], status["Seccomp"]), ("1", "2"))
        for capabilities in ("CapEff", "CapPrm", "CapBnd", "CapAmb"):
            self.assertEqual(status[capabilities], NET_BIND_SERVICE, capabilities)
        its_view = f"nsenter --target {agent} --mount --root --wd"
        inside = f"{its_view} setpriv --reuid talvik --regid talvik --clear-groups"
        for read_only in ("/usr/lib/talvik", "/etc/talvik", "/var", "/var/lib"):  # even for root
            self.machine.shell(f"! {its_view} touch {read_only}/x 2>/dev/null")
        self.machine.shell(f"! {inside} touch /run/x 2>/dev/null")
        self.machine.shell(f"{inside} touch /var/lib/talvik/x && rm /var/lib/talvik/x")

    def test_a_reload_reaches_the_agent_and_does_not_end_it(self):
        self.install_agent()
        before = self.process("talvik-agentd")

        self.machine.run("systemctl", "reload", "talvik-agentd")

        self.machine.wait_for("journalctl --unit talvik-agentd | grep -q SIGHUP", "the agent's line about SIGHUP")
        self.assertEqual(self.process("talvik-agentd"), before)

    def test_an_upgrade_keeps_what_was_changed_and_restarts_the_agent(self):
        self.install_agent()
        self.let_operator_in()
        self.raise_alarm()
        before = self.process("talvik-agentd")
        changed = self.machine.run("cat", AGENTD_CONF)

        self.install("talvik-mib-module", "talvik-agent", version=NEXT + "_all")
        self.wait_until_ready()

        self.assertNotEqual(self.process("talvik-agentd"), before)
        self.assertEqual(self.machine.run("cat", AGENTD_CONF), changed)
        self.assertEqual(self.mode_and_owner(AGENTD_CONF), "640 root talvik")
        self.assertIn("# of the next version", self.machine.run("cat", AGENTD_CONF + ".dpkg-dist"))
        self.assert_serves_topology()
        self.assert_shows_the_alarm()

    def test_a_back_end_of_its_own_serves_the_same_alarms(self):
        self.install_agent()
        self.let_operator_in()
        self.raise_alarm()
        self.machine.shell("sed -i 's/^#TALVIK_AGENTD_OPTIONS=/TALVIK_AGENTD_OPTIONS=/; /^TALVIK_AGENTD_OPTIONS=\"\"$/d' "
                           "/etc/default/talvik-agentd")

        self.machine.shell("systemctl stop talvik-agentd && systemctl enable --now talvik-backendd 2>/dev/null")
        self.restart("talvik-agentd")

        self.machine.wait_for("talvikctl backend status --socket /run/talvik/backend.sock", "an answer of the back end")
        self.assert_serves_topology()
        self.assert_shows_the_alarm()
        status = self.machine.shell(f"grep -E '^(Cap(Eff|Bnd|Amb)|NoNewPrivs|Seccomp):' /proc/{self.process('talvik-backendd')}/status")
        self.assertEqual(status.split(), ["CapEff:", "0" * 16, "CapBnd:", "0" * 16, "CapAmb:", "0" * 16, "NoNewPrivs:", "1",
                                          "Seccomp:", "2"])

    def test_removal_keeps_configuration_and_state_and_purging_takes_them(self):
        self.install_agent()
        self.let_operator_in()
        self.raise_alarm()

        self.machine.shell("dpkg --remove talvik-agent")
        self.assertEqual(self.status_of("talvik-agentd"), "inactive")
        self.assertFalse(self.exists("/usr/sbin/talvik-agentd"))
        for kept in CONFFILES + ["/var/lib/talvik/alarms.db", "/var/lib/talvik/engine.json"]:
            self.assertTrue(self.exists(kept), kept)

        self.install_agent()
        self.assertEqual(self.enabled("talvik-agentd"), "enabled")
        self.assert_serves_topology()
        self.assert_shows_the_alarm()

        self.machine.shell("touch /etc/talvik/left-over && dpkg --purge talvik-agent talvik-mib-module")
        for gone in ("/etc/talvik", "/var/lib/talvik", "/usr/lib/talvik", "/usr/share/talvik", "/etc/default/talvik-agentd",
                     "/lib/systemd/system/talvik-agentd.service"):
            self.assertFalse(self.exists(gone), gone)
        self.assertEqual(self.machine.shell("find /etc/systemd /var/lib/systemd -name '*talvik*'"), "")
        self.machine.run("getent", "passwd", "talvik")

    def test_the_units_are_well_formed_and_rated_as_safe(self):
        self.install_agent()

        for unit, exposure in (("talvik-agentd", 20), ("talvik-backendd", 10)):  # of 100, which is no protection
            self.machine.shell(f"systemd-analyze verify --man=no /lib/systemd/system/{unit}.service")
            self.machine.shell(f"systemd-analyze security --offline=true --threshold={exposure} "
                               f"/lib/systemd/system/{unit}.service")

    def test_debian_has_what_the_packages_ask_for(self):
        # By the lists of packages that the root was made from: nothing is fetched.
        done = self.machine.shell("apt-get --simulate --no-install-recommends install /packages/*_[0-8]*.deb")

        self.assertIn("Inst talvik-dev", done)


if __name__ == "__main__":
    if os.geteuid() != 0:
        raise SystemExit("skipped: needs root, for a root folder and namespaces of its own")
    unittest.main()
