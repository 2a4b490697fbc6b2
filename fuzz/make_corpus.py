#!/usr/bin/env python3
"""Writes the seeds of the targets into corpus/TARGET/: one file a rule, named after it."""

import pathlib
import struct

CORPUS = pathlib.Path(__file__).parent / "corpus"


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


DECODE = {
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


# What the trap table target reads: properties/trap_table_property.h has the grammar.
QUERY, CREATE, MODIFY, DELETE = range(4)
UNREADABLE, NO_RECORD = 4, 8


def operation(what, *cells, word3=1):
    return bytes([what | len(cells) << 4, word3]) + b"".join(cells)


def column(tag, kind, value):
    return bytes([kind << 4 | tag, len(value)]) + value


def text(tag, value):
    return column(tag, 2, value + b"\0")


def number(tag, value, kind=3, width=4):
    return column(tag, kind, value.to_bytes(width, "little"))


ADDRESS, OTHER, REFUSED, UNREACHABLE = text(1, b"a"), text(1, b"b"), text(1, b"!"), text(1, b"?")
PORT = number(2, 162)
ASK = operation(QUERY)
MAKE = operation(CREATE, ADDRESS, PORT)

TRAP_TABLE = {
    "empty-list": ASK,
    "list-unreadable": MAKE + operation(QUERY | UNREADABLE) + operation(DELETE | UNREADABLE, ADDRESS, PORT),
    "no-record": b"".join(operation(kind | NO_RECORD) for kind in (QUERY, CREATE, MODIFY, DELETE)),
    "create-with-defaults": MAKE + ASK,
    "create-every-column": operation(
        CREATE, ADDRESS, PORT, number(3, 1), text(4, b"7"), number(5, 3), text(6, b"c"), number(7, 7),
        text(8, b"u")) + ASK,
    "create-without-a-port": operation(CREATE, ADDRESS),
    "create-without-an-address": operation(CREATE, PORT),
    "create-tag-six-alone": operation(CREATE, PORT, text(6, b"c")) + ASK,
    "create-tag-six-refused": operation(CREATE, PORT, text(6, b"!")) + ASK,
    "create-tag-six-refused-beside-tag-one": operation(CREATE, ADDRESS, PORT, text(6, b"!")) + ASK,
    "create-tag-one-refused-beside-tag-six": operation(CREATE, REFUSED, PORT, text(6, b"c")) + ASK,
    "create-version-refused": operation(CREATE, ADDRESS, PORT, number(5, 9)),
    "create-type-refused": operation(CREATE, ADDRESS, PORT, number(7, 9)),
    "create-user-refused": operation(CREATE, ADDRESS, PORT, text(8, b"too long")) + ASK,
    "create-user-number": operation(CREATE, ADDRESS, PORT, number(8, 42)) + ASK,
    "create-port-refused": operation(CREATE, ADDRESS, number(2, 0)),
    "create-signed-short-port": operation(CREATE, ADDRESS, number(2, 0xFFFE, kind=4, width=2)),
    "create-wide-port": operation(CREATE, ADDRESS, number(2, 162, width=8)) + ASK,
    "create-text-for-a-port": operation(CREATE, ADDRESS, text(2, b"162")),
    "create-number-for-an-address": operation(CREATE, number(1, 1), PORT),
    "create-number-for-tag-six": operation(CREATE, ADDRESS, PORT, number(6, 1)),
    "create-same-tag-twice": operation(CREATE, ADDRESS, OTHER, PORT) + ASK,
    "create-taken-index": MAKE + MAKE + ASK,
    "create-full-list": b"".join(operation(CREATE, ADDRESS, PORT, word3=i) for i in range(10)) + ASK,
    "unreachable": operation(CREATE, UNREACHABLE, PORT) + ASK,
    "modify-whole-row": operation(CREATE, ADDRESS, PORT, number(5, 3), number(7, 7), text(8, b"u"))
    + operation(MODIFY, OTHER, PORT, text(4, b"1")) + ASK,
    "modify-without-an-index": MAKE + operation(MODIFY, OTHER, PORT) + ASK,
    "modify-index-refused": MAKE + operation(MODIFY, OTHER, PORT, text(4, b"x")) + ASK,
    "modify-index-unknown": MAKE + operation(MODIFY, OTHER, PORT, text(4, b"9")) + ASK,
    "modify-number-for-an-index": MAKE + operation(MODIFY, OTHER, PORT, number(4, 1)),
    "delete-by-address": MAKE + operation(DELETE, ADDRESS, PORT) + ASK,
    "delete-by-address-before-index": MAKE + operation(CREATE, OTHER, PORT, word3=2)
    + operation(DELETE, ADDRESS, PORT, text(4, b"2")) + ASK,
    "delete-first-of-two": operation(CREATE, ADDRESS, PORT, word3=5) + MAKE + operation(DELETE, ADDRESS, PORT) + ASK,
    "delete-by-index": MAKE + operation(DELETE, text(4, b"1")) + ASK,
    "delete-by-index-without-a-match": MAKE + operation(DELETE, OTHER, PORT, text(4, b"1")) + ASK,
    "delete-index-refused": MAKE + operation(DELETE, text(4, b"x")) + ASK,
    "delete-without-a-match": MAKE + operation(DELETE, OTHER, PORT) + ASK,
    "delete-address-alone": MAKE + operation(DELETE, ADDRESS) + ASK,
    "delete-longer-address": MAKE + operation(DELETE, text(1, b"ab"), PORT) + ASK,
    "ends-within-an-operation": MAKE + operation(DELETE, ADDRESS, PORT)[:-1],
}


# What the alarm text target reads: the detail, then the parameters, then another text.
def alarm_text(detail, parameters=b"", location=b""):
    return b"\0".join([detail, parameters, location])


ALARM_TEXT = {
    "nothing": b"",
    "plain": alarm_text(b"plain", b"a,b", b"plain"),
    "no-parameters": alarm_text(b"##00 {a}", b"", b"##00 ##"),
    "two-digits": alarm_text(b"Disk ##00 at ##01.", b"D3,E1", b"##01-##00"),
    "one-digit-and-a-letter": alarm_text(b"##1x ##9x", b"a,b", b"##1"),
    "no-digits": alarm_text(b"##ab## ", b"a,b", b"##-0##- "),
    "signs-and-blanks": alarm_text(b"##+1##-1## 1", b"a,b", b"##+1##-1## 1##\t1"),
    "three-and-four-marks": alarm_text(b"###00####01", b"a,b", b"#####01"),
    "mark-at-the-end": alarm_text(b"##01 ##", b"a,b", b"x##"),
    "beyond-the-list": alarm_text(b"##03 ##05", b"a,b,c", b"##03 ##05 ##99"),
    "value-map": alarm_text(b"##02{0:normal;1:faulty}.", b"D3,E1,1", b"##02{0:on}"),
    "value-map-of-odd-items": alarm_text(b"##00{a:b:x;a;:;a:y;}", b"a", b"##00"),
    "value-map-empty-beyond-the-list": alarm_text(b"##07{}", b"a", b"##01"),
    "value-map-seven-away": alarm_text(b"##00123{a:x}", b"a", b"##00"),
    "value-map-eight-away": alarm_text(b"##001234{a:x}", b"a", b"##00"),
    "value-map-of-two": alarm_text(b"##0##1{a:x;b:y}", b"a,b", b"##00##01"),
    "value-map-closed-first": alarm_text(b"##00}{a:x}", b"a", b"##00"),
    "value-map-open": alarm_text(b"##01{b:y} ##00{a:x", b"a,b", b"##00 ##01"),
    "braces-within-braces": alarm_text(b"{a{b}c} {d", b"a", b"{a}"),
    "escapes": alarm_text(b"##00##01##02", b"a&#44;b,&#38;#44;,&#38;#38;,&#4"),
    "empty-fields": alarm_text(b"##00##01##02", b",,", b"##01"),
    "value-of-another": alarm_text(b"<##00>", b"a##01b,x", b"##00"),
    "value-holds-itself": alarm_text(b"<##00> ##01", b"a##00,x", b"##01 ##00"),
    "values-hold-each-other": alarm_text(b"<##00>", b"a##01b,c##02d,e##00f"),
    "value-takes-what-follows": alarm_text(b"##00    ##1", b"##0,x", b"##001##0000"),
    "value-ends-in-a-mark": alarm_text(b"##0000", b"a##", b"##00"),
    "value-is-half-a-mark": alarm_text(b"##00#01", b"#,y", b"##00##00"),
    "values-double": alarm_text(b"##00", b",".join(b"##%02d##%02d" % (i, i) for i in range(1, 30)) + b",x"),
    "values-of-nothing-double": alarm_text(b"##00", b",".join(b"##%02d##%02d" % (i, i) for i in range(1, 30)) + b","),
    "not-ascii": alarm_text(b"\xc3\xa4##00\xff##\xff0", b"\x80,\xe2\x82\xac", b"##0\xff"),
}


# What the alarm catalogue target reads: the file of the definitions, then that of the literals.
def alarm_catalogue(elements=b"", types=b""):
    return (b'{"root":{"eventDefinition":{"param":[' + elements + b']}}}\0'
            b'{"alarm":{"param_enum":[' + types + b"]}}")


ALARM = (b'{"eventID":"12","name":"n","reason":"r","suggestion":"##01","detail":"##00{0:off;1:on}","location":"##02",'
         b'"alarmOid":"1.3.6.1","paramDesc":"0=T,1=T"}')
LITERALS = b'{"name":"T","enum_member":[{"value":"0","name":"zero"},{"value":"1","name":"one"}]}'

ALARM_CATALOGUE = {
    "nothing": b"",
    "empty": alarm_catalogue(),
    "one-alarm": alarm_catalogue(ALARM, LITERALS),
    "alarm-without-members": alarm_catalogue(b"{}," + ALARM),
    "null-elements": alarm_catalogue(b"null," + ALARM, b"null," + LITERALS),
    "same-id-twice": alarm_catalogue(ALARM + b',{"eventID":"12","detail":"##"}'),
    "ids-of-all-sizes": alarm_catalogue(b",".join(
        b'{"eventID":"%s"}' % text
        for text in (b"0", b"-1", b" 7", b"9x", b"x", b"4294967296", b"99999999999999999999"))),
    "id-as-a-number": alarm_catalogue(b'{"eventID":"3"},{"eventID":4},{"eventID":"5"}'),
    "element-of-another-kind": alarm_catalogue(b'"text",[],1,true', b'"text",[],1,true'),
    "list-as-an-object": b'{"root":{"eventDefinition":{"param":{"0":1}}}}\0{"alarm":{"param_enum":{"0":1}}}',
    "list-as-a-text": b'{"root":{"eventDefinition":{"param":"x"}}}\0{"alarm":{"param_enum":"x"}}',
    "list-null": b'{"root":{"eventDefinition":{"param":null}}}\0{"alarm":{"param_enum":null}}',
    "root-as-a-text": b'{"root":"eventDefinition"}\0{"alarm":"param_enum"}',
    "top-as-a-list": b'["root"]\0["alarm"]',
    "top-as-a-text": b'"root"\0"alarm"',
    "no-root": b'{"rot":1}\0{"alarms":1}',
    "no-event-definition": b'{"root":{}}\0{"alarm":{}}',
    "no-enumerations": alarm_catalogue(ALARM)[:-5],
    "literal-value-as-a-number": alarm_catalogue(ALARM, b'{"name":"T","enum_member":[{"value":0,"name":"x"}]}'),
    "literal-null": alarm_catalogue(ALARM, b'{"name":"T","enum_member":[null,{"value":null,"name":"x"}]}'),
    "type-without-a-name": alarm_catalogue(ALARM, b'{"enum_member":[]},{"name":"T"}'),
    "param-desc-at-its-edges": alarm_catalogue(
        b'{"eventID":"1","paramDesc":",,x=A,2=A=B,3,=,-1=T,99999999999999999999=T,"}', LITERALS),
    "escapes-and-zero-bytes": alarm_catalogue(b'{"eventID":"1\\u00002","detail":"\\u0000##00\\ud83d\\ude00"}'),
    "comments": b"// alarms\n" + alarm_catalogue(b"/* one */" + ALARM),
    "deeply-nested": alarm_catalogue(b"[" * 1200),
}


# What the alarm record target reads: properties/alarm_record_property.h has the grammar.
EVENT_KIND, OTHER_KIND = 0, 7
EVENT_FLAG = 15


def alarm_record(changes=None, kind=OTHER_KIND):
    """A fault of alarm 1, with the cells in `changes` instead of its own; None leaves one out."""
    cells = {1: number(1, 1), 8: text(8, b"1,2"), 2: number(2, 3), 3: number(3, 42), 4: number(4, 1000, width=8),
             5: number(5, 0, width=8), 6: number(6, 0, width=8)}
    cells.update(changes or {})
    return bytes([kind]) + b"".join(cell for cell in cells.values() if cell is not None)


def wide(tag, value):
    return number(tag, value, width=8)


ALARM_RECORD = {
    "nothing": b"",
    "no-cells": bytes([OTHER_KIND]),
    "fault": alarm_record(),
    "clear-by-tag-six": alarm_record({6: wide(6, 3000)}),
    "clear-by-tag-five": alarm_record({5: wide(5, 2000)}),
    "clear-by-both": alarm_record({5: wide(5, 2000), 6: wide(6, 3000)}),
    "clear-without-tag-four": alarm_record({4: None, 6: wide(6, 3000)}),
    "clear-by-tag-six-without-tag-five": alarm_record({5: None, 6: wide(6, 3000)}),
    "tag-six-with-an-empty-low-half": alarm_record({6: wide(6, 1 << 32)}),
    "both-with-empty-low-halves": alarm_record({5: wide(5, 1 << 32), 6: wide(6, 1 << 32)}),
    "tag-six-with-an-empty-low-half-and-tag-five": alarm_record({5: wide(5, 9), 6: wide(6, 1 << 32)}),
    "event": alarm_record({EVENT_FLAG: number(EVENT_FLAG, 1)}, EVENT_KIND),
    "event-flag-zero": alarm_record({EVENT_FLAG: number(EVENT_FLAG, 0)}, EVENT_KIND),
    "event-flag-two": alarm_record({EVENT_FLAG: number(EVENT_FLAG, 2)}, EVENT_KIND),
    "event-flag-missing": alarm_record(kind=EVENT_KIND),
    "event-flag-of-another-kind": alarm_record({EVENT_FLAG: number(EVENT_FLAG, 1)}),
    "alarm-unknown": alarm_record({1: number(1, 99)}),
    "alarm-zero": alarm_record({1: number(1, 0)}),
    "alarm-without-texts": alarm_record({1: number(1, 2)}),
    "alarm-without-a-position": alarm_record({1: number(1, 3)}),
    "alarm-id-missing": alarm_record({1: None}),
    "alarm-id-as-text": alarm_record({1: text(1, b"1")}),
    "parameters-as-number": alarm_record({8: number(8, 1)}),
    "parameters-without-their-nul": alarm_record({8: column(8, 2, b"1,2")}),
    "parameters-without-bytes": alarm_record({8: column(8, 2, b"")}),
    "parameters-not-ascii": alarm_record({8: text(8, b"\xc3\xa4,\xff\n")}),
    "level-as-text": alarm_record({2: text(2, b"3")}),
    "level-of-two-signed-bytes": alarm_record({2: number(2, 0xFFFE, kind=4, width=2)}),
    "serial-number-as-bytes": alarm_record({3: column(3, 1, b"\x01\0\0\0")}),
    "serial-number-of-all-bits": alarm_record({3: wide(3, (1 << 64) - 1)}),
    "time-without-bytes": alarm_record({4: column(4, 3, b"")}),
    "time-of-two-signed-bytes": alarm_record({4: number(4, 0xFFFF, kind=4, width=2)}),
    "time-beyond-two-octets-of-years": alarm_record({4: wide(4, (1 << 63) - 1)}),
    "time-before-the-first-year": alarm_record({4: wide(4, 1 << 63)}),
    "same-tag-twice": alarm_record() + number(1, 2),
    "ends-within-a-cell": alarm_record()[:-1],
}


def main():
    targets = {"decode": DECODE, "trap_table": TRAP_TABLE, "alarm_text": ALARM_TEXT,
               "alarm_catalogue": ALARM_CATALOGUE, "alarm_record": ALARM_RECORD}
    for target, seeds in targets.items():
        folder = CORPUS / target
        folder.mkdir(parents=True, exist_ok=True)
        for name, data in seeds.items():
            (folder / name).write_bytes(data)


if __name__ == "__main__":
    main()
