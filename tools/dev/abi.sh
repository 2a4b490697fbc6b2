#!/usr/bin/env bash
# ./dev abi [--update]
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

case "${1:-}" in
    "") what=compare ;;
    --update) what=update ;;
    *) misuse "usage: ./dev abi [--update]" ;;
esac
[ $# -le 1 ] || misuse "usage: ./dev abi [--update]"
setup
configureAndBuild release talvik-boundary SnmpTalvikMibModule
library="$root/build/release/tests/binary/talvik-boundary.so"
check() { python3 "$root/tests/binary/check_abi.py" "$@" --library "$library"; }

say "abi: $what"
status=0
check "$what" || status=1
check named || status=1
symbols=check
[ "$what" = compare ] || symbols=write
python3 "$root/tests/binary/platform_table.py" "$symbols" --file "$root/build/release/lib/libSnmpTalvikMibModule.so" || status=1
if [ "$what" = compare ]; then
    check layout --module "$root/build/release/lib/libSnmpTalvikMibModule.so" || status=1
fi
exit $status
