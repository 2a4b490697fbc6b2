"""Datagrams that are no SNMP, or broken SNMP: the agent drops them and goes on."""

import random
import socket
import unittest

from talvik_e2e import ENTRY, TABLE, TalvikTest, topology



def request():
    """A GETNEXT of v2c for 1.3.6.1.4.1.99999 as octets."""
    def tlv(tag, content):
        return bytes([tag, len(content)]) + content

    name = tlv(0x06, bytes([0x2B, 6, 1, 4, 1, 0x86, 0x8D, 0x1F]))
    bindings = tlv(0x30, tlv(0x30, name + tlv(0x05, b"")))
    pdu = tlv(0xA1, tlv(0x02, b"\1\2\3\4") + tlv(0x02, b"\0") + tlv(0x02, b"\0") + bindings)
    return tlv(0x30, tlv(0x02, b"\1") + tlv(0x04, b"reader") + pdu)


class HostileDatagrams(TalvikTest):
    def send(self, agent, datagrams):
        with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as sender:
            sender.connect(("127.0.0.1", agent.port))
            for datagram in datagrams:
                sender.send(datagram)

    def test_are_dropped(self):
        agent = self.start_agent()
        whole = request()
        chance = random.Random(20)  # the same datagrams in every run
        noise = [chance.randbytes(chance.randrange(1, 1400)) for _ in range(200)]
        truncated = [whole[:length] for length in range(len(whole))]
        flipped = []
        for position in range(len(whole)):
            for value in (0x00, 0x7F, 0x80, 0xFF, whole[position] ^ 1):
                flipped.append(whole[:position] + bytes([value]) + whole[position + 1:])
        long = [b"\x30" * 60000, b"\x30\x84\xff\xff\xff\xff" + b"\0" * 1000, whole + b"\0" * 50000]
        for datagrams in (noise, truncated, flipped, long):
            self.send(agent, datagrams)
            self.assertEqual(self.walk(agent, start=TABLE), topology())
        self.assertEqual(agent.stop(), 0)

    def test_the_request_that_they_are_made_from_is_answered(self):
        agent = self.start_agent()
        with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as client:
            client.settimeout(10)
            client.connect(("127.0.0.1", agent.port))
            client.send(request())
            self.assertIn(b"TALVIK-0001", client.recv(65536))

    def test_object_identifiers_of_every_length_are_answered(self):
        agent = self.start_agent()
        for length in (1, 2, 20, 100, 112):
            result = self.tool("snmpgetnext", agent, ["-v2c", "-c", "reader"], ENTRY + ".8" + ".1" * length)
            self.assertEqual(result.returncode, 0, result.stderr)
        self.assertTrue(agent.is_alive())


if __name__ == "__main__":
    unittest.main()
