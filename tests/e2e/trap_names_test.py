"""Names of trap destinations: what a name shows while it resolves, and while it does not."""

import unittest

from talvik_e2e import wait_until
from trap_table import ADDRESS, USABLE, Destination, TrapTest, change, create, name, walk_of


class TrapNames(TrapTest):
    def setUp(self):
        self.agent = self.start_agent()

    def usable(self, index, agent=None):
        with self.manager(agent or self.agent) as manager:
            return manager.get(name(USABLE, index)).bindings[0].value.decode()

    def wait_for(self, shown, index, agent=None):
        wait_until(lambda: self.usable(index, agent) == shown, f"{shown} in column 1 of row {index}")

    def test_a_name_that_resolves_shows_itself(self):
        self.set(self.agent, *create(1, "localhost"))
        self.wait_for("localhost", 1)
        self.assertEqual(self.traps(self.agent), walk_of(Destination(1, "localhost")))

    def test_a_name_that_does_not_resolve_shows_no_address_and_itself_beside(self):
        self.set(self.agent, *create(1, "no-such-name.invalid"))
        self.set(self.agent, *create(2, "localhost"))
        self.wait_for("localhost", 2)
        self.assertEqual(self.traps(self.agent), walk_of(Destination(1, "no-such-name.invalid", usable="0.0.0.0"),
                                                         Destination(2, "localhost")))

    def test_addresses_need_no_look_up(self):
        for address in ("192.0.2.1", "2001:db8::1", "fe80::1%lo"):
            self.set(self.agent, *(create(1, address) if address == "192.0.2.1" else change(1, address=address)))
            self.assertEqual(self.usable(1), address)

    def test_what_column_1_shows_for_a_lost_name_cannot_be_written_back(self):
        self.set(self.agent, *create(1, "no-such-name.invalid"))
        self.assert_refused(self.agent, "wrongValue", name(USABLE, 1), *change(1, usable=self.usable(1)))
        self.assert_refused(self.agent, "wrongValue", name(ADDRESS, 1), *change(1, address=self.usable(1)))

    def test_a_changed_name_is_looked_up(self):
        self.set(self.agent, *create(1, "no-such-name.invalid"))
        self.assertEqual(self.usable(1), "0.0.0.0")
        self.set(self.agent, *change(1, address="LocalHost"))
        self.wait_for("LocalHost", 1)
        self.set(self.agent, *change(1, address="another.invalid"))
        self.assertEqual(self.usable(1), "0.0.0.0")
        self.set(self.agent, *change(1, address="192.0.2.9"))
        self.assertEqual(self.usable(1), "192.0.2.9")

    def test_names_are_looked_up_after_a_restart(self):
        self.set(self.agent, *create(1, "localhost"))
        self.agent.kill()
        self.wait_for("localhost", 1, self.start_agent())


if __name__ == "__main__":
    unittest.main()
