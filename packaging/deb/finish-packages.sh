#!/usr/bin/env bash
# finish-packages.sh PACKAGE...: what cpack leaves to be done, then each package is built anew by dpkg-deb. That sorts the files
# and gives none a time later than SOURCE_DATE_EPOCH, so the same sources make the same package, octet by octet.
set -euo pipefail
umask 022
export LC_ALL=C

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

# The run-time linker never looks for a module: it needs no ldconfig, which is all that cpack's own scripts call.
dropLdconfigCalls()
{
    local script
    for script in "$1"/DEBIAN/postinst "$1"/DEBIAN/postrm; do
        if [ -e "$script" ] && grep -qE '^[[:space:]]*ldconfig$' "$script"; then
            rm "$script"
        fi
    done
}

# finishDebugSymbols TREE: as Debian's own packages of debug symbols are.
finishDebugSymbols()
{
    local tree=$1 name ids
    name=$(dpkg-deb --field "$package" Package)
    ids=$(cd "$tree/usr/lib/debug/.build-id" && find . -name '*.debug' | sort | sed 's|^\./\(..\)/\(.*\)\.debug$|\1\2|' | xargs)
    sed -i '/^Section:/d; /^Priority:/d; /^Auto-Built-Package:/d; /^Build-Ids:/d; /^$/d' "$tree/DEBIAN/control"
    printf 'Section: debug\nPriority: optional\nAuto-Built-Package: debug-symbols\nBuild-Ids: %s\n' "$ids" >>"$tree/DEBIAN/control"
    # objcopy made them with the file mode of whoever called cpack.
    find "$tree/usr/lib/debug" -type f -exec chmod 644 {} +
    mkdir -p "$tree/usr/share/doc"
    ln -sfn "${name%-dbgsym}" "$tree/usr/share/doc/$name"
}

writeChecksums()
{
    (cd "$1" && find . -path ./DEBIAN -prune -o -type f -printf '%P\0' | sort -z | xargs -0 md5sum >DEBIAN/md5sums)
    chmod 644 "$1/DEBIAN/md5sums"
}

for package in "$@"; do
    tree="$scratch/$(basename "$package")"
    dpkg-deb --raw-extract "$package" "$tree"
    dropLdconfigCalls "$tree"
    case $package in
        *.ddeb) finishDebugSymbols "$tree" ;;
    esac
    writeChecksums "$tree"
    find "$tree" -type d -exec chmod 755 {} +
    dpkg-deb --root-owner-group -Zgzip -z6 --build "$tree" "$package" >/dev/null
    rm -rf "$tree"
done
