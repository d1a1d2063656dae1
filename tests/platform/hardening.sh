#!/usr/bin/env bash
# Checks that built files are hardened as in the platform's build: hardening.sh FILE...
set -euo pipefail
failed=0
for file; do
    dynamic=$(readelf -dW "$file")
    symbols=$(nm -D --undefined-only "$file")
    # needs TEXT PATTERN WHAT
    needs() { grep -qE "$2" <<< "$1" || { echo "$file: $3" >&2; failed=1; }; }
    needs "$(readelf -lW "$file")" 'GNU_RELRO' "no RELRO"
    needs "$dynamic" 'BIND_NOW' "no BIND_NOW"
    needs "$symbols" '__stack_chk_fail' "no stack protector"
    needs "$symbols" '__mem[a-z]+_chk' "no FORTIFY"
    [[ $file != *libtavro-dov-client.so ]] || needs "$dynamic" 'NODELETE' "dlclose would unload it"
done
exit $failed
