#!/bin/bash
# boot_root.sh BASE SCRATCH PACKAGES FIRST: a machine of its own, whose root is a copy of the folder BASE that lasts as long as the
# machine, with the packages of the folder PACKAGES in /packages. Its first process is systemd, or nothing that does anything, as
# in a container, if FIRST is "nothing". Run as the first process of new namespaces (unshare --mount --pid --net --uts --ipc
# --fork, --cgroup for systemd); SCRATCH is an empty folder to mount it on.
set -euo pipefail

base=$1 scratch=$2 packages=$3 first=$4
root="$scratch/root"

mount --make-rprivate /
mount -t tmpfs tmpfs "$scratch"
mkdir "$root" "$scratch/upper" "$scratch/work"
mount -t overlay overlay -o "lowerdir=$base,upperdir=$scratch/upper,workdir=$scratch/work" "$root"
cp -a "$packages" "$root/packages"

mount -t proc proc "$root/proc"
mount -t sysfs -o ro sysfs "$root/sys"
mount -t tmpfs -o mode=755 tmpfs "$root/run"
mount -t tmpfs -o mode=755 tmpfs "$root/dev"
for device in null zero full random urandom tty; do
    : >"$root/dev/$device"
    mount --bind "/dev/$device" "$root/dev/$device"
done
ln -s pts/ptmx "$root/dev/ptmx"
mountControlGroups()
{
    if [ -e /sys/fs/cgroup/cgroup.controllers ]; then
        mount -t cgroup2 cgroup2 "$root/sys/fs/cgroup"
    else
        mount -t tmpfs -o mode=755 tmpfs "$root/sys/fs/cgroup"
        mkdir "$root/sys/fs/cgroup/unified" "$root/sys/fs/cgroup/systemd"
        mount -t cgroup2 cgroup2 "$root/sys/fs/cgroup/unified"
        mount -t cgroup -o none,name=systemd cgroup "$root/sys/fs/cgroup/systemd"
    fi
}
[ "$first" = nothing ] || mountControlGroups

cd "$root"
pivot_root . mnt
umount -l /mnt
hostname talvik-test
[ "$first" != nothing ] || exec sleep infinity
exec env -i container=test PATH=/usr/sbin:/usr/bin:/sbin:/bin /lib/systemd/systemd --unit=basic.target --log-target=journal --show-status=0
