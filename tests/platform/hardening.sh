#!/usr/bin/env bash
# Checks that built files are hardened as in the platform's build: hardening.sh FILE...
# shellcheck source=tests/common.sh
. "$(dirname "$0")/../common.sh"
for file; do
    traits=$(readelf -ldW "$file"; nm -D --undefined-only "$file")
    needs() { grep -qE "$1" <<< "$traits" || complain "$file: $2"; }  # needs PATTERN COMPLAINT
    needs 'GNU_RELRO' "no RELRO"
    needs 'BIND_NOW' "no BIND_NOW"
    needs '__stack_chk_fail' "no stack protector"
    needs '__mem[a-z]+_chk' "no FORTIFY"
    [[ $file != *libtavro-dov-client.so ]] || needs 'NODELETE' "dlclose would unload it"
done
