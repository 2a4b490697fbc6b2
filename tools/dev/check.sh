#!/usr/bin/env bash
# ./dev check: what a change must obey besides the tests.
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

[ $# = 0 ] || misuse "check takes no argument"
setup
cd "$root"

failed=()
# stage NAME COMMAND...: runs on after a failure, so that one run shows everything.
stage()
{
    local name=$1
    shift
    say "check: $name"
    "$@" || failed+=("$name")
}

cppFiles() { git ls-files -z --cached --others --exclude-standard -- '*.h' '*.cpp' | existing; }

existing()
{
    while IFS= read -r -d '' file; do [ ! -f "$file" ] || printf '%s\0' "$file"; done
}

formatting()
{
    cppFiles | xargs -0 -r -n 32 -P "$jobs" clang-format --dry-run -Werror || {
        echo "formatting differs; ./dev format puts it right" >&2
        return 1
    }
}

stage "formatting" formatting
stage "room rules" python3 "$tools/check_rooms.py"
stage "vocabulary" python3 "$tools/check_vocabulary.py"
stage "changelog" python3 "$tools/check_changelog.py"
configureAndBuild release
stage "headers compile alone" python3 "$tools/check_headers.py" build/release
stage "clang-tidy" python3 "$tools/check_tidy.py" build/release
stage "exported and imported symbols" \
    ctest --test-dir build/release --output-on-failure --no-tests=error -L '^binary$'

[ ${#failed[@]} = 0 ] || fail "these checks failed: ${failed[*]}"
say "check: all passed"
