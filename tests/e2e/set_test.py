"""The topology table is read-only, whoever writes."""

import unittest

from talvik_e2e import ENTRY, OPERATOR, READER, WRITER, TalvikTest, private_mib, v3


class Set(TalvikTest):
    def setUp(self):
        self.agent = self.start_agent()

    def refusal(self, user, *assignment):
        result = self.tool("snmpset", self.agent, user, *assignment)
        self.assertEqual(result.returncode, 2, result.stdout + result.stderr)
        return result.stderr

    def test_is_refused_with_not_writable_for_users_who_may_write(self):
        for user in (WRITER, v3("admin")):
            for column, kind, value in ((1, "s", "mine"), (3, "i", "5"), (8, "i", "2")):
                with self.subTest(user=user[0], column=column):
                    self.assertIn("notWritable", self.refusal(user, f"{ENTRY}.{column}.1", kind, value))
        self.assertEqual(self.walk(self.agent), private_mib())

    def test_makes_no_rows(self):
        self.assertIn("notWritable", self.refusal(WRITER, f"{ENTRY}.8.2", "i", "1"))
        self.assertEqual(self.walk(self.agent), private_mib())

    def test_is_refused_with_no_access_for_users_who_may_only_read(self):
        for user in (READER, OPERATOR):
            with self.subTest(user=user[0]):
                self.assertIn("noAccess", self.refusal(user, f"{ENTRY}.8.1", "i", "2"))


if __name__ == "__main__":
    unittest.main()
