"""A stock snmpd as AgentX master, and the agent as its subagent."""

import os
import socket
import struct
import threading
import time

from alarm_table import AlarmTableTest
from talvik_e2e import BIN, CONFIG, Daemon, free_port

SNMPD = "/usr/sbin/snmpd"

REGISTER, UNREGISTER, RESPONSE = 3, 4, 18  # kinds of AgentX messages


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


class Forgetful:
    """Between agent and master, with a socket of its own. While `loses` is a kind of message, what registers is lost on the way:
    REGISTER to the master, or the RESPONSE to it. `lost` has how many in each connection; `withdrawn`
    counts the subtrees that the agent takes back one by one."""

    def __init__(self, folder, master, loses):
        self.path, self.master, self.loses, self.lost = folder / "forgetful", master, loses, []
        self.withdrawn = 0
        self.sockets, self.threads = [], []
        self.listener = socket.socket(socket.AF_UNIX)
        self.listener.bind(str(self.path))
        self.listener.listen()
        self._start(self._accept)

    def _start(self, target, *arguments):
        self.threads.append(threading.Thread(target=target, args=arguments))
        self.threads[-1].start()

    def _accept(self):
        while True:
            try:
                agent = self.listener.accept()[0]
            except OSError:
                return  # closed
            master = socket.socket(socket.AF_UNIX)
            self.sockets += [agent, master]
            master.connect(str(self.master.socket))
            number, asked = len(self.lost), set()
            self.lost.append(0)
            self._start(self._pass_on, agent, master, number, asked, REGISTER)
            self._start(self._pass_on, master, agent, number, asked, RESPONSE)

    def _pass_on(self, source, sink, number, asked, kind):
        try:
            with source.makefile("rb") as stream:
                while len(header := stream.read(20)) == 20:
                    order = ">" if header[2] & 0x10 else "<"
                    packet, length = struct.unpack_from(order + "II", header, 12)
                    body = stream.read(length)
                    if header[1] == REGISTER:
                        asked.add(packet)
                    self.withdrawn += header[1] == UNREGISTER
                    if header[1] == kind == self.loses and packet in asked:
                        self.lost[number] += 1
                    else:
                        sink.sendall(header + body)
        except OSError:
            pass  # an end has gone, so the other one goes
        self._end(sink)

    @staticmethod
    def _end(one):
        try:
            one.shutdown(socket.SHUT_RDWR)
        except OSError:
            pass  # it has ended already

    def close(self):
        self._end(self.listener)
        self.listener.close()
        self.threads[0].join()
        for one in self.sockets:
            self._end(one)
        for thread in self.threads[1:]:
            thread.join()
        for one in self.sockets:
            one.close()


class AgentxTest(AlarmTableTest):
    """A test with an agent behind a stock snmpd."""

    def start_master(self, **changes):
        return self.keep(Master(self.folder, **changes))

    def start_subagent(self, master, connected=True, **changes):
        """The agent, once the master serves what it has."""
        options = self.arguments(**{"agentx": master.address, "trap_settings": self.settings, **changes})
        daemon = self.keep(Daemon(self.folder, f"agentd-{time.monotonic_ns()}", [BIN / "talvik-agentd", *options],
                                  dict(os.environ, TZ=self.zone)))
        daemon.wait_for_log("ready, looking for the AgentX master")
        if connected:
            daemon.wait_for_log(": connected, requests come through it")
        return daemon

    def connections(self, daemon):
        """How often a master took the agent in."""
        return daemon.log().count(": connected, requests come through it")
