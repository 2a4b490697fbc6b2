"""What a page needs beside its commands: what must have happened before one, and what it leaves to others.

A new command in a page needs nothing here if it runs and ends with 0. CONTRIBUTING.md says what to do otherwise.
"""

from typing import NamedTuple

from commands import ASSIGNED_FOR_ONE


class Scene(NamedTuple):
    user: str = "admin"  # whom snmp.conf names
    names: bool = False  # whether snmp.conf loads the MIB
    before: dict = {}  # by the beginning of a command: what is done before it, a function of the place
    status: dict = {}  # by the beginning of a command: its exit status, where it is not 0


class NotRun(NamedTuple):
    """A command that no test of this folder runs, why, and what runs it instead: a file, and a text in it.

    Variables that are set for it alone do not count."""

    command: str  # the whole command, or its beginning followed by "*"
    why: str
    covered_by: str
    text: str

    def matches(self, command):
        command = ASSIGNED_FOR_ONE.sub("", command)
        if self.command.endswith("*"):
            return command.startswith(self.command[:-1])
        return command == self.command


def receiver(index):
    """A receiver of traps with that index."""
    def make(place):
        place.run(f"talvikctl trap remove {index}")
        done = place.run(f"talvikctl trap add 192.0.2.20 --index {index}")
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


SCENES = {
    "docs/troubleshooting.md": Scene(before={
        "talvikctl backend status": a_back_end_of_its_own,
        "talvikctl trap test 1": an_agent_with_a_receiver,
    }),
    "README.md": Scene(before={"talvikctl trap modify 1": receiver(1)}),
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

NOT_RUN = [
    NotRun("git clone <this repository> talvik && cd talvik", "there is no repository to clone in a test",
           ".ci/run", "from a clean"),
    NotRun("./dev package*", "builds packages and installs them", "tests/package/clean_root_test.py", "install"),
    NotRun("sudo apt install *", "installs into the system", "tests/package/clean_root_test.py", "install"),
    NotRun("sudo talvik-agentd --check && sudo systemctl*", "takes a system with systemd", "tests/package/clean_root_test.py",
           "systemctl"),
    NotRun("talvik-agentd --agentx*", "takes snmpd's own socket", "tests/e2e/agentx_master_test.py", "agentx"),
    NotRun("./dev build", "builds the whole tree", "tools/dev/test.sh", "configureAndBuild"),
    NotRun("./dev build [preset]*", "the same", "tools/dev/test.sh", "configureAndBuild"),
    NotRun("./dev test", "runs this test", ".ci/run", "./dev test\n"),
    NotRun("./dev test release -R TlvDecode*", "the same for one test", ".ci/run", "./dev test"),
    NotRun("./dev test asan*", "the same under the sanitizers", ".ci/run", "./dev test"),
    NotRun("./dev test release -L mib", "the same for one label", ".ci/run", "./dev test"),
    NotRun("qemu-aarch64*", "a program of another build", ".ci/run", "./dev test aarch64"),
    NotRun("./dev check*", "takes minutes and builds", ".ci/run", "./dev check"),
    NotRun("./dev fuzz*", "builds with another compiler", ".ci/run", "./dev fuzz"),
    NotRun("./dev bench*", "measures for minutes", "tools/dev/bench.sh", "talvik-bench"),
    NotRun("build/fuzz/bin/talvik-fuzz-decode*", "a program of another build", ".ci/run", "./dev fuzz"),
    NotRun("build/release/bin/talvik-bench-codec*", "measures for minutes", "tools/dev/bench.sh", "talvik-bench"),
    NotRun("python3 tests/contract/dev_checks_test.py .", "is a test itself", "tests/contract/CMakeLists.txt",
           "dev_checks_test.py"),
    NotRun("tools/dev/mib_reference.py*", "writes into the tree", "tests/mib/mib_reference_test.py", "reference()"),
    NotRun("cmake -S examples/host*", "takes what is installed", "tests/package/example_host_test.py", '"cmake", "-S"'),
    NotRun("cmake -S . -B build/kit*", "builds the module", "tests/platform_choice/platform_choice_test.py",
           'options.cmake, "-S"'),
    NotRun("cmake --build build/kit*", "the same", "tests/platform_choice/platform_choice_test.py", '"--build"'),
    NotRun("cmake --install build/kit*", "the same", "tests/platform_choice/platform_choice_test.py", '"--install"'),
    NotRun("cmake --preset aarch64 *", "the same with another compiler", ".ci/run", "./dev test aarch64"),
    NotRun("make -C examples/host*", "takes what is installed", "tests/package/example_host_test.py", '"make", "-C"'),
]
