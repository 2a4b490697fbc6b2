"""The SNMP engine's ID stays and its boots grow, whatever happens to the agent and its files."""

import unittest

from talvik_e2e import TABLE, TalvikTest, topology, v3


class EngineStateTest(TalvikTest):
    def setUp(self):
        self.first = self.state / "engine.json"
        self.second = self.state / "engine.bak.json"
        self.library = self.state / "net-snmp" / "talvik-agentd.conf"

    def boot(self, kill=False):
        """Starts the agent, asks for the engine and ends it again."""
        agent = self.start_agent()
        engine = self.engine(agent)
        self.assertEqual(self.walk(agent, v3("operator"), TABLE), topology())
        if kill:
            agent.kill()
        else:
            self.assertEqual(agent.stop(), 0)
        return engine

    def assert_goes_on(self, before, after):
        self.assertEqual(after[0], before[0])
        self.assertGreater(after[1], before[1])

    def test_new_engine_has_the_products_form(self):
        engine_id, boots = self.boot()
        self.assertRegex(engine_id, "^8001869f05[0-9a-f]{16}$")
        self.assertEqual(boots, 1)
        for path in (self.first, self.second):
            self.assertEqual(path.stat().st_mode & 0o777, 0o600)
        self.assertEqual(self.state.stat().st_mode & 0o777, 0o700)

    def test_two_controllers_differ(self):
        first = self.boot()
        self.state = self.folder / "other-state"
        self.assertNotEqual(self.boot()[0], first[0])

    def test_survives_restarts_and_kills(self):
        last = self.boot()
        for kill in (False, True, True, False, True):
            engine = self.boot(kill)
            self.assertEqual(engine, (last[0], last[1] + 1))
            last = engine

    def test_is_repaired_from_the_other_copy(self):
        last = self.boot()
        damages = (b"", b"{", b"\0" * 60, b'{"boots":1,"engineId":"80001f8804"}\n', b'{"boots":0}\n')
        for number, damage in enumerate(damages, 1):
            for path in (self.first, self.second):
                path.write_bytes(damage)
                engine = self.boot(kill=True)
                self.assert_goes_on(last, engine)
                last = engine
                set_aside = path.with_name(f"{path.name}.damaged-{number}")
                self.assertEqual(set_aside.read_bytes(), damage)
                self.assertEqual(self.first.read_text(), self.second.read_text())

    def test_is_restored_when_a_copy_is_missing(self):
        last = self.boot()
        for path in (self.first, self.second):
            path.unlink()
            engine = self.boot()
            self.assert_goes_on(last, engine)
            last = engine

    def test_the_higher_boots_win(self):
        engine_id, _ = self.boot()
        self.first.write_text(f'{{"boots":7,"engineId":"{engine_id}"}}\n')
        self.second.write_text(f'{{"boots":9,"engineId":"{engine_id}"}}\n')
        self.assertEqual(self.boot(), (engine_id, 10))

    def test_is_taken_from_the_librarys_file_when_both_copies_are_damaged(self):
        last = self.boot()
        self.first.write_text("garbage")
        self.second.write_text("")
        self.assert_goes_on(last, self.boot())

    def test_is_never_replaced_in_silence(self):
        self.boot()
        self.first.write_text("garbage")
        self.second.write_text("garbage")
        self.library.unlink()
        self.assert_refuses_to_start("engine's state is lost or damaged", self.first, self.second, "Restore")

    def test_is_not_made_anew_in_a_folder_that_was_in_use(self):
        self.boot()
        self.first.unlink()
        self.second.unlink()
        self.library.write_text("garbage")
        self.assert_refuses_to_start("engine's state is lost or damaged", self.first, self.second, "Restore")

    def test_an_old_copy_that_is_put_back_does_not_turn_the_boots_back(self):
        old = self.first.read_text() if self.boot() else ""
        self.boot()
        last = self.boot()
        self.first.write_text(old)
        self.second.unlink()
        self.assert_goes_on(last, self.boot())

    def test_survives_a_cut_while_the_library_stores(self):
        last = self.boot()
        whole = self.library.read_text()
        for cut in (0, 10, len(whole) // 2, whole.rindex("usmUser") + 5, len(whole) - 3):
            self.library.with_name("talvik-agentd.0.conf").write_text(whole)
            self.library.write_text(whole[:cut])
            engine = self.boot()
            self.assert_goes_on(last, engine)
            last = engine
            self.assertIn("usmUser", self.library.read_text())
            self.assertEqual(list(self.library.parent.glob("talvik-agentd.*.conf")), [])

    def test_boots_stop_at_their_ceiling(self):
        engine_id, _ = self.boot()
        for path in (self.first, self.second):
            path.write_text(f'{{"boots":2147483646,"engineId":"{engine_id}"}}\n')
        for _ in range(2):
            agent = self.start_agent()
            self.assertEqual(self.engine(agent), (engine_id, 2147483647))
            self.assertEqual(agent.stop(), 0)


if __name__ == "__main__":
    unittest.main()
