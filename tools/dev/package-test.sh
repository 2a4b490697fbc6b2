#!/usr/bin/env bash
# ./dev package-test: the packages of the release, installed, upgraded, removed and purged on a clean Debian root with systemd.
# Takes root, and the network for the root, which is kept in build/package-root.
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

[ $# = 0 ] || misuse "package-test takes no argument \"$1\""
bash "$tools/package.sh" release
if [ "$(id -u)" != 0 ]; then
    [ "${CI:-}" != true ] || fail "package-test needs root, for a root folder and namespaces of its own; run it as root"
    echo "package-test: skipped: needs root, for a root folder and namespaces of its own"
    exit 0
fi

# What the packages depend on is in the root already, so that nothing is fetched while they are tested.
suite=bookworm
base="$root/build/package-root"
seconds=1200  # that this may take

# The machine's sources of Debian; other vendors' packages have no place in a clean root.
sources=()
for file in /etc/apt/sources.list /etc/apt/sources.list.d/debian.{list,sources}; do
    [ ! -s "$file" ] || sources+=("$file")
done

makeRoot()
{
    local needed list="$base/.packages" new="$base.new"
    # shellcheck disable=SC2016
    needed=$(sed -n 's/^[a-z]*: //p' "$root/packaging/deb/shared-libraries.txt" | tr ',' '\n' | awk '{print $1}' | sort -u | paste -sd,)
    needed="adduser,iproute2,snmp,systemd,$needed"
    if [ "$(cat "$list" 2>/dev/null)" = "$needed" ] && isRecent "$list"; then
        return 0
    fi
    say "a clean root: build/package-root"
    rm -rf "$new"
    if ! timeout "$seconds" mmdebstrap --quiet --variant=minbase --dpkgopt=force-unsafe-io \
        --skip=cleanup/apt/lists --include="$needed" "$suite" "$new" "${sources[@]}"; then
        rm -rf "$new"
        [ "$(cat "$list" 2>/dev/null)" = "$needed" ] ||
            fail "mmdebstrap cannot make $base from this machine's apt sources (messages above). Check the network; then try again."
        echo "package-test: going on with the root of $(date -r "$list" +%F), which may lack updates" >&2
        return 0
    fi
    rm -rf "$base"
    mv "$new" "$base"
    printf '%s\n' "$needed" >"$list"
}

makeRoot
say "the packages on a clean root"
TALVIK_PACKAGES="$root/build/release/packages" TALVIK_ROOT="$base" \
    must python3 -B "$root/tests/package/clean_root_test.py"
