"""The log lines that docs/integrating.md names are those that an agent writes, letter for letter."""

import re
import unittest

from module_faults import Faults
from notifications import ALARM_TRAP, DISK_FAILED, NotificationTest, disk
from talvik_e2e import CLEAR_ALARM, EVERYTHING, ROOT, SOURCE, WRITER, wait_until

PAGE = SOURCE / "docs" / "integrating.md"
DOCUMENTED = re.compile(r"^(?:trace|debug|info|warning|error) \S+ .+$")
STANDS_FOR = {"PATH": r"\S+", "PORT": r"\d+", "LINE": r"\d+", "NUMBER": r"[0-9a-f]+", "LIBRARY": r"\S+",
              "SYMBOL": r"\w+", "KIND": r"[^()]+", "TEXT": r".+"}
UNKNOWN = 12345


def documented_lines():
    blocks = re.findall(r"^```text\n(.*?)^```$", PAGE.read_text(), re.MULTILINE | re.DOTALL)
    return [line for block in blocks for line in block.splitlines()]


def pattern_of(line):
    """What a line of the page looks like in a log: behind the time, and with nothing behind it but blanks."""
    words = re.split(r"\b(" + "|".join(STANDS_FOR) + r")\b", line)
    expression = "".join(STANDS_FOR.get(word) or re.escape(word) for word in words)
    return re.compile(rf"^\S+ {expression} *$", re.MULTILINE)


class LogLines(NotificationTest):
    def log_of_a_whole_life(self):
        agent = self.start(log_level="trace")
        receiver = self.trap_socket()
        self.add_receiver(agent, 1, receiver.port)
        self.client().raise_alarm(DISK_FAILED, disk(7))
        wait_until(lambda: ALARM_TRAP in [one.oid for one in receiver.notifications()], "the alarm's trap")
        self.walk(agent, EVERYTHING)
        self.lines("snmpset", agent, WRITER, CLEAR_ALARM, "u", "1")
        self.client().raise_alarm(UNKNOWN, disk(7))
        agent.wait_for_log(f"parse alarm {UNKNOWN} failed")
        self.assertEqual(agent.stop(), 0)
        return agent.log()

    def log_without_a_catalogue(self):
        text = (SOURCE / "etc" / "talvik-device.xml").read_text()
        device = self.write("device.xml", text.replace("etc/alarm-definitions.json", "etc/none.json"))
        state = self.folder / "state-without"
        self.backend_socket = state / "agent.sock"
        agent = self.start(device=device, state_dir=state)
        self.client().raise_alarm(DISK_FAILED, disk(7))
        agent.wait_for_log("no trap for alarm")
        self.tool("snmpgetnext", agent, EVERYTHING, f"{ROOT}.2.91.10.1.1")
        self.assertEqual(agent.stop(), 0)
        return agent.log()

    def log_without_a_back_end(self):
        agent = self.start(backend=f"unix:{self.folder / 'nobody.sock'}", state_dir=self.folder / "state-alone")
        self.tool("snmpgetnext", agent, EVERYTHING, f"{ROOT}.2.91.9.1")
        agent.wait_for_log("is down")
        self.assertEqual(agent.stop(), 0)
        return agent.log()

    def logs_of_faults(self):
        for fault in Faults(self.folder).all():
            result = self.run_agent(**fault.options)
            self.assertEqual(result.returncode, 1, result.stderr)
            yield result.stderr

    def test_are_those_of_the_page(self):
        lines = documented_lines()
        self.assertGreater(len(lines), 25)
        self.assertEqual([line for line in lines if not DOCUMENTED.match(line)], [])
        log = "".join([self.log_of_a_whole_life(), self.log_without_a_catalogue(), self.log_without_a_back_end(),
                       *self.logs_of_faults()])
        self.assertEqual([line for line in lines if not pattern_of(line).search(log)], [])


if __name__ == "__main__":
    unittest.main()
