#!/usr/bin/env bash
# ./dev reproduce [BUILD-DIRECTORY]: whether a second build, elsewhere and under other circumstances, makes the same files bit
# for bit as build/release (or BUILD-DIRECTORY, which is taken as it is): module, programs, static libraries and packages.
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

usage="usage: ./dev reproduce [BUILD-DIRECTORY]"
files=(lib/libSnmpTalvikMibModule.so bin/talvik-agentd bin/talvik-backendd bin/talvikctl
    lib/libtalvik_framework.a lib/libtalvik_reference_platform.a lib/libtalvik_snmp_types.a)
[ $# -le 1 ] || misuse "$usage"
case "${1:-}" in -*) misuse "$usage" ;; esac
setup
if [ $# = 1 ]; then
    first=$(realpath "$1")
    [ -f "$first/CMakeCache.txt" ] || fail "$first is no build directory"
else
    first="$root/build/release"
    configureAndBuild release "${packageTargets[@]}"
fi

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
copy="$work/a folder with another and longer path"
second="$copy/build/release"
SOURCE_DATE_EPOCH=$(git -C "$root" log -1 --format=%ct) || fail "git cannot tell the time of the last commit (message above)"
export SOURCE_DATE_EPOCH

# Another place, time zone, language, home, file mode and number of jobs, no compiler cache, neither tests nor benchmarks.
elsewhere()
{
    (
        umask 077
        export TZ=Pacific/Kiritimati LC_ALL=C HOME="$work" USER=someone LOGNAME=someone CCACHE_DISABLE=1
        cd "$work" && "$@"
    )
}

say "second build: $second"
mkdir -p "$copy"
(cd "$root" && git ls-files -z --cached --others --exclude-standard | while IFS= read -r -d '' file; do
    [ ! -f "$file" ] || printf '%s\0' "$file"
done | tar --null -T - -cf -) | tar -xf - -C "$copy" || fail "the tree could not be copied to $work"
elsewhere cmake --preset release -S "$copy" -DTALVIK_BUILD_TESTS=OFF -DTALVIK_BUILD_BENCH=OFF >"$work/configure.log" 2>&1 || {
    cat "$work/configure.log" >&2
    fail "cmake cannot configure the second build (messages above)"
}
elsewhere cmake --build "$second" --parallel "$((jobs + 1))" --target "${packageTargets[@]}" >"$work/build.log" 2>&1 || {
    tail -n 40 "$work/build.log" >&2
    fail "the second build failed (messages above)"
}

# compare ONE OTHER: says where two files differ.
different=()
compare()
{
    if cmp "$1" "$2"; then
        printf 'the same: %s  %s\n' "$(sha256sum <"$1" | cut -c 1-16)" "${1##*/}"
    else
        different+=("${1##*/}")
        diff <(strings -a "$1") <(strings -a "$2") | head -n 20 || true
    fi
}

comparePackages()
{
    local package
    bash "$root/packaging/make-packages.sh" "$first" "$work/first-packages" ||
        fail "the packages of $first could not be made (messages above)"
    elsewhere bash "$copy/packaging/make-packages.sh" "$second" "$work/second-packages" ||
        fail "the packages of $second could not be made a second time (messages above)"
    for package in "$work"/first-packages/*.deb; do
        compare "$package" "$work/second-packages/${package##*/}"
    done
}

say "comparison"
for file in "${files[@]}"; do
    compare "$first/$file" "$second/$file"
done
comparePackages
[ ${#different[@]} = 0 ] || fail "these differ between $first and a second build of the same sources: ${different[*]}"
say "reproduce: a second build made the same files"
