#!/usr/bin/env bash
# Checks the model of the client's locks with spin: as the library has them it has no error, and with each fault put in
# spin finds the error that the fault is for.
#
# Usage: check.sh COMPILER
# shellcheck source=tests/common.sh
. "$(dirname "$0")/../common.sh"
cd "$work"
while IFS='|' read -r macro error; do
    spin ${macro:+"-D$macro"} -a "$here/model/locks.pml" > /dev/null
    "$1" -O2 -w -DSAFETY -o pan pan.c
    ./pan -m100000 > said
    { grep -qF "$error" said && ! grep -q 'max search depth too small' said; } ||
        complain "locks.pml ${macro:-as it is}: expected '$error': $(cat said)"
done << 'TABLE'
|errors: 0
REGISTRY_KEPT|invalid end state
BOTH_AT_ONCE|assertion violated ((bound||
DESTROYED_LOCKED|invalid end state
UNLINKED_LATE|assertion violated (( !(bound)||linked)
TABLE
