"""The active alarms while the back end is away, hangs, is slow or talks nonsense: genErr, and all else goes on."""

import signal
import unittest

from alarm_table import ALARM_ENTRY, ALARMS, CLEAR_LEAF, DETAIL, SERIAL, AlarmTableTest, clearing, name
from backend_wire import HEADER, BackendClient, number
from fake_backend import ALARM_RECORD, END, FakeBackend, alarm, package
from notifications import DISK_FAILED, disk
from snmp_wire import NO_SUCH_INSTANCE
from talvik_e2e import EVERYTHING, OPERATOR, READER, TABLE, V1, WRITER, topology, wait_until

SYSTEM_DESCRIPTION = ".1.3.6.1.2.1.1.1.0"
TIMEOUT = 300  # milliseconds
UNKNOWN_ALARM = 1
RECORD_LENGTH_AT = 8  # in a record


class AlarmBackend(AlarmTableTest):
    def setUp(self):
        super().setUp()
        self.path = self.folder / "backend.sock"

    def start_agent_at(self, path):
        agent = self.start(backend=f"unix:{path}", backend_timeout=TIMEOUT)
        self.reader = self.manager(agent, "reader")
        return agent

    def fake(self, answer=None, hangs=False):
        fake = FakeBackend(self.path, answer, hangs)
        self.addCleanup(fake.close)
        return fake

    def error_of_table(self):
        return self.reader.get_next(ALARMS).error

    def assert_table_fails(self, agent):
        """Whoever asks for an alarm is told genErr, by each operation."""
        for answer in (self.reader.get(name(SERIAL, 1)), self.reader.get_next(name(SERIAL, 1)),
                       self.reader.get_bulk(50, f"{ALARM_ENTRY}.{SERIAL}")):
            self.assertEqual((answer.error, answer.position), ("genErr", 1))
        for tool, user in (("snmpwalk", READER), ("snmpbulkwalk", READER), ("snmpwalk", OPERATOR), ("snmpwalk", V1)):
            self.assertIn("(genError)", self.tool(tool, agent, user, ALARMS).stderr)

    def assert_others_go_on(self, agent, status):
        wait_until(lambda: self.walk(agent, start=TABLE) == topology(status), f"status {status}")
        self.assertEqual(self.lines("snmpbulkwalk", agent, READER, TABLE), topology(status))
        self.assertEqual(self.lines("snmpget", agent, EVERYTHING, SYSTEM_DESCRIPTION),
                         [f'{SYSTEM_DESCRIPTION} = STRING: "end-to-end test"'])
        self.assertEqual(self.lines("snmpget", agent, READER, CLEAR_LEAF), [f"{CLEAR_LEAF} = Gauge32: 0"])

    def assert_works_again(self, agent):
        """A back end takes the place of what was there before, and the agent goes on with it."""
        self.start_backend(self.path)
        with BackendClient(self.path) as client:
            serials = list(client.raise_many(DISK_FAILED, [disk(number) for number in range(60)]))
        wait_until(lambda: self.error_of_table() == "noError", "the table")
        self.wait_for_serials(self.reader, serials, "all alarms")
        self.assert_others_go_on(agent, 1)
        self.assertTrue(agent.is_alive())

    def refusal_of_clear(self, agent, user):
        return self.snmpset(agent, user, clearing(1)).stderr

    def test_away(self):
        agent = self.start_agent_at(self.path)
        self.assert_table_fails(agent)
        self.assert_others_go_on(agent, 2)
        self.assertIn("resourceUnavailable", self.refusal_of_clear(agent, WRITER))
        self.assertIn("(genError)", self.refusal_of_clear(agent, ["-v1", "-c", "writer"]))
        self.assertIn("the back end cannot be reached", agent.log())
        self.assert_works_again(agent)

    def test_killed_and_started_again(self):
        agent = self.start_apart(backend_timeout=TIMEOUT)
        self.reader, self.path = self.manager(agent, "reader"), self.apart
        client = self.alarm_client()
        serials = list(client.raise_many(DISK_FAILED, [disk(number) for number in range(60)]))
        self.wait_for_serials(self.reader, serials, "what was raised")
        self.backend.kill()
        wait_until(lambda: self.error_of_table() == "genErr", "the rows that are kept too old")
        self.assert_table_fails(agent)
        self.assert_others_go_on(agent, 2)
        self.backend = self.start_backend(self.path)
        wait_until(lambda: self.error_of_table() == "noError", "the table")
        self.wait_for_serials(self.reader, serials, "all alarms")

    def test_stopped_and_continued(self):
        agent = self.start_apart(backend_timeout=TIMEOUT)
        self.reader = self.manager(agent, "reader")
        serial = self.alarm_client().raise_alarm(DISK_FAILED, disk(7))
        self.wait_for_serials(self.reader, [serial], "what was raised")
        self.backend.send(signal.SIGSTOP)
        wait_until(lambda: self.error_of_table() == "genErr", "the rows that are kept too old")
        self.assert_table_fails(agent)
        self.assert_others_go_on(agent, 2)
        self.backend.send(signal.SIGCONT)
        wait_until(lambda: self.error_of_table() == "noError", "the table")
        self.assertEqual(self.serials(self.reader), [serial])

    def test_hanging(self):
        fake = self.fake(hangs=True)
        agent = self.start_agent_at(self.path)
        self.assertEqual(self.error_of_table(), "genErr")  # after the limit, or there would be no answer
        self.assert_table_fails(agent)
        self.assert_others_go_on(agent, 2)
        self.assertIn("resourceUnavailable", self.refusal_of_clear(agent, WRITER))
        self.assertIn("does not answer in time; what was asked for may have been done", agent.log())
        fake.close()
        self.assert_works_again(agent)

    def test_slow(self):
        asked = []

        def answer(exchange, after, at_most):
            """One row at a time, each after a third of the limit, though any number is asked for."""
            asked.append(at_most)
            fake.closed.wait(TIMEOUT / 3000)
            return package(exchange, alarm(after + 1)) if after < 1000 else package(exchange, END)

        fake = self.fake(answer)
        agent = self.start_agent_at(self.path)
        for serial in (1, 2, 300, 1000):
            self.assertEqual(self.reader.get(name(SERIAL, serial)).bindings[0].value, serial)
            self.assertEqual(self.reader.get_next(name(SERIAL, serial - 1)).bindings[0].value, serial)
        self.assertEqual(self.reader.get_bulk(50, name(SERIAL, 500)).error, "genErr")
        self.assertLess(len(asked), 20)
        self.assertIn(f"longer than {TIMEOUT} ms", agent.log())
        self.assert_others_go_on(agent, 1)
        fake.close()
        self.assert_works_again(agent)

    def check_nonsense(self, answer):
        """The table fails for what the back end says of alarms, as often as it is asked."""
        fake = self.fake(answer)
        agent = self.start_agent_at(self.path)
        for _ in range(2):
            self.assert_table_fails(agent)
            self.assert_others_go_on(agent, 1)
        fake.close()
        self.assert_works_again(agent)

    def test_octets_that_are_no_package(self):
        self.check_nonsense(lambda exchange, after, at_most: bytes(range(7, 107)))

    def test_a_package_that_is_no_reply(self):
        self.check_nonsense(lambda exchange, after, at_most: package(exchange, END, kind=1))

    def test_the_reply_to_another_request(self):
        self.check_nonsense(lambda exchange, after, at_most: package(exchange + 1, alarm(1), END))

    def test_a_record_that_is_longer_than_the_reply(self):
        def answer(exchange, after, at_most):
            octets = bytearray(package(exchange, alarm(1), END))
            octets[HEADER.size + RECORD_LENGTH_AT] += 100
            return bytes(octets)

        self.check_nonsense(answer)

    def test_a_result_that_nobody_knows(self):
        self.check_nonsense(lambda exchange, after, at_most: package(exchange, result=77))

    def test_nothing_at_all_is_the_end(self):
        for records in ((), ((ALARM_RECORD, b""), (ALARM_RECORD, b""))):
            with self.subTest(records=records):
                fake = self.fake(lambda exchange, after, at_most: package(exchange, *records))
                agent = self.start_agent_at(self.path)
                self.assertEqual(self.serials(self.reader), [])
                self.assertEqual(self.reader.get(name(SERIAL, 1)).bindings[0].tag, NO_SUCH_INSTANCE)
                self.assert_others_go_on(agent, 1)
                agent.stop()
                fake.close()

    def test_alarms_without_their_serial_number(self):
        record = ALARM_RECORD, number(1, DISK_FAILED, 8)
        self.check_nonsense(lambda exchange, after, at_most: package(exchange, record, END))

    def test_alarms_that_do_not_ascend(self):
        records = [alarm(serial) for serial in (1, 5, 3, 7)]
        fake = self.fake(lambda exchange, after, at_most: package(exchange, *records, END))
        agent = self.start_agent_at(self.path)
        for tool, user in (("snmpwalk", READER), ("snmpbulkwalk", READER), ("snmpwalk", V1)):
            self.assertIn("(genError)", self.tool(tool, agent, user, ALARMS).stderr)
            self.assert_others_go_on(agent, 1)
        self.assertEqual(self.reader.get_next(name(SERIAL, 6)).error, "genErr")
        fake.close()
        self.assert_works_again(agent)

    def test_the_same_alarm_again_and_again(self):
        self.check_nonsense(lambda exchange, after, at_most: package(exchange, *[alarm(1, UNKNOWN_ALARM)] * at_most)
                            if after < 1 else package(exchange, *[alarm(after)] * at_most))

    def test_alarms_without_an_end_that_make_no_row(self):
        self.check_nonsense(lambda exchange, after, at_most: package(
            exchange, *[alarm(after + step, UNKNOWN_ALARM) for step in range(1, at_most + 1)]))

    def test_more_than_was_asked_for(self):
        fake = self.fake(lambda exchange, after, at_most: package(
            exchange, *[alarm(serial) for serial in range(after + 1, 201)], END))
        agent = self.start_agent_at(self.path)
        self.assertEqual(self.serials(self.reader), list(range(1, 201)))
        self.assertEqual(self.reader.get(name(SERIAL, 200)).bindings[0].value, 200)
        self.assertEqual(self.reader.get(name(SERIAL, 201)).bindings[0].tag, NO_SUCH_INSTANCE)
        self.assert_others_go_on(agent, 1)
        fake.close()
        self.assert_works_again(agent)

    def test_clears_and_alarms_without_a_definition_make_no_row(self):
        def answer(exchange, after, at_most):
            kinds = {2: {"kind": 8}, 3: {"alarm_id": UNKNOWN_ALARM}, 5: {"alarm_id": 507010007}}
            rows = [alarm(serial, **kinds.get(serial, {})) for serial in range(after + 1, 8)][:at_most]
            return package(exchange, *rows, *([] if len(rows) == at_most else [END]))

        self.fake(answer)
        self.start_agent_at(self.path)
        self.assertEqual(self.serials(self.reader), [1, 4, 6, 7])
        self.assertEqual([self.reader.get(name(SERIAL, serial)).bindings[0].tag == NO_SUCH_INSTANCE
                          for serial in range(1, 9)], [False, True, True, False, True, False, False, True])
        behind = {serial: self.reader.get_next(name(SERIAL, serial)).bindings[0].name for serial in range(8)}
        shown = [1, 4, 4, 4, 6, 6, 7]
        self.assertEqual(behind, {**{serial: name(SERIAL, next_) for serial, next_ in enumerate(shown)},
                                  7: name(DETAIL, 1)})


if __name__ == "__main__":
    unittest.main()
