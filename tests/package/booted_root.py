"""A machine of its own for a test: a clean Debian root in namespaces, with or without systemd."""

import os
import pathlib
import subprocess
import tempfile
import time

CONTROL_GROUPS = pathlib.Path("/sys/fs/cgroup")
HERE = pathlib.Path(__file__).resolve().parent
TO_BOOT = 120  # seconds
COMMAND = 120  # seconds that a command inside may take


class CannotBoot(Exception):
    """The machine does not allow it; the text says what failed."""


def control_groups_of_this_process():
    """Its folder in each hierarchy that systemd uses."""
    for line in pathlib.Path("/proc/self/cgroup").read_text().splitlines():
        _, controllers, path = line.split(":", 2)
        name = controllers.split(",")[0].removeprefix("name=")
        tops = [CONTROL_GROUPS / name] if name else [CONTROL_GROUPS / "unified", CONTROL_GROUPS]
        folders = [top / path.lstrip("/") for top in tops if (top / path.lstrip("/") / "cgroup.procs").exists()]
        if folders and name != "cpuset":  # which systemd leaves alone
            yield folders[0]


class ControlGroup:
    """A control group of its own in each hierarchy: what systemd makes there goes with it."""

    def __init__(self):
        self.folders = [folder / f"talvik-test-{os.getpid()}" for folder in control_groups_of_this_process()]
        try:
            for folder in self.folders:
                folder.mkdir()
        except OSError as error:
            self.remove()
            raise CannotBoot(f"no control group can be made: {error}") from error

    def enter(self):
        """Moves this process, and those that it starts, into them."""
        for folder in self.folders:
            (folder / "cgroup.procs").write_text(str(os.getpid()))

    def remove(self):
        """Once its processes are gone, which the kernel may notice a little later."""
        end = time.monotonic() + TO_BOOT
        while time.monotonic() < end:
            try:
                for folder in self.folders:
                    if folder.exists():
                        for path, _, _ in os.walk(folder, topdown=False):
                            os.rmdir(path)
                return
            except OSError:
                time.sleep(0.1)
        raise AssertionError(f"the control groups {self.folders} cannot be removed: processes are left in them")


class Root:
    """A machine whose first process does nothing, as in a container. Use as a context: made on entry, gone at its end."""

    NAMESPACES = ["--mount", "--pid", "--net", "--uts", "--ipc"]
    FIRST = "nothing"
    COMM = "sleep"

    def __init__(self, base, packages):
        self.base, self.packages = base, packages
        self.scratch = tempfile.TemporaryDirectory(prefix="talvik-root-")
        self.log = tempfile.TemporaryFile("w+")
        self.first = ""

    def __enter__(self):
        self._start()
        try:
            self._wait_until_up()
        except BaseException:
            self.__exit__()
            raise
        return self

    def __exit__(self, *_):
        self.outer.kill()  # and with it the first process, which ends all others
        self.outer.wait(COMMAND)
        self.log.close()
        self.scratch.cleanup()

    def _start(self, before=None):
        self.outer = subprocess.Popen(
            ["unshare", *self.NAMESPACES, "--fork", "--kill-child", str(HERE / "boot_root.sh"), str(self.base),
             self.scratch.name, str(self.packages), self.FIRST],
            stdin=subprocess.DEVNULL, stdout=self.log, stderr=self.log, preexec_fn=before)

    def _wait_until_up(self):
        end = time.monotonic() + TO_BOOT
        while self.outer.poll() is None and time.monotonic() < end:
            self.first = self._first_process()
            if self.first and self._comm() == self.COMM and self._is_up():
                self.run("ip", "link", "set", "lo", "up")
                return
            time.sleep(0.1)
        self.log.seek(0)
        raise CannotBoot(f"{self.FIRST} as first process did not come up in namespaces of this machine:\n{self.log.read()}")

    def _is_up(self):
        return True

    def _first_process(self):
        children = pathlib.Path(f"/proc/{self.outer.pid}/task/{self.outer.pid}/children")
        return children.read_text().strip() if children.exists() else ""

    def _comm(self):
        comm = pathlib.Path(f"/proc/{self.first}/comm")
        return comm.read_text().strip() if comm.exists() else ""

    def _enter(self, *command):
        return subprocess.run(["nsenter", "--target", self.first, "--mount", "--uts", "--ipc", "--pid", "--net", "--root",
                               "--wd", "env", "-i", "LC_ALL=C", "HOME=/root", "DEBIAN_FRONTEND=noninteractive", "PATH=/usr/sbin:/usr/bin:/sbin:/bin", *command],
                              stdin=subprocess.DEVNULL, capture_output=True, text=True, timeout=COMMAND, check=False)

    def run(self, *command, expected=0):
        """What the command writes to standard output, run as root in there."""
        done = self._enter(*command)
        if done.returncode != expected:
            raise AssertionError(f"{' '.join(command)} ended with {done.returncode}:\n{done.stdout}{done.stderr}"
                                 f"{self._journal()}")
        return done.stdout

    def _journal(self):
        return ""

    def shell(self, script, expected=0):
        return self.run("sh", "-ec", script, expected=expected)

    def wait_for(self, script, what):
        """Until the script succeeds; fails after the limit with the journal."""
        end = time.monotonic() + TO_BOOT
        while self._enter("sh", "-ec", script).returncode != 0:
            if time.monotonic() > end:
                raise AssertionError(f"{what}: not within {TO_BOOT} seconds\n{self._journal()}")
            time.sleep(0.1)


class BootedRoot(Root):
    """A machine with systemd as its first process."""

    NAMESPACES = Root.NAMESPACES + ["--cgroup"]
    FIRST = COMM = "systemd"

    def _start(self, before=None):
        self.group = ControlGroup()
        super()._start(self.group.enter)

    def __exit__(self, *_):
        super().__exit__()
        self.group.remove()

    def _is_up(self):
        return self._enter("systemctl", "is-system-running").stdout.strip() in ("running", "degraded")

    def _journal(self):
        return self._enter("journalctl", "--no-pager", "--lines", "60").stdout
