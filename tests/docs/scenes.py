"""What a page needs beside its commands: what must have happened before one, and what it leaves to others.

A new command in a page needs nothing here if it runs and ends with 0. CONTRIBUTING.md says what to do otherwise.
"""

import ast
import re
from typing import NamedTuple

from commands import ASSIGNED_FOR_ONE

COMMENT = re.compile(r"\s+#.*$")


class Scene(NamedTuple):
    user: str = "admin"  # whom snmp.conf names
    names: bool = False  # whether snmp.conf loads the MIB
    before: dict = {}  # by the beginning of a command: what is done before it, a function of the place
    status: dict = {}  # by the beginning of a command: its exit status, where it is not 0


class NotRun(NamedTuple):
    """A command that no test of this folder runs as it stands, why, and what runs it instead.

    `covered_by` is a file, or FILE::NAME for a function or test in it; `words` stand there, in one line of a file, and in the
    command. `instead` is run in place of the command, with the variables that are set for it; {rest} is what "*" stands for,
    {build} the folder of the build."""

    command: str  # the whole command, or its beginning followed by "*"
    why: str
    covered_by: str
    words: tuple
    instead: str = ""

    def matches(self, command):
        command = ASSIGNED_FOR_ONE.sub("", command)
        if self.command.endswith("*"):
            return command.startswith(self.command[:-1])
        return command == self.command

    def in_place_of(self, command, build):
        """The command line that is run, if any."""
        variables = (ASSIGNED_FOR_ONE.match(command) or [""])[0]
        rest = COMMENT.sub("", command[len(variables):][len(self.command.removesuffix("*")):])
        return variables + self.instead.replace("{rest}", rest).replace("{build}", str(build)) if self.instead else ""

    def lacks(self, root):
        """The words that do not stand in what covers the command; None where that is not there."""
        file, _, name = self.covered_by.partition("::")
        text = (root / file).read_text(encoding="utf-8")
        parts = [line for line in text.splitlines() if not line.lstrip().startswith("#")]
        if name:
            parts = [ast.get_source_segment(text, node) for node in ast.walk(ast.parse(text))
                     if isinstance(node, ast.FunctionDef) and node.name == name]
        if not parts:
            return None
        return min(([word for word in self.words if word not in part] for part in parts), key=len)


def receiver(index):
    """A receiver of traps with that index."""
    def make(place):
        place.run(f"talvikctl trap remove {index}")
        done = place.run(f"talvikctl trap add 127.0.0.1 --port 9 --index {index}")  # there is a way to it on every machine
        assert done.status == 0, done
    return make


def alarm(serial):
    return lambda place: place.raise_up_to(serial)


def damaged_file(place):
    """Trap destinations in a file that was set aside, and the folder's own agent stopped."""
    receiver(1)(place)
    place.agent.stop()
    assert place.run("cd /var/lib/talvik && mv trap-destinations.db trap-destinations.db.damaged-1 && "
                     "rm -f trap-destinations.db-wal trap-destinations.db-shm").status == 0
    place.start_agent()
    place.agent.stop()


def back_to_the_tree(place):
    place.prelude = [line for line in place.prelude if not line.startswith("cd ")]
    place.start_agent()


def a_back_end_of_its_own(place):
    place.start("talvik-backendd", "talvik-backendd --socket /run/talvik/backend.sock --state-dir /var/lib/talvik")
    place.start("talvik-agentd", "talvik-agentd --backend unix:/run/talvik/backend.sock")


def an_agent_with_a_receiver(place):
    place.start_agent()
    receiver(1)(place)


def a_repository(place):
    """What there is to clone: a small one, for the test's own tree may have none."""
    assert place.run("git init -q '<this repository>' && cp README.md '<this repository>' && cd '<this repository>' && "
                     "git add . && git -c user.name=test -c user.email=test@localhost commit -q -m test").status == 0


SCENES = {
    "docs/getting-started.md": Scene(before={"git clone": a_repository}),
    "docs/troubleshooting.md": Scene(before={
        "talvikctl backend status": a_back_end_of_its_own,
        "talvikctl trap test 1": an_agent_with_a_receiver,
    }),
    "README.md": Scene(before={"git clone": a_repository, "talvikctl trap modify 1": receiver(1)}),
    "docs/alarm-catalogue.md": Scene(status={"talvikctl catalogue check bad.json": 1}),
    "docs/operations.md": Scene(before={
        "talvikctl alarm raise 501010001": lambda place: place.start_agent(),
        "talvikctl alarm clear 17": alarm(17),
        "talvikctl trap test 1": receiver(1),
    }),
    "docs/day-to-day.md": Scene(before={
        "cd STATE-FOLDER": damaged_file,
        "snmptable $M $SNMP -Ci -Cb HOST:1161 talvikAlarmTable": back_to_the_tree,
        "talvikctl trap test 5": receiver(5),
        "talvikctl trap list --json": receiver(2),
        "talvikctl alarm clear 17": alarm(17),
    }),
    "contrib/net-snmp/README.md": Scene(user="operator", names=True, before={
        "snmpset HOST:1161 talvikClearAlarm.0 u 17": alarm(17),
        "snmpset -u receivers": receiver(1),
    }),
}

FIRST_RECEIVER = ("snmptrapd -f -Lo -n -C -c run/first-snmptrapd.conf -M mibs:tests/mib/stubs -m KEL-TALVIK-MIB "
                  "udp:127.0.0.1:10162")

# Blocks that show what a command elsewhere prints: page, beginning of the block, and that command.
OUTPUTS = {
    ("docs/getting-started.md", "SNMPv2-SMI::snmpModules"): FIRST_RECEIVER,
    ("README.md", ".1.3.6.1.4.1.99999.2.91.9.1.1.1.1 = "): "./dev run",
    ("README.md", "INDEX  ADDRESS"): "./dev run",
    ("README.md", "SNMPv2-SMI::snmpModules"): "./dev run",
}
# The same where another test looks at what is printed: page, beginning, the file of the test, a text in it.
OUTPUTS_ELSEWHERE = {
    ("examples/README.md", "1.3.6.1.4.1.99999.2.91.9.1, 1 row"): ("tests/package/package_kit.py", "topology_of_the_example"),
    ("docs/operations.md", "time level logger text"): ("tests/unit/host_platform/log_text_test.cpp", "TEST"),
    ("docs/trap-settings.md", "trap settings /etc/talvik"): ("tests/unit/host_snmp/trap_settings_file_test.cpp", "expected"),
}

# The line from which on a page is made of a program, and the test that holds it to that program.
MADE = {
    "docs/talvikctl.md": ("<!-- From here on: talvikctl help --format markdown -->", "tests/e2e/ctl_help_test.py"),
}

# Configuration of other programs, in the same form.
SETTINGS_ELSEWHERE = {
    ("docs/operations.md", "master agentx"): ("tests/docs/snmpd_test.py", '"master agentx"'),
}

CLEAN_ROOT = "tests/package/clean_root_test.py"
EXAMPLE = "tests/package/example_host_test.py"
OWN_HEADERS = "tests/platform_choice/platform_choice_test.py"
UNIT_TESTS = "build/release/bin/talvik-unit-module --gtest_list_tests"
# ctest writes into the folder that it is told of, and may be running in that of the build.
LISTING = "mkdir -p listing && echo 'subdirs(\"{build}\")' >listing/CTestTestfile.cmake"
LIST_OF_BENCHMARKS = "build/release/bin/talvik-bench-codec --benchmark_list_tests"
SOME = ' | grep "^  "'  # the list has a test

NOT_RUN = [
    NotRun("./dev package && sudo apt install *", "builds packages and installs them", ".ci/run", ("./dev package",)),
    NotRun("./dev package  *", "builds packages", ".ci/run", ("./dev package",)),
    NotRun("sudo apt install *", "installs into the system", f"{CLEAN_ROOT}::install_agent",
           ("install", "talvik-mib-module", "talvik-agent")),
    NotRun("sudo talvik-agentd --check && sudo systemctl*", "takes a system with systemd", f"{CLEAN_ROOT}::restart",
           ("systemctl", "restart"), "sudo talvik-agentd --check"),
    NotRun("talvik-agentd --agentx*", "takes an snmpd", "tests/docs/snmpd_test.py::test_serves_managers_through_it",
           ("talvik-agentd --agentx",)),
    NotRun("./dev build", "builds the whole tree", ".ci/run", ("./dev build",)),
    NotRun("./dev build [preset]*", "the same", "tools/dev/common.sh",
           ("release", "debug", "asan", "tsan", "coverage", "fuzz", "aarch64")),
    NotRun("./dev test", "runs this test", ".ci/run", ("./dev test",)),
    NotRun("./dev test release *", "runs tests of this run again", ".ci/run", ("./dev test",),
           f'{LISTING} && ctest --test-dir listing -N {{rest}} | grep "Total Tests: [1-9]"'),
    NotRun("./dev test asan *", "builds with a sanitizer", ".ci/run", ("./dev test",), UNIT_TESTS + SOME),
    NotRun("qemu-aarch64 -L build/sysroot-aarch64 build/aarch64/bin/talvik-unit-module *", "a program of another build", ".ci/run",
           ("aarch64",), f"{UNIT_TESTS} {{rest}}{SOME}"),
    NotRun("./dev check*", "takes minutes and builds", ".ci/run", ("./dev check",)),
    NotRun("./dev fuzz*", "builds with another compiler", ".ci/run", ("./dev fuzz",)),
    NotRun("./dev bench*", "measures for minutes", "tools/dev/bench.sh", ("bench",),
           LIST_OF_BENCHMARKS),
    NotRun("build/fuzz/bin/talvik-fuzz-decode *", "a program of another build", ".ci/run", ("fuzz",),
           "build/release/bin/talvik-replay-decode fuzz/corpus/decode"),
    NotRun("build/release/bin/talvik-bench-codec *", "measures for half a minute", "tools/dev/bench.sh", ("talvik-bench-",),
           f"{LIST_OF_BENCHMARKS} {{rest}} | grep decode"),
    NotRun("python3 tests/contract/dev_checks_test.py .", "is a test itself, of some seconds", "tests/contract/CMakeLists.txt",
           ("dev_checks_test.py",), "python3 -B tests/contract/dev_checks_test.py . RoomRules"),
    NotRun("tools/dev/mib_reference.py *", "writes into the tree", "tests/mib/mib_reference_test.py", ("mib_reference",),
           "tools/dev/mib_reference.py --check"),
    NotRun("cmake -S examples/host -B /tmp/host && *", "takes what is installed",
           f"{EXAMPLE}::test_builds_with_cmake_and_reads_the_row", ("cmake", "-S", "-B", "--build", "topology-host")),
    NotRun("make -C examples/host && *", "takes what is installed",
           f"{EXAMPLE}::test_builds_with_pkg_config_and_reads_the_row", ("make", "-C", "topology-host")),
    NotRun("cmake -S . -B build/kit *", "builds the module", f"{OWN_HEADERS}::configure",
           ("cmake", "-S", "-B", "-G", "-DTALVIK_PLATFORM_DIR=", "-DCMAKE_BUILD_TYPE=")),
    NotRun("cmake --build build/kit*", "the same", f"{OWN_HEADERS}::setUpClass", ("cmake", "--build")),
    NotRun("cmake --install build/kit*", "the same", f"{OWN_HEADERS}::test_installs_the_module_and_its_data",
           ("cmake", "--install", "--prefix")),
    NotRun("cmake --preset aarch64 *", "the same with another compiler", "tools/dev/common.sh", ("cmake --preset",)),
]
