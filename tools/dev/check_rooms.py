#!/usr/bin/env python3
"""Room rules: who may include whom. docs/architecture.md has the same table for readers.

Usage: check_rooms.py [ROOT]. Prints each finding as FILE:LINE and exits 1 if there is any.
"""

import pathlib
import re
import subprocess
import sys

# The module's rooms see the framework and what a host supplies.
MODULE_BASE = ["framework/", "platform/"]
# The one header of trap/ that others may know: the record of a trap destination.
TRAP_RECORD = "trap/trap_dest_info.h"
HOST_BASE = ["framework/", "platform/", TRAP_RECORD]
HOST_ERROR = "host/startup_error.h"
# Where an installed program finds its files.
PATHS = "host/installation_paths.h"

# Folder: what its files may include besides the folder itself. The longest folder that fits a file counts.
RULES = {
    "platform/": ["framework/"],
    "framework/": ["platform/"],
    "module/": MODULE_BASE + ["handlers/", "trap/", "notify/", "alarmconfig/"],
    "handlers/": MODULE_BASE + ["alarmconfig/"],
    "trap/": MODULE_BASE,
    "alarmconfig/": MODULE_BASE,
    "notify/": MODULE_BASE + [TRAP_RECORD, "alarmconfig/"],
    "snmp_types/": [],
    "host/": HOST_BASE + ["backend/"],
    "host/platform/": HOST_BASE + [HOST_ERROR],
    "host/link/": HOST_BASE + [HOST_ERROR, "host/loop_watcher.h", "host/platform/", "backend/"],
    "host/snmp/": HOST_BASE + ["host/"],
    "host/sdk/": HOST_BASE + ["host/link/", "host/platform/"],
    "backend/": ["framework/", HOST_ERROR, "host/platform/device_config_file.h", "host/platform/host_log.h",
                 "host/platform/durable_database.h", "host/platform/database_files.h"],
    "tools/": ["framework/", "alarmconfig/", "backend/", "host/link/", "host/platform/", HOST_ERROR, PATHS],
    # Hosts outside the tree: what the development package installs.
    "examples/": HOST_BASE + ["host/sdk/reference_platform.h", "host/snmp/request_context.h"],
    "tests/": None,
    "fuzz/": None,
    "bench/": None,
}
# Sources that are built into another room than their folder's.
EXCEPTIONS = {
    # The channel is the link's front door, named after its header in platform/.
    "host/platform/configuration_channel.cpp": ["host/link/"],
    "host/platform/snmp_table_base.cpp": ["host/snmp/request_context.h"],
    "backend/main.cpp": [PATHS, "host/platform/ace_log_route.h", "host/snmp/durable_file.h"],
}

INCLUDE = re.compile(r'^\s*#\s*include\s*(?:"([^"]+)"|<([^>]+)>)')
# The agent's side and the client's side of the library.
LIBRARY_DOORS = ("host/snmp/net_snmp.h", "tools/net_snmp_client.h")
LIBRARY_HEADERS = "net-snmp/"
# The SNMP value types keep their libraries' include paths, whoever supplies them.
VALUE_TYPES = ("snmp_pp/", "agent_pp/")
WITHOUT_VALUE_TYPES = ("backend/", "tools/")


def room_of(path):
    fitting = [room for room in RULES if path.startswith(room)]
    return max(fitting, key=len) if fitting else None


def allowed(path, room, target):
    permitted = RULES[room]
    if permitted is None or target.startswith(room):
        return True
    return any(
        target == entry or (entry.endswith("/") and target.startswith(entry))
        for entry in permitted + EXCEPTIONS.get(path, [])
    )


def findings(root):
    """Yields (file, line number, text) for each breach."""
    for path in source_files(root):
        room = room_of(path)
        if room is None:
            yield path, 1, "stands in no room; add its folder to the table in tools/dev/check_rooms.py"
            continue
        text = (root / path).read_text(encoding="utf-8")
        for number, line in enumerate(text.splitlines(), 1):
            match = INCLUDE.match(line)
            if not match:
                continue
            quoted, bracketed = match.groups()
            if (quoted or bracketed).startswith(VALUE_TYPES):
                if room in WITHOUT_VALUE_TYPES:
                    yield path, number, f"{room} may not include the SNMP value types"
                continue
            if bracketed:
                if bracketed.startswith(LIBRARY_HEADERS) and path not in LIBRARY_DOORS:
                    doors = " and ".join(LIBRARY_DOORS)
                    yield path, number, f"<{bracketed}> is included in {doors} only; include the one of your room"
                continue
            # The carried types can be built without this tree round them.
            if room == "snmp_types/" and ((root / path).parent / quoted).is_file():
                continue
            if not (root / quoted).is_file():
                # Headers that the build makes lie beside their source's room, not in the tree.
                if quoted.endswith(".pb.h"):
                    continue
                yield path, number, f'"{quoted}" is no file of the tree: paths start at the room'
            elif not allowed(path, room, quoted):
                yield path, number, f'{room} may not include "{quoted}"'


def source_files(root):
    command = ["git", "-C", str(root), "ls-files", "-z", "--cached", "--others", "--exclude-standard"]
    names = subprocess.run(command, check=True, capture_output=True, text=True).stdout.split("\0")
    return sorted({name for name in names if name.endswith((".h", ".cpp")) and (root / name).is_file()})


def main(arguments):
    root = pathlib.Path(arguments[0] if arguments else pathlib.Path(__file__).resolve().parents[2])
    found = list(findings(root))
    for path, number, text in found:
        print(f"{path}:{number}: {text}")
    if not found:
        print("room rules: nothing found")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
