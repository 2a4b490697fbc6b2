"""Modules that cannot be used: files and descriptions, each with what the agent must say of it."""

import shutil
import struct

from talvik_e2e import MODULE, SOURCE, TABLE, TEST_MODULES

X86, ARM, POWERPC64, X86_64, AARCH64, RISCV = 3, 40, 21, 62, 183, 243
ONE_OF_OURS = TEST_MODULES / "counting.so"
OTHER_MACHINE = "is for another machine"

# Modules in TEST_MODULES whose code breaks a rule.
BROKEN = [
    ("missing_library", "cannot be loaded: libtalvik_absent.so: cannot open shared object file", "is not installed"),
    ("missing_symbol", "cannot be loaded: ", "undefined symbol: SNMP_NobodyHasThis", "install both of one release"),
    ("no_factory", "is no MIB module, it exports no SNMP_SvcModuleCreator"),
    ("null_factory", "SNMP_SvcModuleCreator made no module"),
    ("throwing_factory", "SNMP_SvcModuleCreator failed: CKEL_Exception: the factory refuses"),
    ("factory_throws_runtime_error", "SNMP_SvcModuleCreator failed: unexpected exception: the factory is out of order"),
    ("factory_throws_int", "SNMP_SvcModuleCreator failed: unexpected exception of an unknown type"),
    ("registers_then_throws", "CKEL_Exception: the factory refuses after it has registered"),
    ("mib_name_throws", "getMibFileName failed: unexpected exception of an unknown type"),
    ("mib_name_with_path", 'its MIB description "../KEL-TALVIK-MIB.json" is no plain file name'),
    ("handlers_throw", "getSvcHandler failed: CKEL_Exception: no second handler"),
    ("no_handlers", "serves no subtree"),
    ("null_handler", f"has no handler for {TABLE.strip('.')}"),
    ("one_handler_for_two_oids", f"has one handler object for {TABLE.strip('.')} and 1.3.6.1.4.1.99999.2.91.10.4.1",
     "each takes one of its own"),
    ("two_handlers_for_one_oid", f"has two handlers for {TABLE.strip('.')}"),
    ("unknown_oid", "serves 1.3.6.1.4.1.99999.2.91.77.1", "describes no table or scalar there"),
]


class Fault:
    """Options of an agent that cannot use its module, and the texts of the line that says so."""

    def __init__(self, name, texts, **options):
        self.name, self.texts, self.options = name, texts, options


def header(machine, bits=64, order="little", kind=3):
    """The header of an ELF file, hand-made: a shared object unless `kind` says otherwise, and nothing behind it."""
    ident = b"\x7fELF" + bytes([2 if bits == 64 else 1, 1 if order == "little" else 2, 1]) + bytes(9)
    rest = "HHIQQQIHHHHHH" if bits == 64 else "HHIIIIIHHHHHH"
    size = 64 if bits == 64 else 52
    numbers = [kind, machine, 1, 0, size, 0, 0, size, 56 if bits == 64 else 32, 0, 64 if bits == 64 else 40, 0, 0]
    return ident + struct.pack(("<" if order == "little" else ">") + rest, *numbers) + bytes(4096)


def this_machine():
    return int.from_bytes(ONE_OF_OURS.read_bytes()[18:20], "little")


class Faults:
    """Makes the files in `folder`."""

    def __init__(self, folder):
        self.folder = folder

    def file(self, name, content):
        path = self.folder / name
        path.write_bytes(content)
        return path

    def no_files(self):
        missing = self.folder / "missing.so"
        yield Fault("missing file", [f"module {missing}: No such file or directory", "--module"], module=missing)
        yield Fault("directory", [f"module {self.folder}: is no file", "--module"], module=self.folder)
        loop = self.folder / "loop.so"
        loop.symlink_to(loop)
        yield Fault("link to itself", ["Too many levels of symbolic links"], module=loop)
        below = self.file("plain", b"") / "module.so"
        yield Fault("below a file", ["Not a directory"], module=below)

    def no_modules(self):
        def fault(name, content, *texts):
            path = self.file(f"{name.replace(' ', '-')}.so", content)
            return Fault(name, [f"module {path}: ", *texts], module=path)

        own = this_machine()
        image = ONE_OF_OURS.read_bytes()
        yield fault("empty", b"", "is empty; install the module again")
        yield fault("text", b"not a program", "is no shared object; name the module's file with --module")
        yield fault("ten bytes", image[:10], "is no shared object")
        for length in (63, 64, 200, 1000, 5000, len(image) // 2, len(image) - 1):
            yield fault(f"cut at {length}", image[:length], "is damaged or cut short; install the module again")
        yield fault("program", header(own, kind=2), "is no shared object (ELF type 2)")
        foreign, name = (AARCH64, "AArch64") if own == X86_64 else (X86_64, "x86-64")
        yield fault("whole of another machine", image[:18] + foreign.to_bytes(2, "little") + image[20:], OTHER_MACHINE,
                    f"({name}, 64 bits, little-endian); install the module for this one")
        yield fault("RISC-V", header(RISCV), OTHER_MACHINE, "(ELF machine 243, 64 bits, little-endian)")
        yield fault("32 bits x86", header(X86, bits=32), OTHER_MACHINE, "(x86, 32 bits, little-endian)")
        yield fault("32 bits ARM", header(ARM, bits=32), OTHER_MACHINE, "(ARM, 32 bits, little-endian)")
        yield fault("32 bits of this machine", header(own, bits=32), OTHER_MACHINE, ", 32 bits, little-endian)")
        yield fault("big-endian PowerPC", header(POWERPC64, order="big"), OTHER_MACHINE,
                    "(ELF machine 21, 64 bits, big-endian)")
        yield fault("big-endian of this machine", header(own, order="big"), OTHER_MACHINE, ", 64 bits, big-endian)")

    def broken(self):
        for name, *texts in BROKEN:
            path = TEST_MODULES / f"{name}.so"
            yield Fault(name, [f"module {path}", *texts], module=path)

    def descriptions(self):
        empty = self.folder / "no-description"
        empty.mkdir()
        yield Fault("no MIB description", [f"{empty / 'KEL-TALVIK-MIB.json'}"], module=MODULE, mib_dir=empty)
        for name, text in (("no JSON", "{ this is none"), ("another document", "[1, 2]"), ("nothing described", "{}")):
            folder = self.folder / name.replace(" ", "-")
            folder.mkdir()
            (folder / "KEL-TALVIK-MIB.json").write_text(text)
            yield Fault(name, [f"{folder / 'KEL-TALVIK-MIB.json'}"], module=MODULE, mib_dir=folder)

    def taken_oid(self):
        """A module whose table lies where the agent has one of its own."""
        folder = self.folder / "taken"
        folder.mkdir()
        text = (SOURCE / "mibs" / "KEL-TALVIK-MIB.json").read_text()
        for before, after in (('"root": "1.3.6.1.4.1.99999.2"', '"root": "1.3.6.1"'),
                              (f'"oid": "{TABLE.strip(".")}"', '"oid": "1.3.6.1.2.1.1.9"')):
            text = text.replace(before, after)
        (folder / "KEL-TALVIK-MIB.json").write_text(text)
        yield Fault("taken OID", ["cannot serve talvikTopologyTable", "1.3.6.1.2.1.1.9 is taken"],
                    module=TEST_MODULES / "sys_or_table.so", mib_dir=folder)

    def all(self):
        for group in (self.no_files, self.no_modules, self.broken, self.descriptions, self.taken_oid):
            yield from group()


def unreadable(folder):
    """A copy of the module that nobody but root may read."""
    path = folder / "unreadable.so"
    shutil.copy(MODULE, path)
    path.chmod(0)
    return Fault("unreadable", [f"module {path}: cannot be read: Permission denied"], module=path)
