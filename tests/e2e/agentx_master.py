"""A stock snmpd as AgentX master, and the agent as its subagent."""

import os
import time

from alarm_table import AlarmTableTest
from talvik_e2e import BIN, CONFIG, Daemon, free_port

SNMPD = "/usr/sbin/snmpd"


class Master(Daemon):
    """snmpd with a folder, a configuration and a socket of its own. Managers ask it at its port."""

    def __init__(self, folder, config=CONFIG, port=None, address=None):
        self.port = port or free_port()
        state = folder / "master"
        state.mkdir(exist_ok=True)
        self.socket = state / "agentx"
        self.address = address or f"unix:{self.socket}"
        (state / "snmpd.conf").write_text(f"agentaddress udp:127.0.0.1:{self.port}\nmaster agentx\n"
                                          f"agentXSocket {self.address}\n{config}")
        environment = dict(os.environ, SNMPCONFPATH=str(state), SNMP_PERSISTENT_DIR=str(state), MIBS="",
                           MIBDIRS=str(state), LC_ALL="C")
        super().__init__(folder, f"snmpd-{time.monotonic_ns()}",
                         [SNMPD, "-f", "-Lo", "-r", "-C", "-c", state / "snmpd.conf",
                          "-I", "system_mib,sysORTable,snmpEngine,vacm_vars,vacm_conf,vacm_context,usmUser,usmConf,"
                                "usmStats,snmp_mib"], environment)
        self.wait_for_log("NET-SNMP version")


class AgentxTest(AlarmTableTest):
    """A test with an agent behind a stock snmpd."""

    def start_master(self, **changes):
        return self.keep(Master(self.folder, **changes))

    def start_subagent(self, master, connected=True, **changes):
        """The agent, once the master serves what it has."""
        options = self.arguments(**{"agentx": master.address, "trap_settings": self.settings, **changes})
        daemon = self.keep(Daemon(self.folder, f"agentd-{time.monotonic_ns()}", [BIN / "talvik-agentd", *options],
                                  dict(os.environ, TZ=self.zone)))
        daemon.wait_for_log("ready, serving through the AgentX master")
        if connected:
            daemon.wait_for_log(": connected, requests come through it")
        return daemon

    def connections(self, daemon):
        """How often a master took the agent in."""
        return daemon.log().count(": connected, requests come through it")
