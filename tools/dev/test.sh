#!/usr/bin/env bash
# ./dev test: everything that must pass. ./dev test PRESET [CTEST-ARGUMENTS]: one preset's tests.
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

logs="$root/build/test-logs"
mkdir -p "$logs"

# The sanitizers watch the code in one process, and the address sanitizer the module across its border too; the other tests
# are about the built release.
testLabels()
{
    case $1 in
        asan) printf '%s\n' -L '^(unit|fuzz|contract)$' ;;
        tsan) printf '%s\n' -L '^(unit|fuzz)$' ;;
    esac
}

# testPreset PRESET [CTEST-ARGUMENTS]
testPreset()
{
    local preset=$1 arguments launcher
    shift
    mapfile -t arguments < <(testLabels "$preset")
    mapfile -t launcher < <(launcherOf "$preset")
    say "test $preset"
    "${launcher[@]}" ctest --test-dir "$root/build/$preset" --output-on-failure --no-tests=error \
        --parallel "$jobs" --timeout 300 "${arguments[@]}" "$@" </dev/null 2>&1 | tee "$logs/$preset.log"
}

# The lines that say how it went, last.
summary()
{
    local preset
    say "summary"
    for preset in "$@"; do
        [ -f "$logs/$preset.log" ] || continue
        printf '%s:\n' "$preset"
        grep -E '% tests passed|tests failed out of|No tests were found' "$logs/$preset.log" || echo "no result"
    done
}

export ASAN_OPTIONS=${ASAN_OPTIONS:-detect_stack_use_after_return=1:strict_string_checks=1}
export UBSAN_OPTIONS=${UBSAN_OPTIONS:-print_stacktrace=1}
export TSAN_OPTIONS=${TSAN_OPTIONS:-halt_on_error=1:second_deadlock_stack=1}

setup
presets=(asan release)
if [ $# -gt 0 ]; then
    requirePreset "$1"
    case $1 in
        release | debug | asan | tsan) ;;
        *) misuse "the preset \"$1\" has no tests to run; it is one of release, debug, asan, tsan" ;;
    esac
    presets=("$1")
    shift
fi

failed=()
for preset in "${presets[@]}"; do
    rm -f "$logs/$preset.log"
    configureAndBuild "$preset"
    testPreset "$preset" "$@" || failed+=("$preset")
done
summary "${presets[@]}"
[ ${#failed[@]} = 0 ] ||
    fail "tests failed in: ${failed[*]}. The output is in build/test-logs; one test again: ./dev test ${failed[0]} -R NAME"
