"""contrib/snmptt: the real snmptt, called by the real snmptrapd, says what the agent's notifications mean."""

import pathlib
import re
import unittest

from contrib_support import CONTRIB, DISK_SLOW, INFO, PLACE, ContribTest, filled_in, needs
from notifications import OWN_OID, TRAP_USER, V1, V2C, V3, users
from talvik_e2e import wait_until
from trap_daemon import TrapDaemon
from trap_receivers import user_lines

SNMPTT, HANDLER = "/usr/sbin/snmptt", "/usr/sbin/snmptthandler"
INI = pathlib.Path("/etc/snmp/snmptt.ini")
CONFIG = CONTRIB / "snmptt"
LINE = re.compile(r'^.* (\.1\.3\S+) (\w+) "(\w+)" (\S+) - (.*)$')
DROPPED = re.compile(r"[^a-zA-Z0-9 !\"#%'()+,\-_.:/=@{}~\\]")  # snmptt keeps no other characters of a value


@needs(SNMPTT, "snmptrapd")
class Snmptt(ContribTest):
    def setting(self, ini, name, value):
        changed, count = re.subn(rf"^{name} *=.*$", lambda _: f"{name} = {value}", ini, flags=re.MULTILINE)
        self.assertEqual(count, 1, name)
        return changed

    def receiver(self, agent, program=SNMPTT, **settings):
        """An snmptrapd that calls the program as contrib/snmptt says, the log that snmptt writes, and its snmptt.ini."""
        log = self.folder / f"snmptt-{len(self.daemons)}.txt"
        ini = INI.read_text()
        for name, value in {"log_file": log, "syslog_enable": 0, "syslog_system_enable": 0, **settings}.items():
            ini = self.setting(ini, name, value)
        ini = re.sub(r"(?s)snmptt_conf_files = <<END\n.*?END", f"snmptt_conf_files = <<END\n{CONFIG / 'snmptt.conf'}\nEND", ini)
        file = self.write(f"{log.stem}.ini", ini)
        config = filled_in((CONFIG / "snmptrapd.conf").read_text(), **{SNMPTT: f"{program} --ini={file}"})
        engine_id = re.search("SNMP engine ID ([0-9a-f]+), boots", agent.log()).group(1)
        who = "authCommunity log,execute public\n" + user_lines(TRAP_USER, engine_id).replace(" log ", " log,execute ")
        return self.keep(TrapDaemon(self.folder, config + "\n" + who, mib_text=True)), log, file

    def lines_of(self, log, count):
        """OID, severity, category and text of each line; sorted, for snmptrapd does not wait for its handlers."""
        def written():
            text = log.read_text() if log.exists() else ""
            return text if text.count("\n") >= count else None

        text = wait_until(written, f"{count} lines in {log.name}")
        return sorted(LINE.match(line).group(1, 2, 3, 5) for line in text.splitlines())

    def test_translates_what_receivers_of_every_kind_get(self):
        agent = self.start()
        self.write_settings(users=users())
        receivers = {(V2C, None): self.receiver(agent), (V2C, OWN_OID): self.receiver(agent),
                     (V1, OWN_OID): self.receiver(agent), (V3, None): self.receiver(agent)}
        for index, ((version, kind), (daemon, *_)) in enumerate(receivers.items(), 1):
            self.add_receiver(agent, index, daemon.port, version, kind or 1, TRAP_USER if version == V3 else "--")
        client = self.client()
        place = PLACE + " $5 $*"
        serial = client.raise_alarm(501010001, f"{place},7,SN-7,1".encode())
        client.clear(serial)
        client.report_event(DISK_SLOW, b"A,1,2,3", level=INFO)
        texts = [f"alarm {serial} raised, major: Disk failed, Enclosure {place}, slot 7: Disk 7 in enclosure {place} "
                 "(serial number SN-7) has failed: too many media errors. (id 501010001, node TALVIK-0001)",
                 f"alarm {serial} cleared: Disk failed, Enclosure {place}, slot 7 (id 501010001, node TALVIK-0001)",
                 f"event {serial + 1}: Disk responds slowly, Enclosure A, slot 1: Disk 1 in enclosure A took 2 µs on average "
                 "to answer; comparable disks take 3 µs. (id 501010007, node TALVIK-0001)"]
        fixed = ".1.3.6.1.4.1.99999.2.91.10.2.1.0.1"
        for (version, kind), (_, log, _) in receivers.items():
            with self.subTest(version=version, kind=kind):
                zero = "0." if version == V1 else ""
                own = f".1.3.6.1.4.1.99999.2.251.20.1.2.2.1.{{}}.{zero}{{}}"
                oids = [own.format(1, 1), own.format(1, 2), own.format(7, 3)] if kind else [fixed] * 3
                self.assertEqual(self.lines_of(log, 3), sorted(
                    (oid, severity, category, DROPPED.sub("", text)) for oid, severity, category, text in
                    zip(oids, ("Major", "Normal", "Warning"), ("Alarm", "Alarm", "Event"), texts)))
        client.test_trap(1)
        self.assertIn("Test", [category for _, _, category, _ in self.lines_of(receivers[V2C, None][1], 4)])

    def test_translates_as_a_daemon_too(self):
        agent = self.start()
        spool = self.folder / "spool"
        spool.mkdir()
        trapd, log, ini = self.receiver(agent, HANDLER, mode="daemon", daemon_fork=0, daemon_uid="", sleep=1,
                                        pid_file=self.folder / "snmptt.pid", spool_directory=f"{spool}/")
        self.daemon("snmptt-daemon", SNMPTT, "--daemon", f"--ini={ini}")
        self.add_receiver(agent, 1, trapd.port)
        serial = self.raise_disk(self.client(), place="DAE000")
        self.assertEqual(self.lines_of(log, 1), [(
            ".1.3.6.1.4.1.99999.2.91.10.2.1.0.1", "Major", "Alarm",
            f"alarm {serial} raised, major: Disk failed, Enclosure DAE000, slot 7: Disk 7 in enclosure DAE000 (serial number "
            "SN-7) has failed: too many media errors. (id 501010001, node TALVIK-0001)")])


if __name__ == "__main__":
    unittest.main()
