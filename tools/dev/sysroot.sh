#!/usr/bin/env bash
# Makes build/sysroot-aarch64, the libraries that the aarch64 preset is built and run with: Debian's arm64 packages, unpacked.
# They cannot be installed beside the machine's own, and this takes no root: apt keeps its lists and packages in the build
# folder and never looks at what is installed here. A second call is instant until the list of packages changes or the
# sysroot is a week old; then it is made anew, or stays if the network is away.
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

[ $# = 0 ] || misuse "sysroot takes no argument"
sysroot="$root/build/sysroot-aarch64"
work="$root/build/.sysroot-aarch64"
list="$root/packaging/debian-packages.txt"
seconds=1200  # that reading the lists, or loading the packages, may take

# What the tree links, from its section of the list, and what its tests do.
packages()
{
    awk '/^#/ {inside = ($2 == "libraries")} /^$/ {inside = 0} inside && !/^#/ {print $1}' "$list"
    printf '%s\n' libgtest-dev libgmock-dev libstdc++6
}

mapfile -t wanted < <(packages)
stamp=$(printf '%s\n' "${wanted[@]}" | cat - "${BASH_SOURCE[0]}" | sha256sum | cut -d ' ' -f 1)
upToDate() { [ "$(cat "$sysroot/.stamp" 2>/dev/null)" = "$stamp" ]; }
if upToDate && isRecent "$sysroot/.stamp"; then exit 0; fi

exec 9>"$root/build/.sysroot-aarch64.lock"
flock -w "$seconds" 9 || fail "another ./dev still makes $sysroot; wait for it, or end it, and try again"
if upToDate && isRecent "$sysroot/.stamp"; then exit 0; fi

# Ends the script: with the sysroot that is there, if nothing but its age is against it.
cannotRenew()
{
    upToDate || fail "$@"
    echo "sysroot: $* Going on with that of $(date -r "$sysroot/.stamp" +%F), which may lack updates." >&2
    rm -rf "$work"
    exit 0
}

# The machine's sources, keys, proxies and preferences hold; its hooks, lists and packages are left alone. apt reads the main
# file last, so what stands here wins.
configureApt()
{
    mkdir -p "$work/lists/partial" "$work/archives/partial"
    : >"$work/status"
    {
        [ ! -f /etc/apt/apt.conf ] || echo '#include "/etc/apt/apt.conf"'
        cat <<TEXT
#clear APT::Update::Pre-Invoke;
#clear APT::Update::Post-Invoke;
#clear APT::Update::Post-Invoke-Success;
#clear APT::Architectures;
#clear Acquire::Languages;
Acquire::Languages "none";
APT::Architecture "arm64";
APT::Architectures { "arm64"; };
APT::Install-Recommends "false";
APT::Get::Assume-Yes "true";
APT::Sandbox::User "root";  // the build folder may be one that apt's own user cannot enter
Acquire::Retries "3";
Acquire::http::Timeout "30";
Acquire::https::Timeout "30";
Dir::State "$work";
Dir::State::status "$work/status";
Dir::State::lists "$work/lists";
Dir::Cache "$work";
Dir::Cache::archives "$work/archives";
Dir::Log "$work";
TEXT
    } >"$work/apt.conf"
    echo "Dir::Etc::main \"$work/apt.conf\";" >"$work/first.conf"
    export APT_CONFIG="$work/first.conf"
}

# Descriptor 9 is the lock; what outlives a killed script must not keep it.
aptGet() { timeout "$seconds" apt-get -q "$@" </dev/null 9>&-; }

# Links to absolute paths would lead out of the sysroot.
makeLinksRelative()
{
    local link target
    while IFS= read -r -d '' link; do
        target=$(readlink "$link")
        ln -sfnr "$work/root$target" "$link"
    done < <(find "$work/root" -type l -lname '/*' -print0)
}

say "sysroot: unpacking Debian's arm64 packages in build/sysroot-aarch64"
rm -rf "$work"
configureApt
aptGet update || echo "sysroot: not every list of packages could be read (above); going on with what there is" >&2
aptGet install --download-only "${wanted[@]}" ||
    cannotRenew "apt cannot load the arm64 packages: ${wanted[*]} (messages above). Check the network, and that the apt sources of" \
        "this machine offer arm64: a source with \"Architectures: amd64\" or [arch=amd64] does not. Then try again."
mkdir -p "$work/root"
# Programs of arm64 and their settings: the emulator would take them for this machine's.
unwanted=(bin sbin usr/bin usr/sbin etc var usr/share/doc usr/share/man usr/share/locale)
for package in "$work"/archives/*.deb; do
    dpkg-deb --fsys-tarfile "$package" 9>&- |
        tar -x -C "$work/root" --no-same-owner "${unwanted[@]/#/--exclude=./}" 9>&- ||
        fail "$package could not be unpacked (messages above): is the disk full? Then try again."
done
makeLinksRelative
echo "$stamp" >"$work/root/.stamp"
rm -rf "$sysroot"
mv "$work/root" "$sysroot"
rm -rf "$work"
