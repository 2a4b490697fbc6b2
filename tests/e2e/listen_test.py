"""Where the agent listens, and what it does when it is told to end."""

import signal
import socket
import unittest

from talvik_e2e import CONFIG, TABLE, Agent, TalvikTest, free_port, topology


class Listen(TalvikTest):
    def test_two_agents_on_one_port(self):
        agent = self.start_agent()
        endpoint = f"udp:127.0.0.1:{agent.port}"
        self.assert_refuses_to_start(endpoint, "cannot listen", "another agent", listen=endpoint,
                                     state_dir=self.folder / "other-state")
        self.assertEqual(self.walk(agent, start=TABLE), topology())

    def test_endpoints_that_make_no_sense(self):
        for endpoint in ("udp:127.0.0.1:99999", "pigeon:127.0.0.1:1161", "udp:not.a.host.invalid:1161"):
            with self.subTest(endpoint=endpoint):
                self.assert_refuses_to_start(endpoint, "cannot listen", listen=endpoint)

    def test_a_socket_path_that_is_too_long(self):
        path = self.folder / ("s" * 108)
        self.assert_refuses_to_start("the socket for talvikctl", str(path), "at most 107", "--socket", socket=path)

    def test_several_endpoints(self):
        ports = [free_port(), free_port()]
        arguments = self.arguments(ports[0]) + ["--listen", f"udp:127.0.0.1:{ports[1]}"]
        agent = self.keep(Agent(self.folder, ports[0], arguments))
        for agent.port in ports:
            self.assertEqual(self.walk(agent, start=TABLE), topology())

    def test_endpoint_of_the_configuration(self):
        port = free_port()
        config = self.write("address.conf", f"{CONFIG}agentAddress udp:127.0.0.1:{port}\n")
        agent = self.keep(Agent(self.folder, port, self.arguments(config=config)))
        self.assertEqual(self.walk(agent, start=TABLE), topology())

    def test_command_line_takes_precedence(self):
        unused = free_port()
        config = self.write("address.conf", f"{CONFIG}agentAddress udp:127.0.0.1:{unused}\n")
        agent = self.start_agent(config=config)
        self.assertEqual(self.walk(agent, start=TABLE), topology())
        with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as probe:
            probe.bind(("127.0.0.1", unused))

    def test_ends_on_request(self):
        for number in (signal.SIGTERM, signal.SIGINT):
            agent = self.start_agent()
            self.assertEqual(agent.stop(number), 0)
            self.assertTrue(agent.log().rstrip().endswith("ended"), agent.log())


if __name__ == "__main__":
    unittest.main()
