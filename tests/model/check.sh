#!/usr/bin/env bash
# Checks the model of the client's locks with spin: as the library has them it has no error, and with each fault put in
# spin finds the error that the fault is for.
#
# Usage: check.sh COMPILER
set -euo pipefail
compiler=$1
model=$(readlink -f "$(dirname "$0")/locks.pml")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"

# check ERROR [MACRO]: what spin says of the model must contain ERROR.
check() {
    local error=$1
    shift
    spin "${@/#/-D}" -a "$model" > /dev/null
    "$compiler" -O2 -w -DSAFETY -o pan pan.c
    ./pan -m100000 > said
    if ! grep -q "$error" said || grep -q 'max search depth too small' said; then
        cat said
        echo "locks.pml ${*:-as it is}: expected '$error'" >&2
        exit 1
    fi
    echo "locks.pml ${*:-as it is}: $error"
}

check 'errors: 0'
check 'invalid end state' REGISTRY_KEPT
check 'assertion violated ((bound||' BOTH_AT_ONCE
check 'invalid end state' DESTROYED_LOCKED
check 'assertion violated (( !(bound)||linked)' UNLINKED_LATE
