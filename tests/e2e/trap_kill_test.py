"""The agent is killed while trap destinations change: the list is as before the change under way, or as after it."""

import os
import random
import unittest

from snmp_wire import SET
from stepping import Stepping
from trap_table import TRAPS, Destination, TrapTest, change_to, creation_of, destinations_in, destroy

def row_of(index, chance):
    return Destination(index, f"192.0.2.{chance.randrange(1, 255)}", chance.randrange(1, 65536), chance.randrange(1, 4),
                       chance.choice((1, 2, 3, 7)), f"user-{chance.randrange(1000)}")


def random_change(rows, chance):
    """A SET that can be done now, and the list after it."""
    index = chance.randrange(1, 9)
    after = dict(rows)
    if index in rows and chance.random() < 0.3:
        del after[index]
        return destroy(index), after
    after[index] = row_of(index, chance)
    return (change_to if index in rows else creation_of)(after[index]), after


class TrapKill(TrapTest):
    def listed(self, agent):
        with self.manager(agent, "reader") as manager:
            return destinations_in(manager.walk(TRAPS))

    def test_at_random_moments(self):
        seed = int(os.environ.get("TALVIK_SEED") or random.randrange(1 << 32))
        print(f"TALVIK_SEED={seed}")
        chance = random.Random(seed)
        rows = {}
        for round_ in range(40):
            agent = self.start_agent()
            self.assertEqual(self.listed(agent), rows, f"round {round_}")
            with self.manager(agent) as manager:
                for _ in range(chance.randrange(6)):
                    variables, rows = random_change(rows, chance)
                    self.assertEqual(manager.set(*variables).error, "noError")
                variables, after = random_change(rows, chance)
                manager.send(SET, variables)
                answer = manager.receive(chance.random() * 0.008)
                agent.kill()
                answer = answer or manager.receive(0)
            if answer is not None:
                self.assertEqual(answer.error, "noError")
                rows = after
            else:
                agent = self.start_agent()
                found = self.listed(agent)
                self.assertIn(found, (rows, after), f"round {round_}")
                rows = found
                agent.kill()

    def kill_at_every_step(self, before, variables, after):
        """Kills the agent at the first system call of a SET, at the second, and so on until it is answered."""
        step, seen = 0, []
        while True:
            self.state = self.folder / f"state-{step}"
            agent = self.start_agent()
            with self.manager(agent) as manager:
                for row in before.values():
                    self.assertEqual(manager.set(*creation_of(row)).error, "noError")
                with Stepping(agent.process.pid) as stepping:
                    manager.send(SET, variables)
                    answer = None
                    for _ in range(step):
                        stepping.run_to_next_call()
                        answer = manager.receive(0)
                        if answer is not None:
                            break
                    stepping.kill()
                agent.wait()
            found = self.listed(self.start_agent())
            if answer is not None:
                self.assertEqual((answer.error, found), ("noError", after))
                return seen
            self.assertIn(found, (before, after), f"step {step}")
            seen.append(found == after)
            step += 1
            for daemon in self.daemons:
                daemon.put_down()

    def check_every_step(self, before, variables, after):
        seen = self.kill_at_every_step(before, variables, after)
        # Step n of one run need not be step n of the next, as timers make calls too; so only that both were met.
        self.assertIn(False, seen)
        self.assertIn(True, seen)

    def test_at_every_step_of_a_create(self):
        old, new = Destination(1, user="old"), Destination(2, "192.0.2.2", 2, 3, 7, "new")
        self.check_every_step({1: old}, creation_of(new), {1: old, 2: new})

    def test_at_every_step_of_the_first_create(self):
        new = Destination(2, "192.0.2.2", 2, 3, 7, "new")
        self.check_every_step({}, creation_of(new), {2: new})

    def test_at_every_step_of_a_modify(self):
        old, new = Destination(1, user="old"), Destination(1, "192.0.2.2", 2, 3, 7, "new")
        self.check_every_step({1: old}, change_to(new), {1: new})

    def test_at_every_step_of_a_delete(self):
        first, second = Destination(1, user="first"), Destination(2, user="second")
        self.check_every_step({1: first, 2: second}, destroy(1), {2: second})


if __name__ == "__main__":
    unittest.main()
