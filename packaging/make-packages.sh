#!/usr/bin/env bash
# make-packages.sh BUILD OUT [VERSION]: cpack's packages of the build tree BUILD, in the empty or new folder OUT.
set -euo pipefail

build=$1 out=$2 version=${3:-}
rm -rf "$out"
mkdir -p "$out"
# cpack works beside its results; what it works with goes when it is done.
log="$out/.cpack.log"
arguments=(--config "$build/CPackConfig.cmake" -G DEB -B "$out")
[ -z "$version" ] || arguments+=(-R "$version")
cpack "${arguments[@]}" >"$log" 2>&1 || {
    cat "$log" >&2
    exit 1
}
rm -rf "$out/_CPack_Packages" "$log"
# Packages of debug symbols are packages like others; cpack gives them another ending.
for package in "$out"/*.ddeb; do
    mv "$package" "${package%.ddeb}.deb"
done
