# What the scripts of this folder share; sourced, not run.
# shellcheck shell=bash
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
tools="$root/tools/dev"
jobs=$(nproc 2>/dev/null || echo 2)

# A stage's headline.
say() { printf '\n== %s\n' "$*"; }

# Ends the script: what failed, where, and what to do.
fail()
{
    printf 'dev: %s\n' "$*" >&2
    exit 1
}

# Ends the script because it was called wrongly.
misuse()
{
    printf 'dev: %s\n' "$*" >&2
    exit 2
}

# Runs a command on its own and says which one failed.
must()
{
    "$@" || fail "this command failed (exit $?): $*"
}

setup() { bash "$tools/setup.sh" --quiet; }

knownPresets="release debug asan tsan coverage fuzz aarch64"

requirePreset()
{
    case " $knownPresets " in
        *" $1 "*) ;;
        *) misuse "there is no preset \"$1\"; presets: $knownPresets" ;;
    esac
}

# The words before a command that runs programs of a preset, one a line. The thread sanitizer of this compiler does not cope
# with a widely randomised address space.
launcherOf()
{
    if [ "$1" = tsan ] && setarch "$(uname -m)" -R true 2>/dev/null; then
        printf '%s\n' setarch "$(uname -m)" -R
    fi
}

# configureAndBuild PRESET [TARGET...]
configureAndBuild()
{
    local preset=$1 launcher
    shift
    # The build runs test programs as well, to learn their tests.
    mapfile -t launcher < <(launcherOf "$preset")
    local targets=()
    [ $# = 0 ] || targets=(--target "$@")
    [ "$preset" != aarch64 ] || bash "$tools/sysroot.sh" || exit 1  # it has said what failed
    say "build $preset${*:+: $*}"
    (cd "$root" && cmake --preset "$preset" >"$root/build/.configure-$preset.log" 2>&1) || {
        cat "$root/build/.configure-$preset.log" >&2
        fail "cmake cannot configure the preset \"$preset\" (messages above). After a change of compiler or" \
            "libraries, remove build/$preset and try again."
    }
    "${launcher[@]}" cmake --build "$root/build/$preset" --parallel "$jobs" "${targets[@]}" ||
        fail "the build of preset \"$preset\" failed (messages above); it is in build/$preset"
}

# isRecent FILE: whether what FILE marks was made in the last week; what is older may lack Debian's updates.
isRecent() { [ -n "$(find "$1" -mtime -7 2>/dev/null)" ]; }

# What the packages are made of; everything else that is built is for tests and benchmarks.
packageTargets=(SnmpTalvikMibModule talvik-agentd talvik-backendd talvikctl talvik-printed-files
    talvik_framework talvik_reference_platform talvik_snmp_types)

mkdir -p "$root/build"
