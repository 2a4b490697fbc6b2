#!/usr/bin/env bash
# Installs the packages of packaging/debian-packages.txt that this machine does not have; with --quiet LIST those of that list.
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

list="$root/packaging/debian-packages.txt"
quiet=false
case ${1:-} in
    "") ;;
    --quiet)
        quiet=true
        list=${2:-$list}
        ;;
    *) misuse "setup takes no argument \"$1\"" ;;
esac

command -v dpkg-query >/dev/null && command -v apt-get >/dev/null ||
    fail "setup installs Debian packages, and this machine has no apt. Install by hand what $list names, for" \
        "your system, and call cmake --preset release yourself."

isInstalled()
{
    # shellcheck disable=SC2016
    [ "$(dpkg-query -W -f='${db:Status-Status}\n' "$1" 2>/dev/null | head -n 1)" = installed ]
}

missing=()
while read -r package _; do
    case $package in
        "" | "#"*) continue ;;
    esac
    isInstalled "$package" || missing+=("$package")
done <"$list"

if [ ${#missing[@]} = 0 ]; then
    $quiet || echo "setup: every package of packaging/debian-packages.txt is installed"
    exit 0
fi

say "setup: installing from Debian: ${missing[*]}"
asRoot=()
if [ "$(id -u)" != 0 ]; then
    command -v sudo >/dev/null ||
        fail "these packages are missing, and installing them takes root, but there is no sudo here. As root, run:" \
            "apt-get install --no-install-recommends ${missing[*]}"
    asRoot=(sudo)
fi
apt=("${asRoot[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -q -o DPkg::Lock::Timeout=300)
"${apt[@]}" update </dev/null ||
    fail "apt-get update failed (messages above): check the network and the apt sources, then run ./dev setup again"

# Some of the packages bring a service, snmptrapd even snmpd's. Nobody asked for these: they do not start now, nor at the next
# boot. A service that was there before stays as it is.
policy=/usr/sbin/policy-rc.d
dropPolicy() { "${asRoot[@]}" rm -f "$policy"; }
if [ ! -e "$policy" ]; then
    trap dropPolicy EXIT
    printf '#!/bin/sh\nexit 101\n' | "${asRoot[@]}" tee "$policy" >/dev/null
    "${asRoot[@]}" chmod 755 "$policy"
fi
newServices=()
for service in snmpd snmptrapd prometheus prometheus-snmp-exporter snmptt; do
    isInstalled "$service" || newServices+=("$service.service")
done
isInstalled postgresql-15 || newServices+=(postgresql.service)
isInstalled zabbix-server-pgsql || newServices+=(zabbix-server.service)
isInstalled snmptrapd || newServices+=(snmptrapd.socket)
"${apt[@]}" install -y --no-install-recommends "${missing[@]}" </dev/null ||
    fail "apt-get could not install: ${missing[*]} (messages above). The tree is made for Debian 12."
if command -v systemctl >/dev/null; then
    for service in "${newServices[@]}"; do
        "${asRoot[@]}" systemctl disable --quiet "$service" 2>/dev/null || true  # no systemd runs here
    done
fi
