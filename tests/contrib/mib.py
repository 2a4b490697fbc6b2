"""The MIBs' texts as the stock tools read them."""

import re

from contrib_support import MIB_FOLDERS, MIBS, run

KEL = "1.3.6.1.4.1.99999"


def translate(*arguments):
    return run("snmptranslate", *arguments, MIBDIRS=MIB_FOLDERS, MIBS=MIBS)


def mib_nodes():
    """OID by name."""
    return {name: oid for name, oid in re.findall(r'"(\w+)"\s+"([\d.]+)"', translate("-Tz")) if oid.startswith(KEL)}


def enumeration(name):
    """Names by number."""
    syntax = re.search(r"SYNTAX\s+INTEGER \{(.*?)\}", translate("-Td", "-IR", name), re.DOTALL).group(1)
    return {int(number): label for label, number in re.findall(r"(\w+)\((\d+)\)", syntax)}
