#!/usr/bin/env bash
# Checks the library's exported symbols against exports.txt: exports.sh LIBRARY
set -euo pipefail
list=$(dirname "$0")/exports.txt
if ! diff -u "$list" <(nm -D --defined-only --format=posix "$1" | awk '{ print $2, $1 }' | LC_ALL=C sort); then
    echo "The exported symbols have changed. A removed or renamed symbol breaks callers: undo it. Add an intended" >&2
    echo "new symbol to libtavro-dov-client.map and to $list." >&2
    exit 1
fi
