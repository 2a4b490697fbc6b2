"""Trap destinations outlive the agent; files that are damaged or not the agent's are never lost in silence."""

import os
import resource
import sqlite3
import unittest

from talvik_e2e import WRITER
from trap_table import TRAPS, Destination, TrapTest, change, create, creation_of, destinations_in, destroy, walk_of

ROWS = [Destination(1, "192.0.2.1", 1, 1, 1, "first"), Destination(7, "2001:db8::7", 7, 2, 7, "second one"),
        Destination(2147483647, "192.0.2.255", 65535, 3, 3, "--")]


class TrapDurability(TrapTest):
    def setUp(self):
        self.file = self.state / "trap-destinations.db"

    def fill(self, agent, rows=tuple(ROWS)):
        for row in rows:
            self.set(agent, *creation_of(row))

    def leave(self, kill=False):
        """The files that an agent with the rows leaves behind."""
        agent = self.start_agent()
        self.fill(agent)
        if kill:
            agent.kill()
        else:
            self.assertEqual(agent.stop(), 0)

    def test_every_field_survives_restarts_and_kills(self):
        self.leave()
        for kill in (False, True, True, False):
            agent = self.start_agent()
            self.assertEqual(self.traps(agent), walk_of(*ROWS))
            agent.kill() if kill else self.assertEqual(agent.stop(), 0)

    def test_changes_and_deletes_survive_a_kill(self):
        self.leave(kill=True)
        agent = self.start_agent()
        self.set(agent, *change(1, port=99, user="changed"))
        self.set(agent, *destroy(7))
        self.set(agent, *create(8))
        agent.kill()
        rows = [Destination(1, "192.0.2.1", 99, 1, 1, "changed"), Destination(8), ROWS[2]]
        self.assertEqual(self.traps(self.start_agent()), walk_of(*rows))

    def test_refusals_leave_nothing_behind(self):
        agent = self.start_agent()
        self.fill(agent)
        self.snmpset(agent, WRITER, *create(20, port=0))
        self.snmpset(agent, WRITER, *create(20), *create(21))
        self.snmpset(agent, WRITER, *create(20), (".1.3.6.1.2.1.1.1.0", "s", "x"))
        agent.kill()
        self.assertEqual(self.traps(self.start_agent()), walk_of(*ROWS))

    def test_file_is_for_the_agents_user_only(self):
        agent = self.start_agent()
        self.fill(agent)
        for path in self.state.glob("trap-destinations*"):
            self.assertEqual(path.stat().st_mode & 0o777, 0o600, path)

    def assert_starts_empty(self, damage):
        """The agent tells what was wrong and where the file is now, and works with an empty list."""
        agent = self.start_agent()
        errors = [line for line in agent.log().splitlines() if " error " in line]
        self.assertEqual(len(errors), 1, errors)
        aside, = [path for path in self.state.glob("trap-destinations.db.damaged-*")
                  if not path.name.endswith(("-wal", "-shm", "-journal"))]
        for text in (f"{self.file} ", f"{aside}"):
            self.assertIn(text, errors[0])
        self.assertEqual(aside.read_bytes(), damage)
        self.assertEqual(self.traps(agent), [])
        self.fill(agent, ROWS[:1])
        agent.kill()
        agent = self.start_agent()
        self.assertEqual(self.traps(agent), walk_of(ROWS[0]))
        agent.stop()
        return aside

    def test_a_damaged_file_is_kept_aside(self):
        self.leave()
        whole = self.file.read_bytes()
        page = 4096
        for damage in (b"garbage", b"\0" * len(whole), whole[:100], whole[:page], whole[:-page], whole[:-1],
                       b"X" * 16 + whole[16:], whole[:page] + os.urandom(page) + whole[2 * page:],
                       whole[:page] + b"\0" * page + whole[2 * page:]):
            with self.subTest(octets=len(damage), begins=damage[:8]):
                for path in self.state.glob("trap-destinations*"):
                    path.unlink()
                self.file.write_bytes(damage)
                self.assert_starts_empty(damage)

    def test_a_second_damaged_file_does_not_replace_the_first(self):
        self.leave()
        for damage in (b"first", b"second"):
            self.file.write_bytes(damage)
            self.start_agent().stop()
        kept = {path.read_bytes() for path in self.state.glob("trap-destinations.db.damaged-*")}
        self.assertLessEqual({b"first", b"second"}, kept)

    def test_another_programs_database_is_kept_aside(self):
        self.state.mkdir(mode=0o700)
        with sqlite3.connect(self.file) as database:
            database.execute("CREATE TABLE notes(text)")
        database.close()
        self.assert_starts_empty(self.file.read_bytes())

    def test_rows_that_cannot_be_are_damage(self):
        self.leave()
        with sqlite3.connect(self.file) as database:
            database.execute("PRAGMA ignore_check_constraints = ON")
            database.execute("UPDATE destination SET address = 'not an address'")
        database.close()
        self.assert_starts_empty(self.file.read_bytes())

    def test_a_file_cut_to_nothing_is_damaged(self):
        self.leave()
        self.file.write_bytes(b"")
        self.assert_starts_empty(b"")

    def test_the_log_of_a_killed_agent_may_be_cut_anywhere(self):
        self.leave(kill=True)
        log = self.file.with_name(self.file.name + "-wal")
        whole, file = log.read_bytes(), self.file.read_bytes()
        states = [walk_of(*ROWS[:count]) for count in range(len(ROWS) + 1)]
        for cut in [*range(0, len(whole), 1009), len(whole) - 1]:
            self.file.write_bytes(file)
            log.write_bytes(whole[:cut])
            agent = self.start_agent()
            self.assertIn(self.traps(agent), states, f"cut at {cut}")
            agent.kill()
            for path in self.state.glob("trap-destinations*"):
                path.unlink()

    def test_a_file_of_a_later_release_is_refused(self):
        self.leave()
        with sqlite3.connect(self.file) as database:
            database.execute("PRAGMA user_version = 4711")
        database.close()
        before = self.file.read_bytes()
        self.assert_refuses_to_start(self.file, "later release")
        self.assertEqual(self.file.read_bytes(), before)

    def test_a_file_that_cannot_be_used_is_refused(self):
        self.state.mkdir(mode=0o700)
        self.file.mkdir()
        self.assert_refuses_to_start(self.file)
        self.file.rmdir()
        self.file.symlink_to(self.folder / "elsewhere")
        self.assert_refuses_to_start(self.file)
        self.assertFalse((self.folder / "elsewhere").exists())

    def test_a_file_that_another_process_holds_is_refused(self):
        self.leave()
        holder = sqlite3.connect(self.file, isolation_level=None)
        holder.execute("BEGIN EXCLUSIVE")
        self.assert_refuses_to_start(self.file, "in use")
        holder.close()
        self.assertEqual(self.traps(self.start_agent()), walk_of(*ROWS))

    @unittest.skipIf(os.geteuid() == 0, "the superuser may read every file")
    def test_a_file_that_cannot_be_read_is_refused(self):
        self.leave()
        self.state.chmod(0o500)
        self.addCleanup(self.state.chmod, 0o700)
        self.assert_refuses_to_start(self.state)

    def test_a_second_agent_is_refused_and_harms_nothing(self):
        agent = self.start_agent()
        self.fill(agent)
        self.assert_refuses_to_start(self.state, "in use by another agent")
        self.set(agent, *destroy(1))
        agent.kill()
        self.assertEqual(self.traps(self.start_agent()), walk_of(*ROWS[1:]))

    def test_a_change_that_cannot_be_written_is_refused_with_commit_failed(self):
        agent = self.start_agent()
        self.fill(agent)
        _, hard = resource.prlimit(agent.process.pid, resource.RLIMIT_FSIZE)
        for limit in (0, 100, 40000):
            resource.prlimit(agent.process.pid, resource.RLIMIT_FSIZE, (limit, hard))
            with self.manager(agent) as manager:
                refused = self.refused_changes(manager)
            self.assertEqual(refused, {"commitFailed"})
            resource.prlimit(agent.process.pid, resource.RLIMIT_FSIZE, (hard, hard))
            self.assertTrue(agent.is_alive())
            self.set(agent, *destroy(1))
            self.fill(agent, ROWS[:1])
            self.assertEqual(self.traps(agent), walk_of(*ROWS))
        agent.kill()
        self.assertEqual(self.traps(self.start_agent()), walk_of(*ROWS))

    def refused_changes(self, manager):
        """Changes until one is refused and the table is as it was before, and tells what the refusals were."""
        before = destinations_in(manager.walk(TRAPS))
        errors = set()
        for port in range(1, 101):
            answer = manager.set(*change(1, port=port))
            if answer.error == "noError":
                before[1] = Destination(1, "192.0.2.1", port, 1, 1, "first")
            else:
                errors.add(answer.error)
                for variables in (create(50), destroy(7)):
                    errors.add(manager.set(*variables).error)
                break
        self.assertEqual(destinations_in(manager.walk(TRAPS)), before)
        manager.set(*change(1, port=1))
        return errors


if __name__ == "__main__":
    unittest.main()
