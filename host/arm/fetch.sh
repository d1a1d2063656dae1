#!/usr/bin/env bash
# Brings what a program for 32-bit Arm is compiled and linked against into the cache, as sysroot-armhf.
#
# Usage: fetch.sh CACHE_DIR. Fetches only what the cache does not hold yet.
set -euo pipefail
# shellcheck source=host/apt.sh
. "$(dirname "$0")/../apt.sh"

target=$cache/sysroot-armhf
[ ! -d "$target" ] || exit 0
say "fetching the 32-bit Arm libraries"
rm -rf "$target.new"
fetch_packages bookworm:armhf "$target.new" libc6 libc6-dev linux-libc-dev libgcc-12-dev libgcc-s1 libc++-14-dev \
    libc++1-14 libc++abi-14-dev libc++abi1-14 libunwind-14 libunwind-14-dev
# The packages expect to stand at /: their absolute links are made relative.
find "$target.new" -type l -lname '/*' | while read -r link; do
    ln -sfn "$(realpath -m --relative-to="$(dirname "$link")" "$target.new$(readlink "$link")")" "$link"
done
mv "$target.new" "$target"
