"""The stock snmptrapd with a configuration of contrib/."""

import os
import time

from contrib_support import MIB_FOLDERS, MIBS
from talvik_e2e import Daemon, free_port


class TrapDaemon(Daemon):
    """snmptrapd on a port of its own, told to take `config`; with the MIB's text or without any."""

    def __init__(self, folder, config, mib_text=False, options=(), **environment):
        self.port = free_port()
        name = f"snmptrapd-{time.monotonic_ns()}"
        own = folder / name
        (own / "cert_indexes").mkdir(parents=True)
        file = own / "snmptrapd.conf"
        file.write_text(config)
        environment = dict(os.environ, **environment, SNMP_PERSISTENT_DIR=str(own), SNMPCONFPATH=str(own), LC_ALL="C.UTF-8",
                           MIBDIRS=MIB_FOLDERS if mib_text else str(own), MIBS=MIBS if mib_text else "")
        super().__init__(folder, name, ["snmptrapd", "-f", "-n", "-Lo", "-C", "-c", file, *options,
                                        f"udp:127.0.0.1:{self.port}"], environment)
        self.wait_for_log("NET-SNMP version")
