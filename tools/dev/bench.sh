#!/usr/bin/env bash
# ./dev bench [ARGUMENTS]: every benchmark of the release build, one after the other.
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

setup
configureAndBuild release
shopt -s nullglob
programs=("$root"/build/release/bin/talvik-bench-*)
[ ${#programs[@]} -gt 0 ] || fail "the release build made no build/release/bin/talvik-bench-*; is TALVIK_BUILD_BENCH on?"
for program in "${programs[@]}"; do
    say "$(basename "$program")"
    must "$program" "$@"
done
