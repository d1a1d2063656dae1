#!/usr/bin/env bash
# Holds the library's exported symbols to the list beside this script: exports.sh LIBRARY
set -euo pipefail
list=$(dirname "$0")/exports.txt
if ! diff -u "$list" <(nm -D --defined-only --format=posix "$1" | awk '{ print $2, $1 }' | LC_ALL=C sort); then
    echo "The exported symbols have changed. A removed or renamed one breaks callers; a new one that is meant to be" >&2
    echo "exported goes into libtavro-dov-client.map and into $list." >&2
    exit 1
fi
