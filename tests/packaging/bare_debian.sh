#!/usr/bin/env bash
# Installs the Debian package on a bare Debian 12 in a temporary folder, starts the program there as an ordinary user,
# removes it again and fails when anything of it is left. Needs root, debootstrap and the network, and takes minutes, so
# it is not among the tests.
#
# Usage: tests/packaging/bare_debian.sh PACKAGE.deb [MIRROR]
set -euo pipefail

package=$(realpath "${1:?the package is missing}")
mirror=${2:-http://deb.debian.org/debian}
name=$(dpkg-deb -f "$package" Package)
program=kvOrvantaLogic_Tool
work=$(mktemp -d)
bare=$work/bare

cleanUp() {
    umount "$bare/proc" 2>/dev/null || true
    rm -rf --one-file-system "$work"
}
trap cleanUp EXIT
trap 'exit 143' INT TERM HUP

inside() {
    chroot "$bare" env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin LC_ALL=C.UTF-8 DEBIAN_FRONTEND=noninteractive "$@"
}

aptGet() {
    inside apt-get -q -y "$@" >"$work/apt.log" 2>&1 || {
        cat "$work/apt.log"
        return 1
    }
}

# Every path outside of what belongs to users, to the kernel and to apt and dpkg themselves.
listing() {
    find "$bare" -xdev \( -path "$bare/home" -o -path "$bare/proc" -o -path "$bare/tmp" -o -path "$bare/var/cache/apt" \
        -o -path "$bare/var/lib/apt" -o -path "$bare/var/lib/dpkg" -o -path "$bare/var/log" \) -prune -o -printf '/%P\n' |
        sort
}

packages() {
    # shellcheck disable=SC2016 # for dpkg-query to fill in
    inside dpkg-query -W -f '${Package}\n' | sort -u
}

# Runs the program for a moment without a screen. It is to show a window, to go on until it is ended, and to complain of
# nothing. The offscreen platform says something of its own whenever a window is shown.
start() {
    local status=0 shown='This plugin does not support propagateSizeHints()'
    rm -rf "$bare/home/user"
    inside install -d -o user -g user -m 700 /home/user /home/user/run
    inside install -d -o user -g user "/home/user/Library/Audio/Presets" \
        "/home/user/Library/Application Support/Logic/Plug-In Settings"
    chroot --userspec=user:user "$bare" env -i PATH=/usr/bin:/bin HOME=/home/user XDG_RUNTIME_DIR=/home/user/run \
        KV_LOCAL_LIBRARY=/home/user/Library LC_ALL=C.UTF-8 QT_QPA_PLATFORM=offscreen \
        timeout 5 "$program" >"$work/said" 2>&1 || status=$?
    if [[ $status -ne 124 ]] || ! grep -qxF "$shown" "$work/said" || grep -vxF "$shown" "$work/said"; then
        echo "$program ended with $status and said:"
        cat "$work/said"
        return 1
    fi
}

debootstrap --variant=minbase --include=ca-certificates bookworm "$bare" "$mirror" >"$work/debootstrap.log" 2>&1 || {
    tail "$work/debootstrap.log"
    exit 1
}
mount -t proc proc "$bare/proc"
cp /etc/resolv.conf "$bare/etc/resolv.conf"
# No service that comes along with a library is to be started.
printf '#!/bin/sh\nexit 101\n' >"$bare/usr/sbin/policy-rc.d"
chmod 755 "$bare/usr/sbin/policy-rc.d"
inside useradd --create-home user
aptGet update
cp "$package" "$bare/tmp/"

# First with what it cannot do without, then as a user gets it.
for recommended in --no-install-recommends --install-recommends; do
    listing >"$work/before"
    packages >"$work/packages"
    aptGet install "$recommended" "/tmp/$(basename "$package")"
    mapfile -t own < <(inside dpkg -L "$name")
    listing >"$work/with"
    start
    aptGet purge --autoremove "$name"
    listing >"$work/after"

    left=()
    for path in "${own[@]}"; do
        # A folder that was there before is not ours.
        if [[ -e $bare$path ]] && ! grep -qxF "$path" "$work/before" && [[ ! -d $bare$path || -z $(ls "$bare$path") ]]; then
            left+=("$path")
        fi
    done
    mapfile -t named < <(comm -13 "$work/before" "$work/after" | grep -i kvorvanta || true)
    # A recommended package stays when another one that was there before suggests it.
    echo "$recommended: $(comm -13 "$work/before" "$work/with" | wc -l) paths came;" \
        "packages that stayed: $(comm -13 "$work/packages" <(packages) | tr '\n' ' ');" \
        "paths that stayed and are in no package:"
    comm -13 "$work/before" "$work/after" | comm -23 - <(inside sh -c 'cat /var/lib/dpkg/info/*.list' | sort -u) |
        sed 's/^/  /'
    if [[ ${#left[@]} -gt 0 || ${#named[@]} -gt 0 ]]; then
        echo "These are ours and were left behind: ${left[*]} ${named[*]}"
        exit 1
    fi
done
echo "Installed, started and removed; nothing of ours is left."
