"""The agent's own health as managers read it."""

import re

from talvik_e2e import EVERYTHING, HEALTH

NEVER = "00 00 00 00 00 00 00 00"


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
