"""talvikctl package dump prints what agent and back end say to each other."""

import json
import os
import socket
import struct
import subprocess
import unittest

from talvik_e2e import BIN, LIMIT, SOURCE, TalvikTest

DEVICE = str(SOURCE / "etc" / "talvik-device.xml")
ALARM_RECORD = 0xD00C900B6


def package(records, kind=1, exchange=7, word3=0xFFFFFFFF):
    return struct.pack("<4L4HL", 0x55555555, 3, exchange, word3, 0xFFFD, kind, 0xFFFF, 0xFFFF, len(records)) + records


def record(identifier, *cells):
    body = b"".join(struct.pack("<HH", tag << 4 | kind, len(value)) + value for tag, kind, value in cells)
    return struct.pack("<QH", identifier, len(body)) + body


CLEAR = package(record(4003, (3, 3, struct.pack("<L", 17)), (7, 2, b"SNMP_AGENT\0")))
NOTIFICATION = package(record(ALARM_RECORD, (0, 3, b"\x01"), (1, 3, struct.pack("<Q", 2 ** 63)), (8, 2, b"a\x1b\0")), 3, 1)
REFUSED = package(b"", 2, 8, 0x1000014)


class CtlPackage(TalvikTest):
    def dump(self, content, *words, status=0):
        """Dumps from standard input; returns standard output and error."""
        done = subprocess.run([str(BIN / "talvikctl"), "package", "dump", "--device", DEVICE, *words],
                              env=dict(os.environ, LC_ALL="C"), input=content, capture_output=True, timeout=LIMIT)
        self.assertEqual(done.returncode, status, done.stdout + done.stderr)
        return done.stdout.decode(), done.stderr.decode()

    def json(self, content, *words, status=0):
        return [json.loads(line) for line in self.dump(content, "--json", *words, status=status)[0].splitlines()]

    def test_prints_field_by_field(self):
        out, error = self.dump(CLEAR)
        self.assertEqual(error, "")
        for line in ("package 1 at offset 0", "  uiWord2    7 (0x7)                  exchange number",
                     "  usShort1   1 (0x1)                  kind: request",
                     "  record 1 at offset 28: identifier 4003 (0xFA3, CLEAR_ALARM), 23 bytes of cells",
                     "    38      3    serial number  3 unsigned  4       17",
                     '    46      7    requester      2 text      11      "SNMP_AGENT"', "  61 bytes, accepted"):
            self.assertIn(line + "\n", out)

    def test_reads_packages_back_to_back(self):
        first, second, third = self.json(CLEAR + REFUSED + NOTIFICATION)
        self.assertEqual([each["offset"] for each in (first, second, third)], [0, 61, 89])
        self.assertEqual([each["header"]["kind"] for each in (first, second, third)], ["request", "reply", "notification"])
        self.assertEqual(first["records"][0]["cells"][0],
                         {"offset": 38, "tag": 3, "name": "serial number", "type": 3, "typeName": "unsigned", "length": 4,
                          "hex": "11000000", "number": "17", "text": None})
        self.assertEqual([(cell["name"], cell["number"], cell["text"]) for cell in third["records"][0]["cells"]],
                         [("kind", "1", None), ("alarm id", str(2 ** 63), None), ("parameters", None, "a\x1b")])
        out, _ = self.dump(CLEAR + REFUSED + NOTIFICATION)
        self.assertIn("result code: no alarm with that serial number is active", out)
        self.assertNotIn("\x1b", out)

    def test_reads_hexadecimal_text_and_files(self):
        plain = self.json(CLEAR)
        text = CLEAR.hex()
        wrapped = "\n".join(text[at:at + 60] for at in range(0, len(text), 60)) + "\n"
        for name, content in (("wrapped", wrapped), ("spaced", CLEAR.hex(" ")), ("c", ", ".join(f"0x{b:02X}" for b in CLEAR))):
            with self.subTest(form=name):
                self.assertEqual(self.json(content.encode()), plain)
                self.assertEqual(self.json(b"", str(self.write(f"{name}.txt", content))), plain)
        file = self.folder / "capture.bin"
        file.write_bytes(CLEAR)
        self.assertEqual(self.json(b"", str(file)), plain)
        self.assertIn("line 1, column 1", self.dump(b"not hex", status=1)[1])

    def test_says_where_and_why_it_cannot_read_on(self):
        for name, content, offset, said in (
                ("cut", CLEAR[:50], 24, "announces 33 bytes of records, but the capture has only 22"),
                ("rubbish", b"\0\1\2\3" + CLEAR, 0, "no package begins here: the magic is 0x03020100"),
                ("header", CLEAR + CLEAR[:10], 71, "ends within the header")):
            with self.subTest(case=name):
                faults = [fault for each in self.json(content, status=1) for fault in each["faults"]]
                self.assertEqual([fault["offset"] for fault in faults], [offset])
                self.assertIn(said, faults[0]["reason"])
                self.assertIn(f"fault: offset {offset}: ", self.dump(content, status=1)[0])
        broken = bytearray(CLEAR)
        broken[46] |= 0xF  # type 15
        self.assertEqual(self.json(bytes(broken), status=1)[0]["records"][0]["fault"],
                         {"offset": 46, "reason": "cell with tag 7: type 15 is unknown, the largest is 9"})

    def test_says_why_in_json_too(self):
        self.assertEqual(self.dump(b"", status=1), ("", "talvikctl: standard input is empty: there is nothing in it; capture "
                                                    "again, and look whether what makes the capture reports an error\n"))
        for content, words, reason, packages in (
                (b"", [], "standard input is empty: there is nothing in it", 0),
                (b"\n", [], "standard input is empty: there is nothing in it", 0),
                (CLEAR.hex().encode() + b"\n0g", [], "standard input, line 2, column 1: expected two hexadecimal digits for a byte", 1),
                (b"", [str(self.write("empty.bin", ""))], f"{self.folder}/empty.bin is empty: there is nothing in it", 0)):
            with self.subTest(content=content, words=words):
                out, error = self.dump(content, "--json", *words, status=1)
                *before, last = map(json.loads, out.splitlines())
                self.assertEqual((len(before), error), (packages, ""))
                self.assertEqual((sorted(last), last["reason"]), (["advice", "reason"], reason))

    def test_reads_what_other_programs_make_of_it(self):
        file = self.folder / "capture.bin"
        file.write_bytes(CLEAR + REFUSED)
        plain = self.json(CLEAR + REFUSED)
        for words in ("od -v -A x -t x1", "od -v -t x1", "od -v -A d -t x1z", "od -v -A n -t x1"):
            with self.subTest(program=words):
                self.assertEqual(self.json(subprocess.check_output([*words.split(), str(file)])), plain)
        words = subprocess.check_output(["od", "-v", "-x", str(file)])
        self.assertIn("the order of their bytes is unknown", self.dump(words, status=1)[1])

    def test_does_not_take_what_it_cannot_use(self):
        for words in ([str(self.folder / "none")], [str(self.folder)], ["--format", "octal"]):
            self.assertEqual(self.dump(b"", *words, status=2)[0], "")
        large = self.folder / "large.bin"
        with open(large, "wb") as file:
            file.truncate((64 << 20) + 1)
        self.assertIn("larger than 64 MiB", self.dump(b"", str(large), status=2)[1])

    def test_reads_what_a_back_end_really_answers(self):
        self.start_backend(self.folder / "backend.sock")
        with socket.socket(socket.AF_UNIX) as connection:
            connection.settimeout(LIMIT)
            connection.connect(str(self.folder / "backend.sock"))
            connection.sendall(package(record(4001)))
            answer = connection.recv(65536)
        reply = self.json(answer)[0]
        self.assertEqual((reply["header"]["kind"], reply["header"]["uiWord3"]), ("reply", 0))
        self.assertEqual(reply["records"][0]["name"], "GET_SYSTEM_WWN")
        self.assertEqual(reply["records"][0]["cells"][0]["text"], "2100a1b2c3d4e5f6")


if __name__ == "__main__":
    unittest.main()
