"""The agent's own health as managers read it."""

import re

from talvik_e2e import EVERYTHING, HEALTH, SOURCE

TEXT = SOURCE / "mibs" / "TALVIK-AGENT-MIB.txt"
NEVER = "00 00 00 00 00 00 00 00"


def objects_of_the_text():
    """Name and syntax of each object that managers can read, in the order of the text."""
    return [(name, syntax) for name, syntax, access in
            re.findall(r"^(\w+) OBJECT-TYPE\s+SYNTAX\s+(\w+).*?MAX-ACCESS\s+(\S+)", TEXT.read_text(),
                       re.MULTILINE | re.DOTALL) if access == "read-only"]


class HealthReader:
    """Mixed into a test: what the health of an agent is now."""

    def health(self, agent, user=EVERYTHING):
        """Value by name of a scalar, or name and number of a row; numbers as such."""
        result = self.tool("snmpwalk", agent, user, "-mTALVIK-AGENT-MIB", "-OQeU", HEALTH, mib_text=True, numeric=False)
        self.assertEqual(result.returncode, 0, result.stdout + result.stderr)
        found = {}
        for name, instance, value in re.findall(r"^TALVIK-AGENT-MIB::(\w+)\.(\d+) = (.*)$", result.stdout,
                                                re.MULTILINE):
            value = value.strip('" ')
            found[name if instance == "0" else (name, int(instance))] = int(value) if value.isdigit() else value
        return found

    def counted(self, agent, *names):
        health = self.health(agent)
        return [health[f"talvikAgent{name}"] for name in names]
