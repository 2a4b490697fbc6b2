"""A network and a file system view of this process's own, for what a test cannot do to the machine it runs on."""

import ctypes
import fcntl
import os
import pathlib
import socket
import struct

NEW_MOUNTS, NEW_USER, NEW_NETWORK = 0x00020000, 0x10000000, 0x40000000
BIND, RECURSIVE, PRIVATE = 4096, 16384, 1 << 18
DETACH = 2
SET_FLAGS, IS_UP = 0x8914, 0x1

LIBC = ctypes.CDLL(None, use_errno=True)


def check(result, what):
    if result != 0:
        error = ctypes.get_errno()
        raise OSError(error, f"{what}: {os.strerror(error)}")


def enter():
    """Gives this process, and those that it starts, mounts and a network of their own: the loopback and nothing else.

    Fails with OSError where the system forbids it. For good, and only while the process has one thread.
    """
    user, group = os.getuid(), os.getgid()
    check(LIBC.unshare(NEW_USER | NEW_MOUNTS | NEW_NETWORK), "unshare")
    for name, text in (("setgroups", "deny"), ("uid_map", f"0 {user} 1"), ("gid_map", f"0 {group} 1")):
        pathlib.Path("/proc/self", name).write_text(text)
    check(LIBC.mount(None, b"/", None, RECURSIVE | PRIVATE, None), "mount")
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as any_socket:
        fcntl.ioctl(any_socket, SET_FLAGS, struct.pack("16sh14x", b"lo", IS_UP))


def put_in_place(file, where):
    """Shows the contents of `file` at the path `where`, which must exist."""
    check(LIBC.mount(os.fsencode(file), os.fsencode(where), None, BIND, None), f"mount {where}")


def mount_memory(folder, octets):
    """An empty file system of that size at `folder`, gone with the process."""
    check(LIBC.mount(b"none", os.fsencode(folder), b"tmpfs", 0, f"size={octets}".encode()), f"mount {folder}")


def unmount(where):
    """Takes the topmost thing away that is mounted there, when nobody uses it any more."""
    check(LIBC.umount2(os.fsencode(where), DETACH), f"umount {where}")
