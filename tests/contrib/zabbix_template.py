"""The Zabbix template of contrib/, and what Zabbix makes of parts of it."""

import re

import yaml

from contrib_support import CONTRIB

TEMPLATE = CONTRIB / "zabbix" / "talvik-snmp.yaml"
TRAP_KEY = re.compile(r'snmptrap\["(.*)"\]$')
DISCOVERY = re.compile(r"discovery\[(.*)\]$")


def load():
    """The one template in the file."""
    export = yaml.safe_load(TEMPLATE.read_text())["zabbix_export"]
    assert export["version"] == "6.0" and len(export["templates"]) == 1
    return export["templates"][0]


def objects_in(part):
    """Every mapping in it, itself included."""
    if isinstance(part, dict):
        yield part
    for inner in part.values() if isinstance(part, dict) else part if isinstance(part, list) else ():
        yield from objects_in(inner)


def discovered(rule):
    """The OIDs that a discovery rule walks, by the macro that their values go to."""
    words = DISCOVERY.match(rule["snmp_oid"]).group(1).split(",")
    return dict(zip(words[::2], words[1::2]))


def trap_patterns(template):
    """The regular expressions that traps are told apart by, by the item's name; for Zabbix a trap is many lines."""
    return {item["name"]: re.compile(TRAP_KEY.match(item["key"]).group(1), re.MULTILINE)
            for item in template["items"] if item["type"] == "SNMP_TRAP"}


def mapping(template, name):
    """A value map: names by number."""
    found = next(one for one in template["valuemaps"] if one["name"] == name)
    return {int(pair["value"]): pair["newvalue"] for pair in found["mappings"]}
