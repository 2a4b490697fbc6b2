#!/usr/bin/env python3
"""check_abi.py finds what it is for: the stored forms are changed as an accident would change them."""

import argparse
import os
import re
import subprocess
import sys
import tempfile
import unittest

HERE = os.path.dirname(os.path.abspath(__file__))
parser = argparse.ArgumentParser(description=__doc__)
parser.add_argument("--library", required=True, help="the library that names all types of the border")
options = parser.parse_args()

STORED = {"boundary.xml": "--description", "layout.txt": "--layout", "platform_symbols.txt": "--symbols",
          "boundary_types.cpp": "--types"}


class CheckAbi(unittest.TestCase):
    def report(self, what, stored, pattern, replacement):
        """What the check says when `pattern` of the stored form has become `replacement`."""
        with open(os.path.join(HERE, stored), encoding="utf-8") as text:
            changed, count = re.subn(pattern, replacement, text.read(), count=1, flags=re.S)
        self.assertEqual(count, 1, "the stored form has no such place")
        with tempfile.NamedTemporaryFile("w", suffix=f"-{stored}", encoding="utf-8") as file:
            file.write(changed)
            file.flush()
            done = subprocess.run([sys.executable, os.path.join(HERE, "check_abi.py"), what, "--library", options.library,
                                   STORED[stored], file.name], capture_output=True, text=True, check=False)
        self.assertEqual(done.returncode, 1, done.stdout + done.stderr)
        self.assertIn("./dev abi --update", done.stdout)
        return done.stdout

    def test_tells_of_a_member_at_another_place(self):
        told = self.report("compare", "boundary.xml",
                           r'layout-offset-in-bits="\d+">(\s+<var-decl name="pData")', r'layout-offset-in-bits="4096">\1')
        self.assertIn("offset changed from 4096 to 64", told)

    def test_tells_of_a_class_of_another_size(self):
        told = self.report("compare", "boundary.xml", r'(name="CTLVRecordV3" size-in-bits=)"512"', r'\1"448"')
        self.assertIn("type size changed from 448 to 512", told)

    def test_tells_of_operations_that_changed_places(self):
        told = self.report("compare", "boundary.xml",
                           r'vtable-offset="2"(>\s+<function-decl name="constructAlarmTrapVb" mangled-name="_ZN17INotify)',
                           r'vtable-offset="7"\1')
        self.assertIn("constructAlarmTrapVb", told)
        self.assertIn("changed from 7 to 2", told)

    def test_tells_of_lines_that_the_list_lacks_or_has_too_many(self):
        told = self.report("layout", "layout.txt", r"CTLVCell::ETLVType: TLV_INT = 4", "CTLVCell::ETLVType: TLV_INT = 5")
        self.assertRegex(told, r"has, and \S+ lacks: CTLVCell::ETLVType: TLV_INT = 4")
        self.assertRegex(told, r"lacks: CTLVCell::ETLVType: TLV_INT = 5")

    def test_tells_of_what_the_host_supplies_and_nothing_names(self):
        for stored, pattern, replacement, expected in (
                ("platform_symbols.txt", r"\nSnmpUtil::CheckTrapIndOK\(", r"\nSnmpUtil::CheckTrapFarOK(",
                 r"has SnmpUtil::CheckTrapFarOK\(tTrapDestInfo&\), which \S+ does not describe: it must be named: "
                 r"decltype\(&SnmpUtil::CheckTrapFarOK\)"),
                ("platform_symbols.txt", r"\nCKELDebugKitMgr::~CKELDebugKitMgr", r"\nCKELOtherKit::~CKELOtherKit",
                 r"CKELOtherKit::~CKELOtherKit\(\), which \S+ does not describe: the class must be named: CKELOtherKit\*"),
                ("platform_symbols.txt", r"CSnmpTableBase::GetTableInfo\(", "CSnmpTableBase::GetOtherInfo(",
                 r"decltype\(&CSnmpTableBase::GetOtherInfo\)"),
                ("boundary_types.cpp", r"\ndecltype\(&memcpy_s\) copy;", "", r"has memcpy_s, .*: decltype\(&memcpy_s\)"),
                ("boundary_types.cpp", r"decltype\(free\(&CTLVCell::set_i\)\)", "decltype(free(&CTLVCell::set_d))",
                 r"decltype\(&CTLVCell::set_i\)"),
                ("boundary.xml", r'var-decl name="copy"', 'var-decl name="other"', r"named \(copy\), but not stored")):
            with self.subTest(expected):
                self.assertRegex(self.report("named", stored, pattern, replacement), expected)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=2)
