#!/usr/bin/env bash
# Prints the size of the library and the cost of loading it: loading.sh LOAD_BENCH LIBRARY
set -euo pipefail
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
stripped=$work/$(basename "$2")
strip -o "$stripped" "$2"

row() { printf '%-46s %10s\n' "$@"; }

# The median of column $1 over 51 processes that load the library.
median() { awk -v c="$1" '{ print $c }' "$work/loads" | sort -n | sed -n 26p; }

row 'stripped library, bytes' "$(stat -c %s "$stripped")"
row 'dynamic relocations' "$(readelf -rW "$stripped" | grep -c ' R_')"
row '  of them relative' "$(readelf -rW "$stripped" | grep -c '_RELATIVE' || true)"
for ((i = 0; i < 51; i++)); do "$1" "$stripped"; done > "$work/loads"
row 'dlopen to ready, microseconds' "$(median 1)"
row 'allocated while loading, bytes' "$(median 2)"
row 'private pages, kilobytes' "$(median 3)"
