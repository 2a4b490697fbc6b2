"""Several managers change and read the trap destinations at once."""

import random
import threading
import unittest

from snmp_wire import END_OF_VIEW, Manager
from talvik_e2e import LIMIT, v3
from trap_table import (COLUMNS, STATUS, TRAP_ENTRY, TRAPS, USER, Destination, TrapTest, change_to, creation_of,
                        destination_of, destinations_in, destroy, name, walk_of)

MANAGERS = 4


def numbered(index, number):
    """A row whose fields all tell the same number, so that half a change is seen."""
    return Destination(index, f"192.0.2.{number}", 1000 + number, user=f"user-{number}")


class Together:
    """Threads that run at the same time; what one of them raises is raised at the end."""

    def __init__(self):
        self.threads = []
        self.errors = []

    def add(self, work, *arguments):
        def run():
            try:
                work(*arguments)
            except BaseException as error:  # shown by the thread that waits
                self.errors.append(error)

        self.threads.append(threading.Thread(target=run, daemon=True))

    def run(self, meanwhile=None):
        for thread in self.threads:
            thread.start()
        while meanwhile and any(thread.is_alive() for thread in self.threads):
            meanwhile()
        for thread in self.threads:
            thread.join(4 * LIMIT)
            if thread.is_alive():
                raise AssertionError("a manager has not finished")
        if self.errors:
            raise self.errors[0]


class TrapConcurrent(TrapTest):
    def setUp(self):
        self.agent = self.start_agent()
        self.reader = self.manager(self.agent, "reader")

    def read(self):
        """Walks, and reads row by row; both must be in order and every row be whole."""
        self.reader.walk(TRAPS, 20)
        names = [f"{TRAP_ENTRY}.{column}" for column in COLUMNS]
        while True:
            bindings = self.reader.get_bulk(3, *names).bindings
            for row in range(0, len(bindings) - len(COLUMNS) + 1, len(COLUMNS)):
                cells = bindings[row:row + len(COLUMNS)]
                if not cells[0].name.startswith(f"{TRAP_ENTRY}.1.") or cells[0].tag == END_OF_VIEW:
                    return
                index = int(cells[0].name.rpartition(".")[2])
                self.assertEqual([cell.name for cell in cells], [name(column, index) for column in COLUMNS])
                found = destination_of({column: cell.value for column, cell in zip(COLUMNS, cells)})
                self.assertEqual(found, numbered(index, found.port - 1000))
                names = [cell.name for cell in cells]

    def listed(self):
        return destinations_in(self.reader.walk(TRAPS))

    def test_each_index_goes_to_one_creator(self):
        made = [{} for _ in range(MANAGERS)]

        def work(number):
            indexes = list(range(1, 61))
            random.Random(number).shuffle(indexes)
            with Manager(self.agent.port) as manager:
                for index in indexes:
                    row = numbered(index, number)
                    answer = manager.set(*creation_of(row))
                    if answer.error == "noError":
                        made[number][index] = row
                    else:
                        self.assertEqual((answer.error, answer.position), ("inconsistentValue", 1))

        together = Together()
        for number in range(MANAGERS):
            together.add(work, number)
        together.run(self.read)

        self.assertEqual(sorted(index for rows in made for index in rows), list(range(1, 61)))
        self.assertEqual(self.listed(), {index: row for rows in made for index, row in rows.items()})

    def test_nothing_is_lost_between_creates_changes_and_deletes(self):
        final = [{} for _ in range(MANAGERS)]

        def work(number):
            chance = random.Random(100 + number)
            rows = final[number]
            with Manager(self.agent.port) as manager:
                for step in range(120):
                    index = 1 + number + MANAGERS * chance.randrange(15)
                    row = numbered(index, chance.randrange(1, 250))
                    if index not in rows:
                        self.assertEqual(manager.set(*creation_of(row)).error, "noError")
                        rows[index] = row
                    elif chance.random() < 0.7:
                        self.assertEqual(manager.set(*change_to(row)).error, "noError")
                        rows[index] = row
                    else:
                        self.assertEqual(manager.set(*destroy(index)).error, "noError")
                        del rows[index]
                    if step % 10 == 0 and index in rows:
                        self.assertEqual(manager.get(name(USER, index)).bindings[0].value, rows[index].user.encode())

        together = Together()
        for number in range(MANAGERS):
            together.add(work, number)
        together.run(self.read)

        self.assertEqual(self.listed(), {index: row for rows in final for index, row in rows.items()})

    def test_one_row_that_all_change_is_one_of_their_rows(self):
        self.assertEqual(self.manager(self.agent).set(*creation_of(numbered(1, 1))).error, "noError")

        def work(number):
            with Manager(self.agent.port) as manager:
                for step in range(50):
                    row = numbered(1, number * 50 + step)
                    answers = [manager.set(*change_to(row)).error]
                    if number == 0:
                        answers += [manager.set(*destroy(1)).error, manager.set(*creation_of(row)).error]
                    self.assertLessEqual(set(answers), {"noError", "inconsistentName"})

        together = Together()
        for number in range(MANAGERS):
            together.add(work, number)
        together.run(self.read)

        row, = self.listed().values()
        self.assertEqual(row, numbered(1, row.port - 1000))

    def test_stock_tools_and_others_at_once(self):
        made = []

        def create_all(number):
            for index in range(1, 9):
                row = numbered(index, number)
                result = self.snmpset(self.agent, v3("admin"), *creation_of(row))
                if result.returncode == 0:
                    made.append(row)
                else:
                    self.assertIn("inconsistentValue", result.stderr)
                    self.assertIn(f"Failed object: {name(STATUS, index)}\n", result.stderr)

        def create_and_delete():
            with Manager(self.agent.port) as manager:
                for index in range(100, 200):
                    self.assertEqual(manager.set(*creation_of(numbered(index, 9))).error, "noError")
                    self.assertEqual(manager.set(*destroy(index)).error, "noError")

        together = Together()
        for number in (1, 2, 3):
            together.add(create_all, number)
        together.add(create_and_delete)
        together.run(self.read)

        made.sort(key=lambda row: row.index)
        self.assertEqual([row.index for row in made], list(range(1, 9)))
        self.assertEqual(self.traps(self.agent), walk_of(*made))


if __name__ == "__main__":
    unittest.main()
