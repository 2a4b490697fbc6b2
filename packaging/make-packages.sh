#!/usr/bin/env bash
# make-packages.sh BUILD OUT [VERSION]: cpack's packages of the build tree BUILD, in the folder OUT, which is new, empty or has
# packages of an earlier call only; these go.
set -euo pipefail

build=$1 out=$2 version=${3:-}
refuse()
{
    echo "make-packages: $out $1; name an empty folder, or one that does not exist yet" >&2
    exit 1
}
# OUT is emptied, so it must hold nothing but what this makes.
if [ -e "$out" ]; then
    [ -d "$out" ] || refuse "is no folder"
    foreign=$(find "$out" -mindepth 1 -maxdepth 1 ! -name 'talvik-*deb' ! -name .cpack.log ! -name _CPack_Packages)
    [ -z "$foreign" ] || refuse "holds what this did not make: ${foreign%%$'\n'*}"
fi
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
