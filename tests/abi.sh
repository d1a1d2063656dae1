#!/usr/bin/env bash
# Checks the binary interface (symbols, their types, the layout of public types) against the descriptions in abi/:
#   abi.sh check LIBRARY TYPES     compares; TYPES is the library built from abi/public_types.cpp
#   abi.sh update LIBRARY TYPES    rewrites the descriptions
# Each architecture has its own folder of descriptions. The script reads the architecture from the library.
set -euo pipefail
command=$1
folder=$(cd "$(dirname "$0")/abi" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

describe() {  # omits everything that depends on where or when the library was built
    abidw --no-corpus-path --no-show-locs --no-comp-dir-path --no-write-default-sizes --no-elf-needed \
        --headers-dir "$folder/../../include/dov" --drop-private-types --suppressions "$folder/public.ini" "$1" | sed "/^ *$/d; s,\(<abi-instr .*path='\)[^']*/,\1,"
}

describe "$2" > "$work/library.abi"
describe "$3" > "$work/types.abi"
architecture=$(sed -n "1s/.* architecture='\([^']*\)'.*/\1/p" "$work/library.abi")
committed=$folder/$architecture

if [ "$command" = update ]; then
    mkdir -p "$committed"
    cp "$work"/*.abi "$committed/"
    echo "written: $committed"
    exit
fi
if [ ! -d "$committed" ]; then
    echo "$folder has no description for $architecture: $0 update $2 $3 writes it" >&2
    exit 1
fi
for name in library types; do
    if ! abidiff --no-default-suppression "$committed/$name.abi" "$work/$name.abi"; then
        echo "The binary interface differs from $committed/$name.abi, as listed above. A removed or changed symbol or" >&2
        echo "type breaks programs that are already built: undo it. Record an intended addition" >&2
        echo "with ./dev abi (for this machine) or $0 update $2 $3." >&2
        exit 1
    fi
done

# The comparison must detect changes that would break a caller.
changes=(
    "library /elf-symbol name='DovRelease'/d"
    "library /function-decl name='DovRelease'/,/function-decl>/s/<parameter type-id='[^']*'/<parameter type-id='$(
        sed -n "s/.*<type-decl name='bool'.* id='\(.*\)'.*/\1/p" "$work/library.abi")'/"
    "library /function-decl name='mirxResCtlRelease'/,/function-decl>/s/<return type-id='[^']*'/<return type-id='$(
        sed -n "s/.*<type-decl name='bool'.* id='\(.*\)'.*/\1/p" "$work/library.abi")'/"
    "types /<class-decl name='Resource'/s/size-in-bits='\([0-9]*\)'/size-in-bits='9\1'/"
    "types s/vtable-offset='0'/vtable-offset='1'/"
)
for change in "${changes[@]}"; do
    name=${change%% *}
    sed "${change#* }" "$work/$name.abi" > "$work/changed.abi"
    ! cmp -s "$work/$name.abi" "$work/changed.abi" || { echo "this change has no effect: $change" >&2; exit 1; }
    ! abidiff "$committed/$name.abi" "$work/changed.abi" > /dev/null || { echo "this change was not detected: $change" >&2; exit 1; }
done
