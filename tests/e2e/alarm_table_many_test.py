"""A hundred thousand active alarms: a walk of all of them ends, shows each cell once, and takes bounded memory."""

import unittest

from alarm_table import ALARMS, COLUMNS, AlarmTableTest, alarms_numbered
from notifications import memory
from talvik_e2e import READER

ALARM_COUNT = 100_000
MOST_MEMORY = 256 * 1024  # KiB: 64 MiB of rows, what one request adds, and the agent itself


class ManyAlarms(AlarmTableTest):
    def test_a_bulk_walk_shows_each_cell_once(self):
        agent = self.start_with(alarms_numbered(range(1, ALARM_COUNT + 1)))

        result = self.tool("snmpbulkwalk", agent, READER, "-Cr50", "-Oq", ALARMS)

        self.assertEqual((result.returncode, result.stderr), (0, ""))
        shown = [line.split(" ", 1)[0].rsplit(".", 2)[1:] for line in result.stdout.splitlines()]
        self.assertEqual(shown, [[str(column), str(serial)] for column in COLUMNS
                                 for serial in range(1, ALARM_COUNT + 1)])
        self.assertLess(memory(agent.process.pid, "VmHWM"), MOST_MEMORY)


if __name__ == "__main__":
    unittest.main()
