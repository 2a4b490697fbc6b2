#!/usr/bin/env bash
# ./dev test: everything that must pass. ./dev test PRESET [CTEST-ARGUMENTS]: one preset's tests.
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

logs="$root/build/test-logs"
mkdir -p "$logs"

# The labels of the tests that a preset runs; none stands for every test. The sanitizers watch the code in one process, and the
# address sanitizer the module across its border too, the thread sanitizer what has threads; the other tests are about the built
# release.
testLabels()
{
    case $1 in
        asan) echo "unit tool fuzz contract" ;;
        tsan) echo "unit" ;;
        aarch64) echo "unit tool fuzz contract e2e" ;;
    esac
}

# What these tests take; a sanitizer's build leaves the rest of the tree out.
testTargets()
{
    local label
    case $1 in
        asan | tsan)
            for label in $(testLabels "$1"); do
                echo "talvik-tests-$label"
            done
            ;;
    esac
}

# testPreset PRESET [CTEST-ARGUMENTS]
testPreset()
{
    local preset=$1 labels arguments=() launcher
    shift
    labels=$(testLabels "$preset")
    [ -z "$labels" ] || arguments=(-L "^(${labels// /|})\$")
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
        release | debug | asan | tsan | aarch64) ;;
        *) misuse "the preset \"$1\" has no tests to run; it is one of release, debug, asan, tsan, aarch64" ;;
    esac
    presets=("$1")
    shift
fi

failed=()
for preset in "${presets[@]}"; do
    rm -f "$logs/$preset.log"
    mapfile -t targets < <(testTargets "$preset")
    configureAndBuild "$preset" "${targets[@]}"
    testPreset "$preset" "$@" || failed+=("$preset")
done
summary "${presets[@]}"
[ ${#failed[@]} = 0 ] ||
    fail "tests failed in: ${failed[*]}. The output is in build/test-logs; one test again: ./dev test ${failed[0]} -R NAME"
