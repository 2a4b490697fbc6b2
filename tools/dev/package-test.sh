#!/usr/bin/env bash
# ./dev package-test: the packages of the release, installed, upgraded, removed and purged on a clean Debian root with systemd.
# Takes root, and the network for the root, which is kept in build/package-root.
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

[ $# = 0 ] || misuse "package-test takes no argument \"$1\""
if [ "$(id -u)" != 0 ]; then
    echo "package-test: skipped: needs root, for a root folder and namespaces of its own"
    exit 0
fi

# What the packages depend on is in the root already, so that nothing is fetched while they are tested.
suite=bookworm
base="$root/build/package-root"
makeRoot()
{
    local needed list="$base/.packages"
    # shellcheck disable=SC2016
    needed=$(sed -n 's/^[a-z]*: //p' "$root/packaging/deb/shared-libraries.txt" | tr ',' '\n' | awk '{print $1}' | sort -u | paste -sd,)
    needed="adduser,iproute2,snmp,systemd,$needed"
    if [ "$(cat "$list" 2>/dev/null)" = "$needed" ]; then
        return 0
    fi
    say "a clean root: build/package-root"
    rm -rf "$base"
    must mmdebstrap --quiet --variant=minbase --dpkgopt=force-unsafe-io --skip=cleanup/apt/lists --include="$needed" \
        "$suite" "$base"
    printf '%s\n' "$needed" >"$list"
}

bash "$tools/package.sh" release
makeRoot
say "the packages on a clean root"
TALVIK_PACKAGES="$root/build/release/packages" TALVIK_ROOT="$base" \
    must python3 -B "$root/tests/package/clean_root_test.py"
