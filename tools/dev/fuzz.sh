#!/usr/bin/env bash
# ./dev fuzz [SECONDS [TARGET]]: each fuzz target for so long. What they find new is kept in build/fuzz/corpus-TARGET.
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

[ $# -le 2 ] || misuse "usage: ./dev fuzz [SECONDS [TARGET]]"
seconds=${1:-60}
only=${2:-}
[[ $seconds =~ ^[1-9][0-9]*$ ]] || misuse "\"$seconds\" is no number of seconds"

setup
configureAndBuild fuzz talvik-fuzz-targets

work="$root/build/fuzz"
shopt -s nullglob
programs=()
for program in "$work"/bin/talvik-fuzz-*; do
    [ -f "$program" ] && [ -x "$program" ] || continue
    target=$(basename "$program")
    target=${target#talvik-fuzz-}
    [ -z "$only" ] || [ "$only" = "$target" ] || continue
    programs+=("$program")
done
[ ${#programs[@]} -gt 0 ] || fail "there is no fuzz target${only:+ \"$only\"} in build/fuzz/bin; known:" \
    "$(cd "$work/bin" 2>/dev/null && echo talvik-fuzz-*)"

for program in "${programs[@]}"; do
    target=$(basename "$program")
    target=${target#talvik-fuzz-}
    found="$work/corpus-$target"
    mkdir -p "$found" "$work/crashes"
    corpora=("$found")
    # The committed corpus is only read: new inputs go to the first folder named.
    for folder in "$root/fuzz/corpus/$target" "$root/fuzz/corpus/${target//-/_}"; do
        [ ! -d "$folder" ] || corpora+=("$folder")
    done
    say "fuzz $target for $seconds s"
    options=(-max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 -print_final_stats=1)
    options+=(-artifact_prefix="$work/crashes/$target-")
    [ ! -f "$root/fuzz/$target.dict" ] || options+=(-dict="$root/fuzz/$target.dict")
    if ! "$program" "${options[@]}" "${corpora[@]}" </dev/null >"$work/$target.log" 2>&1; then
        tail -n 80 "$work/$target.log" >&2
        fail "fuzz target $target found something: the input is in build/fuzz/crashes, the report in" \
            "build/fuzz/$target.log. Run $program FILE to see it again, then keep the input as a named test."
    fi
    grep -E '^(stat::|Done)' "$work/$target.log" || true
done
say "fuzz: nothing found"
