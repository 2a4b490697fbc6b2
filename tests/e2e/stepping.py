"""Runs a process's first thread from one system call to the next, by ptrace."""

import ctypes
import os
import signal

from talvik_e2e import LIMIT

SYSCALL, SEIZE, INTERRUPT = 24, 0x4206, 0x4207
TRACE_SYSCALLS = 1
ALL_CHILDREN = 0x40000000  # __WALL

LIBC = ctypes.CDLL(None, use_errno=True)
LIBC.ptrace.argtypes = [ctypes.c_long, ctypes.c_int, ctypes.c_void_p, ctypes.c_void_p]
LIBC.ptrace.restype = ctypes.c_long


class Stepping:
    """While this is used nobody else may wait for the process. `kill` ends both."""

    def __init__(self, pid):
        self.pid = pid
        self.in_call = False
        self.handler = None

    def __enter__(self):
        self.handler = signal.signal(signal.SIGALRM, self.give_up)
        signal.alarm(LIMIT)
        self.trace(SEIZE, TRACE_SYSCALLS)
        self.trace(INTERRUPT)
        self.wait()
        return self

    def __exit__(self, *_):
        signal.alarm(0)
        signal.signal(signal.SIGALRM, self.handler)

    @staticmethod
    def give_up(*_):
        raise AssertionError(f"the process makes no system call within {LIMIT} seconds")

    def trace(self, request, data=0):
        if LIBC.ptrace(request, self.pid, None, data) != 0:
            error = ctypes.get_errno()
            raise OSError(error, f"ptrace: {os.strerror(error)}")

    def wait(self):
        _, status = os.waitpid(self.pid, ALL_CHILDREN)
        if not os.WIFSTOPPED(status):
            raise AssertionError(f"the process has ended with {status}")
        return os.WSTOPSIG(status)

    def run_to_next_call(self):
        """On to where the thread is about to make a system call."""
        if self.in_call:
            self.run_to_border()
        self.run_to_border()
        self.in_call = True

    def run_to_border(self):
        """On to where a system call begins or ends."""
        while True:
            self.trace(SYSCALL)
            if self.wait() == signal.SIGTRAP | 0x80:
                return

    def kill(self):
        os.kill(self.pid, signal.SIGKILL)
