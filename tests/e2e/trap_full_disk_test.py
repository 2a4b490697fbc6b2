"""The disk fills up: changes of trap destinations fail, nothing is lost, and they work again when there is room."""

import unittest

import private_namespaces
from trap_table import STATUS, TRAPS, Destination, TrapTest, change, create, destinations_in, destroy, name


def setUpModule():
    try:
        private_namespaces.enter()
    except OSError as error:
        raise unittest.SkipTest(f"no disk of its own can be had here: {error}")


class TrapFullDisk(TrapTest):
    def setUp(self):
        self.state.mkdir(mode=0o700)
        private_namespaces.mount_memory(self.state, 1 << 20)
        self.addCleanup(private_namespaces.unmount, self.state)
        self.agent = self.start_agent()
        self.managed = self.manager(self.agent)
        self.rows = {index: Destination(index) for index in range(1, 21)}
        for index in self.rows:
            self.assertEqual(self.managed.set(*create(index)).error, "noError")

    def fill_the_disk(self):
        ballast = self.state / "ballast"
        with open(ballast, "wb", buffering=0) as file:
            try:
                while file.write(b"x" * 512):
                    pass
            except OSError:
                return ballast

    def change_until_refused(self):
        for port in range(1, 1000):
            answer = self.managed.set(*change(1, port=port))
            if answer.error != "noError":
                return answer
            self.rows[1] = Destination(1, port=port)
        self.fail("the disk is not full")

    def listed(self, agent):
        return destinations_in(self.manager(agent, "reader").walk(TRAPS))

    def test_changes_fail_and_work_again(self):
        ballast = self.fill_the_disk()
        self.assertEqual(self.change_until_refused().error, "commitFailed")
        self.assertEqual(self.listed(self.agent), self.rows)
        self.assertEqual(self.managed.set(*create(99)).error, "commitFailed")
        self.assertEqual(self.managed.set(*destroy(2)).error, "commitFailed")
        self.assertEqual(self.listed(self.agent), self.rows)
        self.assert_refused(self.agent, "commitFailed", name(STATUS, 99), *create(99))
        self.assertIn("disk is full", self.agent.log())

        ballast.unlink()
        self.assertEqual(self.managed.set(*create(99)).error, "noError")
        self.assertEqual(self.managed.set(*destroy(2)).error, "noError")
        self.rows[99] = Destination(99)
        del self.rows[2]
        self.assertEqual(self.listed(self.agent), self.rows)

    def test_a_kill_on_a_full_disk_loses_nothing(self):
        ballast = self.fill_the_disk()
        self.assertEqual(self.change_until_refused().error, "commitFailed")
        self.agent.kill()
        ballast.unlink()
        self.assertEqual(self.listed(self.start_agent()), self.rows)


if __name__ == "__main__":
    unittest.main()
