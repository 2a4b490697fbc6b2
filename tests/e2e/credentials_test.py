"""Who is let in, and who is not."""

import unittest

from talvik_e2e import AUTH, CONFIG, ENTRY, PRIV, TABLE, TalvikTest, private_mib, topology, v3

NAME = f"{ENTRY}.3.1"


class Credentials(TalvikTest):
    def refusal(self, agent, user):
        # Whoever may not ask gets no answer at all: don't wait for it long.
        result = self.tool("snmpget", agent, user + ["-t", "0.3", "-r", "0"], NAME)
        self.assertNotEqual(result.returncode, 0, result.stdout)
        self.assertEqual(result.stdout, "")
        return result.stderr

    def test_refuses_wrong_passphrases_and_unknown_users(self):
        agent = self.start_agent()
        self.assertIn("Authentication failure", self.refusal(agent, v3("operator", auth="not-the-passphrase")))
        self.refusal(agent, v3("operator", priv="not-the-passphrase"))
        self.assertIn("Unknown user name", self.refusal(agent, v3("stranger")))
        self.assertEqual(self.walk(agent, v3("operator")), private_mib())

    def test_refuses_unknown_communities(self):
        agent = self.start_agent()
        for version in ("-v1", "-v2c"):
            self.assertIn("Timeout", self.refusal(agent, [version, "-c", "public"]))

    def test_refuses_less_security_than_the_user_was_given(self):
        agent = self.start_agent()
        plain = ["-v3", "-u", "operator", "-l", "noAuthNoPriv"]
        unencrypted = ["-v3", "-u", "operator", "-l", "authNoPriv", "-a", "SHA-256", "-A", AUTH]
        for user in (plain, unencrypted):
            self.assertIn("authorizationError", self.refusal(agent, user))

    def test_takes_over_a_changed_passphrase_at_the_next_start(self):
        agent = self.start_agent()
        self.assertEqual(self.walk(agent, v3("operator"), TABLE), topology())
        self.assertEqual(agent.stop(), 0)
        self.write("talvik-agentd.conf", CONFIG.replace(AUTH, "changed-passphrase"))
        agent = self.start_agent()
        self.assertEqual(self.walk(agent, v3("operator", auth="changed-passphrase"), TABLE), topology())
        self.assertIn("Authentication failure", self.refusal(agent, v3("operator", auth=AUTH)))

    def test_writes_no_passphrase_to_log_or_state(self):
        agent = self.start_agent(log_level="trace")
        self.walk(agent, v3("operator"), TABLE)
        self.assertEqual(agent.stop(), 0)
        files = [agent.log_path] + [path for path in self.state.rglob("*") if path.is_file()]
        for path in files:
            for secret in (AUTH, PRIV):
                self.assertNotIn(secret.encode(), path.read_bytes(), path)


if __name__ == "__main__":
    unittest.main()
