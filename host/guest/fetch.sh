#!/usr/bin/env bash
# Brings Debian's kernel, its binder driver and busybox into the cache, as guest-ARCHITECTURE.
#
# Usage: fetch.sh CACHE_DIR amd64|armhf. Fetches only what the cache does not hold yet.
set -euo pipefail
# shellcheck source=host/apt.sh
. "$(dirname "$0")/../apt.sh"

architecture=$2
suite=bookworm
declare -A flavours=([amd64]=amd64 [armhf]=armmp)
target=$cache/guest-$architecture
[ ! -d "$target" ] || exit 0

root=$suite:$architecture
open_suite "$root"
kernel=$(apt_in "$root" apt-cache depends "linux-image-${flavours[$architecture]}" |
    awk '$1 == "Depends:" && $2 ~ /^linux-image-/ { print $2; exit }')
[ -n "$kernel" ] || die "$suite has no kernel for $architecture"
work=$(mktemp -d "$cache/fetch.XXXXXX")
say "fetching $kernel"
(cd "$work" && apt_in "$root" apt-get download "$kernel" busybox-static) || die "$kernel could not be fetched"
# Three files of some thousands.
dpkg --fsys-tarfile "$work/$kernel"_*.deb | tar -x -C "$work" --wildcards './boot/vmlinuz-*' '*/drivers/android/binder_linux.ko'
dpkg --fsys-tarfile "$work"/busybox-static_*.deb | tar -x -C "$work" ./bin/busybox
mkdir "$work/guest"
mv "$work"/boot/vmlinuz-* "$work/guest/vmlinuz"
mv "$work"/lib/modules/*/kernel/drivers/android/binder_linux.ko "$work/bin/busybox" "$work/guest/"
mv "$work/guest" "$target"
rm -rf "$work"
