#!/usr/bin/env bash
# ./dev zabbix-test: contrib/zabbix in Zabbix itself, a server with frontend and database of its own. Takes packages beyond those
# of ./dev setup, which it installs. With TALVIK_BIN_DIR the programs of that folder are tested, and none are built.
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

[ $# = 0 ] || misuse "zabbix-test takes no argument \"$1\""
seconds=900  # that this may take

setup
bash "$tools/setup.sh" --quiet "$root/packaging/zabbix-packages.txt"
[ -n "${TALVIK_BIN_DIR:-}" ] || configureAndBuild release SnmpTalvikMibModule talvik-agentd talvik-backendd
say "Zabbix with contrib/zabbix"
export TALVIK_BIN_DIR="${TALVIK_BIN_DIR:-$root/build/release/bin}"
# Debian's own Python, which python3-yaml is made for.
must timeout --foreground --kill-after=90 "$seconds" \
    /usr/bin/python3 -B "$root/tests/contrib/zabbix_server/zabbix_server_test.py" -v
