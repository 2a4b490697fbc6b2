#!/usr/bin/env bash
# ./dev package [PRESET]: the Debian packages of a preset, in build/PRESET/packages, looked at by lintian.
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

[ $# -le 1 ] || misuse "usage: ./dev package [PRESET]"
preset=${1:-release}
case $preset in
    release | aarch64) ;;
    *) misuse "packages are made of the presets release and aarch64, not of \"$preset\"" ;;
esac
setup
configureAndBuild "$preset" "${packageTargets[@]}"

# No file of a package is younger than the commit that it was made from.
SOURCE_DATE_EPOCH=${SOURCE_DATE_EPOCH:-$(git -C "$root" log -1 --format=%ct)} ||
    fail "git cannot tell the time of the last commit (message above); set SOURCE_DATE_EPOCH to a time in seconds"
export SOURCE_DATE_EPOCH

say "package $preset"
bash "$root/packaging/make-packages.sh" "$root/build/$preset" "$root/build/$preset/packages" ||
    fail "the packages of preset \"$preset\" could not be made (messages above)"
say "lintian"
mapfile -t packages < <(find "$root/build/$preset/packages" -maxdepth 1 -name '*.deb' | sort)
must lintian --allow-root --fail-on error,warning "${packages[@]}"
must python3 -B "$root/tests/package/check_packages.py" "$root/build/$preset"
say "packages: build/$preset/packages"
printf '%s\n' "${packages[@]##*/}"
