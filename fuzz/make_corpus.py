#!/usr/bin/env python3
"""Writes the seeds of the decode target into corpus/decode/: one file a rule of the wire format, named after it."""

import pathlib
import struct

CORPUS = pathlib.Path(__file__).parent / "corpus" / "decode"


def header(data_len, magic=0x55555555, version=3):
    return struct.pack("<IIIIHHHHI", magic, version, 0, 0xFFFFFFFF, 0xFFFD, 1, 0xFFFF, 0xFFFF, data_len)


def package(records):
    return header(len(records)) + records


def cell(kind, tag, value, length=None):
    return struct.pack("<HH", tag << 4 | kind, len(value) if length is None else length) + value


def record(identifier, cells, length=None):
    return struct.pack("<QH", identifier, len(cells) if length is None else length) + cells


def wrapping(length, last, jump, identifier=0):
    """A record whose first cell reaches to `last`, where a cell begins whose length field says `jump`."""
    data = bytearray(65546)
    data[0:14] = struct.pack("<QHHH", identifier, length, 0x11, last - 14)
    field = (last + 2) % 65536
    data[field:field + 2] = struct.pack("<H", jump)
    return bytes(data)


def three_wraps():
    data = bytearray(wrapping(65525, 65532, 0x64, identifier=65533))
    data[65532:65537] = bytes([0x10, 0, 0x64, 0, 0x01])
    data[0x64:0x68] = struct.pack("<HH", 0x21, 65533 - 0x68)
    data[0x101:0x105] = struct.pack("<HH", 0x31, 65534 - 0x105)
    # What follows the record is read as the next one: its length field must not lie.
    return bytes(data[:65535]) + bytes(data[65535:65537]) + b"\0" * 8


def mixed_record(identifier):
    sizes = [4, 12, 4, 8, 24, 4, 40, 4, 80, 8, 160, 4]
    return record(identifier, b"".join(
        cell(3 if size < 9 else 2, tag, b"a" * (size - 1) + b"\0") for tag, size in enumerate(sizes, 1)))


SEEDS = {
    "no-byte": b"",
    "header-one-byte-short": header(0)[:27],
    "header-only": header(0),
    "header-wrong-magic": header(0, magic=0x55555554),
    "header-wrong-version": header(0, version=4),
    "header-announces-more-than-there": header(11) + b"\0" * 10,
    "header-announced-size-wraps": header(0xFFFFFFE4) + b"\0" * 10,
    "remainder-of-five-bytes": header(5) + b"\0" * 5,
    "record-without-cells": package(record(1, b"")),
    "record-longer-than-buffer": package(record(1, b"\0" * 5, length=6)),
    "two-mixed-records": package(mixed_record(1) + mixed_record(2)),
    "all-types": package(record(1, b"".join(cell(kind, kind, b"x" * kind) for kind in range(10)))),
    "same-tag-twice": package(record(1, cell(2, 6, b"one\0") + cell(2, 6, b"two\0"))),
    "more-cells-than-buckets": package(record(1, b"".join(cell(1, tag, b"") for tag in range(70)))),
    "type-ten": package(record(1, cell(10, 1, b"ab"))),
    "type-ten-at-record-end": package(record(1, cell(2, 1, b"a") + b"\x1a\0") + record(2, b"")),
    "length-too-long": package(record(1, cell(2, 1, b"ab", length=3))),
    "length-too-long-at-record-end": package(record(1, cell(2, 1, b"a") + cell(2, 2, b"", length=9))),
    "three-bytes-of-a-cell": package(record(1, b"\0" * 3)),
    "cell-header-across-record-end": package(record(1, b"\0" * 2) + record(2, b"")),
    "good-then-refused": package(mixed_record(1) + record(2, cell(15, 1, b""))),
    "record-length-65525": package(record(1, cell(1, 1, b"\0" * 65521))),
    "record-length-65526": package(record(1, cell(1, 1, b"\0" * 65522))),
    "endless-65523": package(wrapping(65523, 65532, 10)),
    "endless-65524": package(wrapping(65524, 65533, 9)),
    "endless-65525": package(wrapping(65525, 65534, 8, identifier=8)),
    "endless-65525-to-itself": package(wrapping(65525, 65532, 65532)),
    "wrapped-and-accepted": package(wrapping(65523, 65532, 65533)[:65536] + b"\0" * 7),
    "wrapped-through-record-header": package(
        wrapping(65523, 65532, 0, identifier=65529 << 16 | 0x71)[:65536] + b"\0" * 7),
    "wrapped-three-times-and-accepted": package(three_wraps()),
}


def main():
    CORPUS.mkdir(parents=True, exist_ok=True)
    for name, data in SEEDS.items():
        (CORPUS / name).write_bytes(data)


if __name__ == "__main__":
    main()
