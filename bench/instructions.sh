#!/usr/bin/env bash
# Counts the instructions of one call for each way in cost_bench: instructions.sh COST_BENCH
set -euo pipefail
calls=100  # as many as cost_bench makes in countedCalls
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
# The program and the libraries that were built here, stripped: valgrind cannot read their debug information.
ldd "$1" | awk '$3 !~ "^/(usr/)?lib/" && $3 ~ "^/" { print $3 }' | while read -r file; do
    objcopy --strip-debug "$file" "$work/$(basename "$file")"
done
objcopy --strip-debug "$1" "$work/bench"
LD_LIBRARY_PATH=$work valgrind --tool=callgrind --quiet --callgrind-out-file="$work/out" --zero-before=countedCalls --dump-after=countedCalls \
    "$work/bench" --count > "$work/names"
printf '%-50s %s\n' 'operation, way' 'instructions'
number=0
while read -r name; do
    number=$((number + 1))
    total=$(sed -n 's/^totals: //p; s/^summary: //p' "$work/out.$number" | head -n 1)
    printf '%-50s %12d\n' "$name" $((total / calls))
done < "$work/names"
